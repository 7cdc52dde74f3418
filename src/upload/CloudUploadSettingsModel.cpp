#include "upload/CloudUploadSettingsModel.h"

#include "base/Addresses.h"
#include "base/Time.h"
#include "ports/ScriptSyntax.h"
#include "ports/UrlOpener.h"
#include "upload/CustomUploadManager.h"

#include <QPointer>
#include <QUrl>

#include <utility>

namespace tavrine {

CloudUploadSettingsModel::CloudUploadSettingsModel(Ports ports, Texts texts, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_texts(std::move(texts)),
      m_seenScript(m_ports.uploadManager.savedScript()) {
    connect(&m_ports.uploadManager, &CustomUploadManager::changed, this, [this] {
        takeSavedScript();
        Q_EMIT changed();
    });
}

CloudUploadSettingsModel::~CloudUploadSettingsModel() = default;

bool CloudUploadSettingsModel::isEnabled() const {
    return m_ports.uploadManager.isEnabled();
}

void CloudUploadSettingsModel::appear() {
    const QString saved = m_ports.uploadManager.savedScript();
    m_seenScript = saved;
    replaceDraft(saved.isEmpty() ? m_texts.defaultScript : saved);
    m_ports.uploadManager.loadAgainIfFailed();
}

void CloudUploadSettingsModel::takeSavedScript() {
    const QString saved = m_ports.uploadManager.savedScript();
    if (saved == std::exchange(m_seenScript, saved))
        return;
    if (m_draftScript.isEmpty() || m_draftScript == m_texts.defaultScript)
        replaceDraft(saved.isEmpty() ? m_texts.defaultScript : saved);
}

void CloudUploadSettingsModel::setEnabled(bool isEnabled) {
    if (isEnabled != this->isEnabled())
        m_ports.uploadManager.setEnabled(isEnabled);
}

void CloudUploadSettingsModel::setDraftScript(const QString &script) {
    if (m_draftScript == script)
        return;
    m_draftScript = script;
    m_syntaxErrorLine.reset(); // lines may have moved
    Q_EMIT changed();
}

void CloudUploadSettingsModel::replaceDraft(const QString &script) {
    if (m_draftScript == script)
        return;
    m_draftScript = script;
    m_syntaxErrorLine.reset();
    Q_EMIT draftReplaced();
    Q_EMIT changed();
}

void CloudUploadSettingsModel::useImgbbTemplate() {
    m_syntaxError.reset();
    replaceDraft(m_texts.imgbbTemplate);
    Q_EMIT changed();
}

void CloudUploadSettingsModel::fail(const QString &syntaxError, std::optional<int> line) {
    m_syntaxError = syntaxError;
    m_syntaxErrorLine = line;
    Q_EMIT changed();
}

bool CloudUploadSettingsModel::passesSyntaxCheck() {
    ScriptSyntax *syntax = m_ports.syntax ? m_ports.syntax() : nullptr;
    const std::unique_ptr<ScriptContext> context = syntax ? syntax->makeContext() : nullptr;
    if (!context) {
        fail(QStringLiteral("Could not create a JavaScript engine."));
        return false;
    }
    if (const std::optional<QString> error = context->syntaxCheck(m_draftScript)) {
        fail(*error, context->errorLine());
        return false;
    }
    return true;
}

bool CloudUploadSettingsModel::isUnsaved() const {
    const QString saved = m_ports.uploadManager.savedScript();
    if (!saved.isEmpty())
        return m_draftScript != saved;
    return m_draftScript != m_texts.defaultScript && !m_draftScript.trimmed().isEmpty();
}

bool CloudUploadSettingsModel::save() {
    if (!passesSyntaxCheck())
        return false;
    // Only a first look: a comment passes, and the worker tells of it.
    if (!m_draftScript.contains(QLatin1String("uploadImage"))) {
        fail(QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName)."));
        return false;
    }
    m_syntaxError.reset();
    m_syntaxErrorLine.reset();
    m_ports.uploadManager.setScript(m_draftScript);
    m_saveConfirmation = true;
    Q_EMIT changed();
    m_ports.time.asyncAfter(confirmationTime, this, [this] {
        m_saveConfirmation = false;
        Q_EMIT changed();
    });
    return true;
}

void CloudUploadSettingsModel::testScript() {
    if (m_isTesting || !passesSyntaxCheck())
        return;
    m_syntaxError.reset();
    m_syntaxErrorLine.reset();
    m_isTesting = true;
    m_hasTestResult = false;
    m_testOutput.clear();
    m_testResultURL.reset();
    m_testError.reset();
    Q_EMIT changed();
    m_ports.run(m_draftScript, QLatin1String(probe), m_ports.uploadFileName(), uploadTimeout,
                [self = QPointer(this)](const UploadScriptRunResult &result) {
                    if (self)
                        self->finishTest(result);
                });
}

void CloudUploadSettingsModel::finishTest(const UploadScriptRunResult &result) {
    m_isTesting = false;
    m_hasTestResult = true;
    m_testOutput = result.logs;
    m_testResultURL = result.url;
    m_testError = result.error;
    Q_EMIT changed();
}

void CloudUploadSettingsModel::openDocs() {
    m_ports.urlOpener.openUrl(addressOf(Address::uploadScripts, m_ports.resources));
}

void CloudUploadSettingsModel::openResult() {
    if (!m_testResultURL)
        return;
    // The script's word, and so anyone's: only what a browser opens.
    const QUrl url(*m_testResultURL, QUrl::StrictMode);
    if (url.isValid() && !url.host().isEmpty() &&
        (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http")))
        m_ports.urlOpener.openUrl(url);
}

} // namespace tavrine
