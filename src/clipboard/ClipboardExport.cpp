#include "clipboard/ClipboardExport.h"

#include <algorithm>

namespace tavrine {

QString exportLine(const ClipboardItem &item) {
    // The line begins with a date field, which is empty in this form, and two blanks.
    QString line = QStringLiteral("  ");
    if (item.isSaved)
        line += QLatin1String("[MY SAVED] ");
    if (item.isPinned)
        line += QLatin1String("[PINNED] ");
    if (item.imageFileName)
        return line + QLatin1String("[IMAGE]");
    const qsizetype start = line.size();
    line += item.content;
    std::replace(line.begin() + start, line.end(), QChar(u'\n'), QChar(u' '));
    return line;
}

QString exportHeader(Date now) {
    return QStringLiteral("Tavrine Clipboard Export\n") + description(now) + QStringLiteral("\n\n");
}

QString exportFileName(Date now) {
    return QStringLiteral("clipboard_export_%1.txt").arg(static_cast<qint64>(now.secondsSince1970));
}

} // namespace tavrine
