#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <variant>

namespace tavrine {

/// One local file that is made to sound. Made by `AudioPlayers`; lives on the main thread, and its owner's. Dropping it
/// is stopping it.
class AudioPlayer {
public:
    virtual ~AudioPlayer() = default;

    /// Before `play`: how many times more the file is played after the first; -1 is for ever, without a gap.
    virtual void setNumberOfLoops(int loops) = 0;
    /// Makes ready what `play` would have to wait for.
    virtual void prepareToPlay() = 0;
    /// Sounds from the beginning, on the device that is the default one now, and on no other ever.
    virtual void play() = 0;

    /// Each is silent within 50 milliseconds, and nothing sounds afterwards: who wants to hear more makes a new player.
    virtual void pause() = 0;
    virtual void stop() = 0;

    /// Called once, in a turn of its own, when the sound has ended for another reason than the two above: `reason` in
    /// words, or empty after the last loop. May destroy the player.
    virtual void setOnEnd(std::function<void(const QString &reason)> handler) = 0;
};

/// Makes players. Main thread.
class AudioPlayers {
public:
    struct Failure {
        enum class Cause {
            contents,      ///< this file holds no sound that can be played
            circumstances, ///< it cannot be played at present
        };
        Cause cause = Cause::circumstances;
        QString reason; ///< in words
        bool operator==(const Failure &) const = default;
    };
    using Result = std::variant<Failure, std::unique_ptr<AudioPlayer>>;
    using Answer = std::function<void(Result result)>;

    virtual ~AudioPlayers() = default;

    /// The person may want to hear something in a moment: what is slow only once in a program's life may be done now.
    virtual void expectPlayer() = 0;

    /// A player of the file at `path`. What sounds is read and decoded elsewhere, so that the answer comes in a later
    /// turn, once, and within seconds whatever the file is: a player only when the file's first sound is decoded and
    /// can be heard at once. Whoever does not want the player any more by then drops it.
    virtual void makePlayer(const QString &path, Answer answer) = 0;
};

} // namespace tavrine
