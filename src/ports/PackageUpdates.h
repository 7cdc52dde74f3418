#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace tavrine {

/// What the system's packages say of this program: which version is installed, and which stand ready. Nothing is
/// installed or fetched by asking. Lives on the main thread.
class PackageUpdates {
public:
    /// Whether the package system may be started for a question; it is a heavy thing.
    enum class Start { ifNeeded, never };

    struct Answer {
        enum class Kind {
            unavailable, ///< there is no package system, or this program is none of its packages
            noAnswer,    ///< it does not run and may not be started, failed, ended, or said what makes no sense
            versions,
        };
        Kind kind = Kind::noAnswer;
        QString installed = {};     ///< of the package, as its system writes versions
        QStringList available = {}; ///< that the system would update it to, as far as it knows by now; mostly none
        bool operator==(const Answer &) const = default;
    };

    /// One question. Dropping it is cancelling it: nothing is called any more.
    class Question {
    public:
        virtual ~Question() = default;
    };

    virtual ~PackageUpdates() = default;

    /// `answered` is called once, in a later turn, and may drop the question. A package system that hangs does not
    /// answer.
    [[nodiscard]] virtual std::unique_ptr<Question> ask(Start start, std::function<void(const Answer &)> answered) = 0;
};

} // namespace tavrine
