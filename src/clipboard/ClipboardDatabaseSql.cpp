#include "clipboard/ClipboardDatabaseSql.h"

#include <charconv>
#include <cmath>

namespace tavrine::sql {
namespace {

/// The shortest decimal text that reads back as the same double.
QByteArray shortestDecimal(double value) {
    // Dates need no exponent; beyond what a double counts by ones, the digits before the point would be padding.
    const double size = std::abs(value);
    const bool isFixed = size == 0 || (size >= 1e-5 && size < 1e16);
    char text[64];
    const auto format = isFixed ? std::chars_format::fixed : std::chars_format::scientific;
    const auto end = std::to_chars(std::begin(text), std::end(text), value, format).ptr;
    return {text, end - text};
}

} // namespace

QByteArray selectAll(std::optional<Date> since, qint64 limit) {
    QByteArray text = items;
    if (since)
        text += " WHERE date > " + shortestDecimal(since->secondsSince1970);
    return text + " ORDER BY is_pinned DESC, date DESC LIMIT " + QByteArray::number(limit) + ";";
}

QByteArray pruneSelection(bool imagesOnly, bool hasBefore, bool hasKeepNewest) {
    QByteArray conditions = "is_pinned=0 AND is_saved=0";
    if (imagesOnly)
        conditions += " AND image_file_name IS NOT NULL";
    if (hasBefore)
        conditions += " AND date < ?";
    QByteArray text = "SELECT id,image_file_name FROM items WHERE " + conditions + " ORDER BY date ASC";
    if (hasKeepNewest)
        text += " LIMIT MAX(0, (\n    SELECT COUNT(*) FROM items WHERE " + conditions + "\n ) - ?)";
    return text;
}

QString containsPattern(QString query) {
    query.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    query.replace(QLatin1String("%"), QLatin1String("\\%"));
    query.replace(QLatin1String("_"), QLatin1String("\\_"));
    return QLatin1Char('%') + query + QLatin1Char('%');
}

} // namespace tavrine::sql
