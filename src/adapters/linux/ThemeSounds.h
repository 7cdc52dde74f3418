#pragma once

#include "adapters/linux/DesktopThemes.h"
#include "ports/SystemSounds.h"

#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace tavrine {

class HelperProcess;

/// The sounds of the desktop's theme, played by TavrineSounds: it is started with the first sound and ends when there
/// was none for a while, so that nothing of it stays, and a sound server that hangs keeps that program waiting and
/// nobody else. Main thread.
class ThemeSounds final : public SystemSounds {
public:
    /// What was asked of a sound server that does not answer is dropped after so long.
    static constexpr std::chrono::seconds lingering{5};

    /// `programFolder` is where this program's own file stands; `themes` is asked in each turn in which there is
    /// one to play.
    ThemeSounds(const QString &programFolder, std::function<DesktopThemes()> themes,
                std::chrono::milliseconds longest = lingering);
    ~ThemeSounds() override;

    void play(const QString &name) override;
    /// Of the program; 0 while there is none.
    [[nodiscard]] qint64 processIdentifier() const;

private:
    const QString m_program;
    const std::function<DesktopThemes()> m_themes;
    DesktopThemes m_now; ///< in this turn
    QTimer m_turn;
    QString m_theme; ///< that the program was started with
    std::unique_ptr<HelperProcess> m_process;
    QTimer m_rest;
};

} // namespace tavrine
