#include "upload/UploadFlow.h"

#include "base/SerialQueue.h"
#include "base/Time.h"
#include "ports/Pasteboard.h"
#include "upload/CustomUploadManager.h"

#include <utility>

namespace tavrine {

/// All that a run needs: it goes on when the view is closed meanwhile.
struct UploadFlow::Press {
    Ports ports;
    Actions actions;
    QString script;
    QPointer<UploadFlow> flow;
};

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
    if (isBusy())
        return;
    m_isPreparing = true;
    const auto press = std::make_shared<const Press>(Press{m_ports, m_actions, m_ports.manager.savedScript(), this});
    m_ports.pictureQueue.async([press, makePng = m_actions.picture()] {
        const std::optional<QByteArray> png = makePng();
        std::optional<QString> image;
        if (png && !png->isEmpty())
            image = QString::fromLatin1(png->toBase64());
        press->ports.time.async([press, image = std::move(image)] { begin(*press, image); });
    });
}

void UploadFlow::begin(const Press &press, const std::optional<QString> &imageBase64) {
    UploadFlow *const flow = press.flow;
    if (flow)
        flow->m_isPreparing = false;
    if (!imageBase64) {
        press.actions.showToast(QStringLiteral("Couldn't prepare the image for upload"), QLatin1String(failureSymbol));
        if (flow) {
            Q_EMIT flow->preparationFailed();
            Q_EMIT flow->ended();
        }
        return;
    }
    if (flow) {
        if (press.actions.stopCountdown)
            press.actions.stopCountdown();
        flow->setUploadState(UploadButtonState::uploading);
    }
    press.actions.run(press.script, *imageBase64, press.actions.uploadFileName(), uploadTimeout,
                      [press](const UploadScriptRunResult &result) { complete(press, result); });
}

void UploadFlow::complete(const Press &press, const UploadScriptRunResult &result) {
    if (result.url) {
        press.ports.pasteboard.clearContents();
        press.ports.pasteboard.setString(*result.url);
    }
    if (press.flow)
        press.flow->finish(result);
    const QString message = result.url     ? QStringLiteral("Uploaded — link copied")
                            : result.error ? userMessage(*result.error)
                                           : QStringLiteral("Upload failed");
    const auto symbol = QLatin1String(result.url ? doneSymbol : failureSymbol);
    press.ports.time.async([showToast = press.actions.showToast, message, symbol] { showToast(message, symbol); });
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
