#pragma once

#include "adapters/linux/PowerKeeper.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace tavrine {

/// Keeps the X server itself from blanking the screen and from turning the display off, and the programs that watch how
/// long nobody has touched anything (those that lock) from acting.
///
/// A connection of its own suspends the screen saver, which in the server holds off DPMS too, and ends with the
/// process however that ends; no setting is touched. The idle time is reset now and then, unless the screen is blank
/// already. All on a thread of its own, since another program may hold the server for itself.
class X11ScreenSaverKeeper final : public QObject, public PowerKeeper {
    Q_OBJECT

public:
    /// Shorter than the shortest time after which anybody locks, which is a minute.
    static constexpr std::chrono::milliseconds usualPause = std::chrono::seconds(30);

    explicit X11ScreenSaverKeeper(std::chrono::milliseconds pause = usualPause) : m_pause(pause) {}
    ~X11ScreenSaverKeeper() override { stop(); }

    void want(const PowerNeeds &needs, const QString &why) override;
    [[nodiscard]] PowerNeeds held() const override { return {.display = m_isHeld}; }
    [[nodiscard]] bool isAsking() const override { return m_isAsking; }

private:
    struct Session;

    void start();
    void stop();
    void onAnswer(const Session *session, bool isHeld);

    const std::chrono::milliseconds m_pause;
    std::shared_ptr<Session> m_session; ///< shared with its thread, for which nobody waits
    bool m_isAsking = false;
    bool m_isHeld = false;
};

} // namespace tavrine
