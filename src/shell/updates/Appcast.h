#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace tavrine {

/// One version in a feed.
struct AppcastItem {
    QString version;            ///< by which it is compared
    QString shortVersion;       ///< what a person calls it
    QString minimumSystem = {}; ///< empty for any
    QUrl url = {};              ///< where it is to be had, over https
    qint64 length = 0;          ///< of what is there, in bytes
    bool operator==(const AppcastItem &) const = default;
};

/// The versions that a feed names, in its order: RSS 2.0 in UTF-8, whose items have, in whatever namespace, the
/// elements version, shortVersionString (else the version is shown) and minimumSystemVersion (else any), and an
/// enclosure with url and length. An item with one of them missing, twice or impossible is left out.
///
/// None for what is no such feed as a whole. A document that declares types or entities is none: nothing is expanded.
[[nodiscard]] std::optional<QList<AppcastItem>> itemsOfAppcast(const QByteArray &contents);

/// Far beyond the versions of any program.
inline constexpr qsizetype mostAppcastItems = 1000;

} // namespace tavrine
