#include "clipboard/ClipboardSearchRow.h"

#include "base/DesktopWords.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr QLatin1String weekday("dddd");

/// The place of the first field at or behind `from`, past texts in quotes.
qsizetype nextField(const QString &format, qsizetype from) {
    bool isQuoted = false;
    for (qsizetype i = from; i < format.size(); ++i) {
        const QChar c = format.at(i);
        if (c == u'\'')
            isQuoted = !isQuoted;
        else if (!isQuoted && (c == u'd' || c == u'M' || c == u'y'))
            return i;
    }
    return format.size();
}

/// The locale's long format without the weekday at its beginning or end, and with the short name of the month.
QString abbreviatedFormat(const QLocale &locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    if (format.startsWith(weekday)) {
        format.remove(0, nextField(format, weekday.size()));
    } else if (format.endsWith(weekday)) {
        format.chop(weekday.size());
        while (!format.isEmpty() && (format.back().isSpace() || format.back() == u','))
            format.chop(1);
    }
    return format.replace(QLatin1String("MMMM"), QLatin1String("MMM"));
}

/// The locale's short format; a locale of no country tells the seconds in it.
QString shortenedFormat(const QLocale &locale) {
    return locale.timeFormat(QLocale::ShortFormat).remove(QLatin1String(":ss"));
}

QDateTime dateTime(Date date, const QTimeZone &zone) {
    constexpr double firstOfYearOne = -62135596800.0; // in the Gregorian calendar, continued backwards
    const double seconds = std::isnan(date.secondsSince1970) ? 0.0
                                                             : std::clamp(date.secondsSince1970, firstOfYearOne,
                                                                          Date::distantFuture().secondsSince1970);
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(seconds * 1000.0)), zone);
}

QString iconOf(const ClipboardItem &item, bool isLink) {
    if (item.isSaved)
        return QStringLiteral("bookmark.fill");
    if (item.isPinned)
        return QStringLiteral("star.fill");
    if (item.imageFileName)
        return QStringLiteral("photo");
    if (item.cut ? item.cut->hasAt : item.content.contains(u'@'))
        return QStringLiteral("envelope");
    return isLink ? QStringLiteral("link") : QStringLiteral("doc.text");
}

} // namespace

QString abbreviatedDateWithShortenedTime(Date date, const QLocale &locale, const QTimeZone &zone) {
    const QDateTime moment = dateTime(date, zone);
    return locale.toString(moment.date(), abbreviatedFormat(locale)) + QStringLiteral(", ") +
           locale.toString(moment.time(), shortenedFormat(locale));
}

ClipboardSearchRow clipboardSearchRow(const ClipboardItem &item, bool isLink, const QLocale &locale,
                                      const QTimeZone &zone) {
    ClipboardSearchRow row;
    row.title = item.imageFileName ? inDesktopWords(QStringLiteral("Screenshot")) : item.content;
    if (item.isSaved)
        row.subtitle = inDesktopWords(QStringLiteral("My Saved"));
    else if (item.isPinned)
        row.subtitle = inDesktopWords(QStringLiteral("Pinned snippet"));
    else
        row.subtitle = abbreviatedDateWithShortenedTime(item.date, locale, zone);
    row.icon = iconOf(item, isLink);
    row.pinToolTip = inDesktopWords(item.isPinned ? QStringLiteral("Remove pin") : QStringLiteral("Pin snippet"));
    row.savedToolTip =
        inDesktopWords(item.isSaved ? QStringLiteral("Remove from My Saved") : QStringLiteral("Add to My Saved"));
    row.savedSymbol = item.isSaved ? QStringLiteral("bookmark.fill") : QStringLiteral("bookmark");
    return row;
}

} // namespace tavrine
