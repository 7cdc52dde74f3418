#pragma once

#include <QString>
#include <QtGui/qwindowdefs.h>

#include <functional>
#include <memory>

namespace tavrine {

/// One movie that is shown in a window of ours, over and over. Made by `MoviePlayers`; lives on the main thread.
/// Dropping it ends it.
class MoviePlayer {
public:
    virtual ~MoviePlayer() = default;

    /// Plays from the beginning, and from there again at the end, until it is paused.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// At once, while it plays too.
    virtual void setMuted(bool muted) = 0;

    /// Called once, in a turn of its own, when nothing can be shown: `reason` in words. May destroy the player.
    virtual void setOnFailure(std::function<void(const QString &reason)> handler) = 0;
};

class MoviePlayers {
public:
    virtual ~MoviePlayers() = default;

    /// Shows the movie at `path` in the whole of `window`, a native window of this program that outlives the player,
    /// with its aspect kept.
    [[nodiscard]] virtual std::unique_ptr<MoviePlayer> makePlayer(const QString &path, WId window) = 0;
};

} // namespace tavrine
