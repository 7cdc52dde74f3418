#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

namespace tavrine {

/// One movie that is played over and over, for a view of ours to show. Made by `MoviePlayers`; lives on the main
/// thread. Dropping it ends it.
class MoviePlayer {
public:
    virtual ~MoviePlayer() = default;

    /// Plays from the beginning, and from there again at the end, until it is paused. Before the first time it stands
    /// at its first frame.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// At once, while it plays too.
    virtual void setMuted(bool muted) = 0;

    /// How large pictures are to be from now on, paused as well; there are none before. One that is larger than a
    /// screen may come smaller, in the same shape.
    virtual void setPictureSize(QSize pixels) = 0;
    /// Called in turns of their own with what is to be seen from now on: opaque, with the movie's aspect kept on black.
    /// One that was made before the last `setPictureSize` has another size. May destroy the player.
    virtual void setOnPicture(std::function<void(const QImage &picture)> handler) = 0;

    /// Called once, in a turn of its own, when nothing can be shown: `reason` in words. May destroy the player.
    virtual void setOnFailure(std::function<void(const QString &reason)> handler) = 0;
};

class MoviePlayers {
public:
    virtual ~MoviePlayers() = default;

    /// For the movie at `path`.
    [[nodiscard]] virtual std::unique_ptr<MoviePlayer> makePlayer(const QString &path) = 0;
};

} // namespace tavrine
