#pragma once

#include "clipboard/ClipboardItem.h"

#include <QLocale>
#include <QTimeZone>

namespace tavrine {

/// What a row of the search panel reads. The title is the whole text: the view cuts it.
struct ClipboardSearchRow {
    QString title;
    QString subtitle;
    QString icon; ///< symbol shown where there is no thumbnail
    QString pinToolTip;
    QString savedToolTip;
    QString savedSymbol;
    bool operator==(const ClipboardSearchRow &) const = default;
};

/// `isLink` is handed in, since it costs most and is known already.
[[nodiscard]] ClipboardSearchRow clipboardSearchRow(const ClipboardItem &item, bool isLink, const QLocale &locale,
                                                    const QTimeZone &zone);

/// The date with the month in short and without weekday, and the time without seconds, as the locale writes them:
/// "Jan 31, 2026, 12:00 PM". Never relative to today. A date that no calendar holds is its nearest that one does.
[[nodiscard]] QString abbreviatedDateWithShortenedTime(Date date, const QLocale &locale, const QTimeZone &zone);

} // namespace tavrine
