#include "shell/updates/UpdateOutcome.h"

#include "shell/updates/Appcast.h"
#include "shell/updates/Versions.h"

#include <algorithm>

namespace tavrine {
namespace {

using Kind = UpdateOutcome::Kind;

UpdateOutcome outcomeOfPackages(const PackageUpdates::Answer &answer) {
    switch (answer.kind) {
    case PackageUpdates::Answer::Kind::unavailable:
        return {Kind::noSource};
    case PackageUpdates::Answer::Kind::noAnswer:
        return {Kind::noAnswer};
    case PackageUpdates::Answer::Kind::versions:
        break;
    }
    QString newest = answer.installed;
    for (const QString &version : answer.available) {
        if (compareDebianVersions(version, newest) > 0)
            newest = version;
    }
    if (newest == answer.installed)
        return {Kind::upToDate};
    // A new revision of the same version would look like no change at all.
    const QString name = upstreamVersion(newest);
    return {.kind = Kind::package,
            .version = newest,
            .shownName = name == upstreamVersion(answer.installed) ? newest : name};
}

bool runsOn(const AppcastItem &item, const QString &systemVersion) {
    const auto needed = SemanticVersion::parse(item.minimumSystem);
    const auto present = SemanticVersion::parse(systemVersion);
    return !needed || (present && *needed <= *present);
}

/// Of two of the same version, the one that stands first.
UpdateOutcome outcomeOfItems(const QList<AppcastItem> &items, const UpdateAnswers &answers) {
    UpdateOutcome outcome{Kind::upToDate};
    auto newest = SemanticVersion::parse(answers.ownVersion);
    if (!newest)
        return {Kind::noAnswer};
    for (const bool isForThisSystem : {true, false}) {
        for (const AppcastItem &item : items) {
            const auto version = SemanticVersion::parse(item.version);
            if (!version || *version <= *newest || runsOn(item, answers.systemVersion) != isForThisSystem)
                continue;
            newest = version;
            outcome = {.kind = isForThisSystem ? Kind::download : Kind::needsNewerSystem,
                       .version = item.version,
                       .shownName = item.shortVersion,
                       .url = item.url};
        }
        if (outcome.kind == Kind::download)
            break;
    }
    return outcome;
}

UpdateOutcome outcomeOfFeed(const UpdateFeed::Answer &answer, const UpdateAnswers &answers) {
    switch (answer.kind) {
    case UpdateFeed::Answer::Kind::noAnswer:
        return {Kind::noAnswer};
    case UpdateFeed::Answer::Kind::refused:
        return {Kind::refused};
    case UpdateFeed::Answer::Kind::contents:
        break;
    }
    const auto items = itemsOfAppcast(answer.contents);
    return items ? outcomeOfItems(*items, answers) : UpdateOutcome{Kind::noAnswer};
}

/// The address as a person may type it: without what is for machines, and without what is markup in a message.
QString shownAddress(const QUrl &url) {
    const QString address = url.toString(QUrl::FullyEncoded | QUrl::RemoveQuery | QUrl::RemoveFragment);
    constexpr qsizetype longestShown = 120;
    return address.size() > longestShown || address.contains(u'&') ? url.host(QUrl::FullyEncoded) : address;
}

} // namespace

UpdateOutcome outcomeOf(const UpdateAnswers &answers) {
    const UpdateOutcome packages = outcomeOfPackages(answers.packages);
    if (packages.kind == Kind::package || !answers.feed)
        return packages;
    return outcomeOfFeed(*answers.feed, answers);
}

bool isAnswered(Kind kind) {
    return isFound(kind) || kind == Kind::upToDate || kind == Kind::needsNewerSystem;
}

bool isFound(Kind kind) {
    return kind == Kind::package || kind == Kind::download;
}

QString sentenceOf(const UpdateOutcome &outcome, const QString &ownVersion) {
    switch (outcome.kind) {
    case Kind::noSource:
        return QStringLiteral("This copy of Tavrine does not look for updates by itself. New versions come the way it "
                              "was installed.");
    case Kind::noAnswer:
        break;
    case Kind::refused:
        return QStringLiteral("The answer about new versions was not signed by the makers of Tavrine, so it was not "
                              "used.");
    case Kind::upToDate:
        return QStringLiteral("Tavrine %1 is up to date.").arg(ownVersion);
    case Kind::needsNewerSystem:
        return QStringLiteral("Tavrine %1 is available, but it needs a newer system than this one.")
            .arg(outcome.shownName);
    case Kind::package:
        return QStringLiteral("Tavrine %1 is available; this is %2. Install it with the software updates of this "
                              "computer.")
            .arg(outcome.shownName, ownVersion);
    case Kind::download:
        return QStringLiteral("Tavrine %1 is available; this is %2. You get it at %3")
            .arg(outcome.shownName, ownVersion, shownAddress(outcome.url));
    }
    return QStringLiteral("Tavrine could not find out whether there is a newer version. Try again later.");
}

} // namespace tavrine
