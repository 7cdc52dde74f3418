#pragma once

#include "ports/PackageUpdates.h"
#include "ports/UpdateFeed.h"

#include <QUrl>

#include <optional>

namespace tavrine {

/// What came of one look for a newer version.
struct UpdateOutcome {
    enum class Kind {
        noSource, ///< there is nobody who could be asked
        noAnswer, ///< somebody who would know did not answer
        refused,  ///< what the feed says is not signed by the makers
        upToDate,
        needsNewerSystem, ///< there is a version, and not for this system
        package,          ///< a newer package stands ready
        download,         ///< the feed names a newer version
    };
    Kind kind = Kind::noAnswer;
    QString version = {};   ///< the newer one, where there is one; by it one is known again
    QString shownName = {}; ///< what a person calls it
    QUrl url = {};          ///< where it is to be had, of a download
    bool operator==(const UpdateOutcome &) const = default;
};

/// What was asked, and by whom.
struct UpdateAnswers {
    QString ownVersion;
    PackageUpdates::Answer packages;
    std::optional<UpdateFeed::Answer> feed; ///< none where the build names none
    QString systemVersion = {};             ///< as the feed's minimum; empty when it is not known
};

/// A package comes before a download, as it is the easier way. Nothing that is not newer than this version, or than the
/// installed package, is ever found, whatever a feed of yesterday says. The feed knows all versions: with its word
/// that there is no newer one, nobody misses that of the packages; without it nobody knows.
[[nodiscard]] UpdateOutcome outcomeOf(const UpdateAnswers &answers);

/// Whether the question is answered, for today.
[[nodiscard]] bool isAnswered(UpdateOutcome::Kind kind);
/// Whether there is something to install.
[[nodiscard]] bool isFound(UpdateOutcome::Kind kind);

/// The outcome in a sentence for the person.
[[nodiscard]] QString sentenceOf(const UpdateOutcome &outcome, const QString &ownVersion);

} // namespace tavrine
