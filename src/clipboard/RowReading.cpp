#include "clipboard/RowReading.h"

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabaseSql.h"
#include "clipboard/CutText.h"
#include "clipboard/Statement.h"

namespace tavrine {
namespace {

constexpr int contentColumn = 1;

} // namespace

RecentRows::Row readRow(const Statement &statement) {
    const bool hasTextualContent = statement.isText(contentColumn); // reading it makes a text of anything
    const QString id = statement.requiredText(0);
    const std::optional<QUuid> uuid = uuidFromString(id);
    RecentRows::Row row;
    row.item.id = uuid.value_or(QUuid::createUuid());
    row.item.imageFileName = statement.text(5);
    row.item.content = contentOrImage(statement.requiredText(contentColumn), row.item.imageFileName);
    row.item.date = Date{statement.real(2)};
    row.item.isPinned = statement.flag(3);
    row.item.isSaved = statement.flag(4);
    row.hasPlainDate = statement.isReal(2);
    row.isReachable = uuid && uuidString(*uuid) == id;
    row.isOrdinary = row.isReachable && hasTextualContent && row.hasPlainDate && statement.isPlainFlag(3) &&
                     statement.isPlainFlag(4);
    return row;
}

RecentRows::Row readListRow(const Statement &statement, bool isPlanned, std::size_t longestProtected) {
    RecentRows::Row row = readRow(statement);
    if (isPlanned)
        row.item.cut = cutOfColumn(statement.behindNul(contentColumn));
    if (row.isReachable && (!isPlanned || row.item.isProtected()))
        row.item = shortened(std::move(row.item), row.item.isProtected() ? longestProtected : longestWholeText);
    return row;
}

std::optional<QString> readWholeText(sqlite3 *db, const QUuid &id) {
    Statement statement(db, sql::contentOfId);
    statement.bindText(1, uuidString(id).toLatin1());
    if (statement.step() != Statement::Step::row)
        return std::nullopt;
    return statement.requiredText(0);
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
    return shortened(std::move(item));
}

} // namespace tavrine
