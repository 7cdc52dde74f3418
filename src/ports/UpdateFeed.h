#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

namespace tavrine {

/// The list of this program's versions that its makers keep on the network. Lives on the main thread.
class UpdateFeed {
public:
    /// Larger feeds are no answer. A version takes half a kilobyte.
    static constexpr qint64 mostBytes = qint64(1) << 20;

    struct Answer {
        enum class Kind {
            noAnswer, ///< it could not be fetched or looked at
            refused,  ///< it came, and the makers did not sign it as it is
            contents, ///< as the makers signed it
        };
        Kind kind = Kind::noAnswer;
        QByteArray contents = {};
        bool operator==(const Answer &) const = default;
    };

    /// One question. Dropping it is cancelling it: nothing is called any more, and nothing stays behind.
    class Question {
    public:
        virtual ~Question() = default;
    };

    virtual ~UpdateFeed() = default;

    /// `answered` is called once, in a later turn, and may drop the question. A server that trickles does not end the
    /// question by itself.
    [[nodiscard]] virtual std::unique_ptr<Question> fetch(std::function<void(const Answer &)> answered) = 0;
    /// The version of this system, by which a feed says on which systems a program runs.
    [[nodiscard]] virtual QString systemVersion() const = 0;
};

} // namespace tavrine
