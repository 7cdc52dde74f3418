#pragma once

#include "base/NotificationCenter.h"
#include "upload/UploadButton.h"

#include <QImage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class CustomUploadManager;
class JSUploadEngine;
class Keychain;
class UserDefaults;

/// All that uploads need, for the card, the editor and the settings page: the script's store, the engine, and the queue
/// on which pictures become PNGs. Each is made when it is first needed, so that whoever does not upload pays for none.
///
/// One instance, as long as the process; lives on the main thread. Buttons and runs may outlive it: they do nothing
/// more then.
///
///  1. The key ring is asked once the preference is on: at the first question, or when the preference turns on, from
///     the settings page or from outside. While it is off, only `manager()` asks it.
class Uploads final : public QObject {
    Q_OBJECT

public:
    /// All outlive this.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        NotificationCenter &center; ///< of `defaults`
        Keychain &keychain;
        Pasteboard &pasteboard;
        QString workerPath; ///< the worker's file
        /// The picture as a PNG, or none when it has no such form. Called on the queue of the pictures.
        std::function<std::optional<QByteArray>(const QImage &)> pngData;
    };

    explicit Uploads(Ports ports, QObject *parent = nullptr);
    ~Uploads() override;

    /// Before the first upload; called on the main thread, while this lives.
    void setShowToast(UploadButton::ShowToast showToast) { m_showToast = std::move(showToast); }

    /// Whether there is an upload button anywhere. The first call while the preference is on has the script read, and
    /// says no until it is here.
    [[nodiscard]] bool isButtonShown();

    /// A button for a view that shows what `picture` gives at the press.
    [[nodiscard]] std::unique_ptr<UploadButton> makeButton(std::function<QImage()> picture,
                                                           UploadButton::AfterLink afterLink);

    /// For the settings page: the script and the switch, and what tries a script out.
    [[nodiscard]] CustomUploadManager &manager();
    [[nodiscard]] UploadRunner runner();
    [[nodiscard]] QString uploadFileName();

Q_SIGNALS:
    void isButtonShownChanged();

private:
    JSUploadEngine &engine();
    void preferencesChanged();
    void tell();

    Ports m_ports;
    UploadButton::ShowToast m_showToast;
    bool m_wasEnabled;
    bool m_toldShown = false;
    NotificationCenter::Token m_preferences;
    std::unique_ptr<SerialQueue> m_pictureQueue;
    std::unique_ptr<JSUploadEngine> m_engine;
    std::unique_ptr<CustomUploadManager> m_manager;
};

} // namespace tavrine
