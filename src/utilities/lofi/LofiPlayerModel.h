#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace tavrine {

class LofiManager;
class NotificationCenter;
class UrlOpener;

/// What the mini player and the settings page show of the music, and what their buttons do. Main thread; lives as long
/// as its view.
class LofiPlayerModel : public QObject {
    Q_OBJECT

public:
    /// All outlive the model.
    struct Ports {
        LofiManager &manager;
        NotificationCenter &center;
        UrlOpener &urlOpener;
        std::function<void()> beforeLeaving = {}; ///< called before another window is opened
    };

    /// What there is to do beside playing.
    enum class Command { openSettings, browseInternet, chooseLocalFile, resetToDefault };

    explicit LofiPlayerModel(Ports ports);

    // The mini player.
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString statusLine() const;
    [[nodiscard]] bool isGlowing() const;         ///< while it is heard
    [[nodiscard]] QString icon() const;           ///< of the button
    [[nodiscard]] QString playActionName() const; ///< what the button is called
    [[nodiscard]] bool isDownloading() const;
    [[nodiscard]] double downloadProgress() const;
    /// The pointer or the keyboard has come to the button.
    void expectToggle();
    void toggle();

    // The settings page.
    [[nodiscard]] QString activeTrackTitle() const;
    [[nodiscard]] QString activeTrackNote() const;

    // Both.
    [[nodiscard]] bool hasCustomTrack() const;
    /// In the order of the menu; the last is there with a custom track only.
    [[nodiscard]] QList<Command> commands() const;
    [[nodiscard]] static QString titleOf(Command command);
    [[nodiscard]] static QString symbolOf(Command command);
    void perform(Command command);

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] bool isOn() const;

    Ports m_ports;
};

} // namespace tavrine
