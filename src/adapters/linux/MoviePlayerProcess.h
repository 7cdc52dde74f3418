#pragma once

#include "ports/MoviePlayer.h"

#include <chrono>

namespace tavrine {

/// Shows movies in TavrinePlayer, a process for each: what crashes or hangs there costs a picture and no more, and at
/// rest there is none. Its pictures come through memory that it cannot make smaller or larger, and are copied out of it
/// by reading: there is no fault to be caught. Main thread.
class MoviePlayerProcesses final : public MoviePlayers {
public:
    /// A player that gives no sign of life for so long hangs. Its libraries may come from a slow disk.
    static constexpr std::chrono::seconds longestSilence{10};

    /// No pictures come faster, whatever a player says: a screen shows no more, and the program has other things to do.
    static constexpr std::chrono::milliseconds betweenPictures{8};

    /// `programFolder` is where this program's own file stands.
    explicit MoviePlayerProcesses(const QString &programFolder, std::chrono::milliseconds patience = longestSilence);

    [[nodiscard]] std::unique_ptr<MoviePlayer> makePlayer(const QString &path) override;

private:
    QString m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace tavrine
