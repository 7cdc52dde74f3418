#include "clipboard/RowReading.h"

#include "base/Uuid.h"
#include "clipboard/Statement.h"

namespace tavrine {

RecentRows::Row readRow(const Statement &statement) {
    const bool hasTextualContent = statement.isText(1); // reading it makes a text of anything
    const QString id = statement.requiredText(0);
    const std::optional<QUuid> uuid = uuidFromString(id);
    RecentRows::Row row;
    row.item.id = uuid.value_or(QUuid::createUuid());
    row.item.imageFileName = statement.text(5);
    row.item.content = contentOrImage(statement.requiredText(1), row.item.imageFileName);
    row.item.date = Date{statement.real(2)};
    row.item.isPinned = statement.flag(3);
    row.item.isSaved = statement.flag(4);
    row.hasPlainDate = statement.isReal(2);
    row.isOrdinary = uuid && uuidString(*uuid) == id && hasTextualContent && row.hasPlainDate &&
                     statement.isPlainFlag(3) && statement.isPlainFlag(4);
    return row;
}

std::vector<ClipboardItem> readItems(Statement &statement) {
    std::vector<ClipboardItem> items;
    while (statement.step() == Statement::Step::row)
        items.push_back(readRow(statement).item);
    return items;
}

int readCount(sqlite3 *db, const QByteArray &sql) {
    Statement statement(db, sql);
    return statement.step() == Statement::Step::row ? statement.integer(0) : 0;
}

ClipboardItem asItReadsBack(ClipboardItem item) {
    const auto stored = [](const QString &text) {
        const bool isStoredWhole = text.isValidUtf16() && !text.contains(QChar::Null);
        return isStoredWhole ? text : QString::fromUtf8(text.toUtf8().constData());
    };
    if (item.imageFileName)
        item.imageFileName = stored(*item.imageFileName);
    item.content = contentOrImage(stored(item.content), item.imageFileName);
    return item;
}

} // namespace tavrine
