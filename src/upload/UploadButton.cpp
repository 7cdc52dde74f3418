#include "upload/UploadButton.h"

#include "base/SerialQueue.h"
#include "base/Time.h"
#include "ports/Pasteboard.h"

#include <QPointer>

#include <utility>

namespace tavrine {
namespace {

constexpr QLatin1String doneSymbol("checkmark.circle.fill");
constexpr QLatin1String idleSymbol("icloud.and.arrow.up");
constexpr QLatin1String failureSymbol("exclamationmark.triangle.fill");

} // namespace

/// All that a run needs: it goes on when the view is closed meanwhile.
struct UploadButton::Press {
    Ports ports;
    Actions actions;
    QString script;
    QPointer<UploadButton> button;
};

UploadButton::UploadButton(Ports ports, Actions actions, AfterLink afterLink, QObject *parent)
    : QObject(parent), m_ports(ports), m_actions(std::move(actions)), m_afterLink(afterLink) {}

QString UploadButton::title() const {
    switch (m_state) {
    case UploadButtonState::idle:
        return QStringLiteral("Upload");
    case UploadButtonState::uploading:
        return QStringLiteral("Uploading");
    case UploadButtonState::done:
        return QStringLiteral("Uploaded");
    }
    Q_UNREACHABLE();
}

QString UploadButton::symbol() const {
    return m_state == UploadButtonState::done ? doneSymbol : idleSymbol;
}

void UploadButton::press() {
    if (isBusy() || !isShown())
        return;
    m_isPreparing = true;
    const auto press = std::make_shared<const Press>(Press{m_ports, m_actions, m_actions.script(), this});
    m_ports.pictureQueue.async([press, makePng = m_actions.picture()] {
        const std::optional<QByteArray> png = makePng();
        std::optional<QString> image;
        if (png && !png->isEmpty())
            image = QString::fromLatin1(png->toBase64());
        press->ports.time.async([press, image = std::move(image)] { begin(*press, image); });
    });
}

void UploadButton::begin(const Press &press, const std::optional<QString> &imageBase64) {
    UploadButton *const button = press.button;
    if (button)
        button->m_isPreparing = false;
    if (!imageBase64) {
        press.actions.showToast(QStringLiteral("Couldn't prepare the image for upload"), failureSymbol);
        return;
    }
    if (button)
        button->setState(UploadButtonState::uploading);
    press.actions.run(press.script, *imageBase64, press.actions.uploadFileName(), uploadTimeout,
                      [press](const UploadScriptRunResult &result) { complete(press, result); });
}

void UploadButton::complete(const Press &press, const UploadScriptRunResult &result) {
    if (result.url) {
        press.ports.pasteboard.clearContents();
        press.ports.pasteboard.setString(*result.url);
    }
    if (press.button)
        press.button->finish(result);
    const QString message = result.url     ? QStringLiteral("Uploaded — link copied")
                            : result.error ? userMessage(*result.error)
                                           : QStringLiteral("Upload failed");
    const QLatin1String symbol = result.url ? doneSymbol : failureSymbol;
    press.ports.time.async([showToast = press.actions.showToast, message, symbol] { showToast(message, symbol); });
}

void UploadButton::finish(const UploadScriptRunResult &result) {
    if (!result.url) {
        setState(UploadButtonState::idle);
        return;
    }
    setState(UploadButtonState::done);
    if (m_afterLink == AfterLink::dismissView) {
        m_ports.time.asyncAfter(dismissDelay, this, [this] { Q_EMIT viewDismissed(); });
        return;
    }
    m_ports.time.asyncAfter(idleDelay, this, [this] {
        // A run that was started meanwhile keeps its button.
        if (m_state == UploadButtonState::done)
            setState(UploadButtonState::idle);
    });
}

void UploadButton::setState(UploadButtonState state) {
    m_state = state;
    Q_EMIT changed();
}

} // namespace tavrine
