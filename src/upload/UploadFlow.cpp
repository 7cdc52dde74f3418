#include "upload/UploadFlow.h"

#include "base/Time.h"
#include "ports/Pasteboard.h"
#include "upload/CustomUploadManager.h"

#include <utility>

namespace tavrine {

UploadFlow::UploadFlow(Ports ports, Actions actions, QObject *parent)
    : QObject(parent), m_ports(ports), m_actions(std::move(actions)) {}

QString UploadFlow::buttonTitle() const {
    switch (m_uploadState) {
    case UploadButtonState::idle:
        return QStringLiteral("Upload");
    case UploadButtonState::uploading:
        return QStringLiteral("Uploading");
    case UploadButtonState::done:
        return QStringLiteral("Uploaded");
    }
    Q_UNREACHABLE();
}

QString UploadFlow::buttonSymbol() const {
    return QLatin1String(m_uploadState == UploadButtonState::done ? doneSymbol : idleSymbol);
}

void UploadFlow::upload() {
    if (m_uploadState == UploadButtonState::uploading)
        return;
    const std::optional<QByteArray> png = m_actions.png();
    if (!png || png->isEmpty()) {
        m_actions.showToast(QStringLiteral("Couldn't prepare the image for upload"), QLatin1String(failureSymbol));
        Q_EMIT ended();
        return;
    }
    const QString image = QString::fromLatin1(png->toBase64());
    if (m_actions.stopCountdown)
        m_actions.stopCountdown();
    setUploadState(UploadButtonState::uploading);
    // The run keeps all it needs: it goes on when the view is closed meanwhile.
    m_actions.run(m_ports.manager.savedScript(), image, m_actions.uploadFileName(), uploadTimeout,
                  [ports = m_ports, showToast = m_actions.showToast, self = QPointer(this)](
                      const UploadScriptRunResult &result) { complete(ports, showToast, result, self); });
}

void UploadFlow::complete(const Ports &ports, const ShowToast &showToast, const UploadScriptRunResult &result,
                          const QPointer<UploadFlow> &self) {
    if (result.url) {
        ports.pasteboard.clearContents();
        ports.pasteboard.setString(*result.url);
    }
    if (self)
        self->finish(result);
    const QString message = result.url     ? QStringLiteral("Uploaded — link copied")
                            : result.error ? userMessage(*result.error)
                                           : QStringLiteral("Upload failed");
    const auto symbol = QLatin1String(result.url ? doneSymbol : failureSymbol);
    ports.time.async([showToast, message, symbol] { showToast(message, symbol); });
}

void UploadFlow::finish(const UploadScriptRunResult &result) {
    if (!result.url) {
        setUploadState(UploadButtonState::idle);
        Q_EMIT ended();
        return;
    }
    setUploadState(UploadButtonState::done);
    if (m_actions.onDismiss) {
        m_ports.time.asyncAfter(dismissDelay, this, [this] {
            m_actions.onDismiss();
            Q_EMIT ended();
        });
        return;
    }
    m_ports.time.asyncAfter(idleDelay, this, [this] {
        // A run that was started meanwhile keeps its button.
        if (m_uploadState != UploadButtonState::done)
            return;
        setUploadState(UploadButtonState::idle);
        Q_EMIT ended();
    });
}

void UploadFlow::setUploadState(UploadButtonState state) {
    m_uploadState = state;
    Q_EMIT uploadStateChanged();
}

} // namespace tavrine
