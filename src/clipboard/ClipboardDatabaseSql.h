#pragma once

#include "base/Date.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavrine::sql {

// The statements of `ClipboardDatabase`. Their text is exact, line breaks included: SQLite keeps the schema's word for
// word in the file, and every plan that was measured belongs to one of these texts.

inline constexpr auto schema = "CREATE TABLE IF NOT EXISTS items (\n"
                               "    id              TEXT    PRIMARY KEY NOT NULL,\n"
                               "    content         TEXT    NOT NULL DEFAULT '',\n"
                               "    date            REAL    NOT NULL,\n"
                               "    is_pinned       INTEGER NOT NULL DEFAULT 0,\n"
                               "    is_saved        INTEGER NOT NULL DEFAULT 0,\n"
                               "    image_file_name TEXT\n"
                               ");\n"
                               "CREATE INDEX IF NOT EXISTS idx_date   ON items(date DESC);\n"
                               "CREATE INDEX IF NOT EXISTS idx_pinned ON items(is_pinned);\n"
                               "CREATE INDEX IF NOT EXISTS idx_saved  ON items(is_saved);\n"
                               "CREATE INDEX IF NOT EXISTS idx_images ON items(image_file_name);\n"
                               "CREATE INDEX IF NOT EXISTS idx_content ON items(content);";
inline constexpr auto addSavedColumn = "ALTER TABLE items ADD COLUMN is_saved INTEGER NOT NULL DEFAULT 0;";
inline constexpr auto addSavedIndex = "CREATE INDEX IF NOT EXISTS idx_saved ON items(is_saved);";

// A macro, for the compiler joins texts and not constants. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define ITEMS "SELECT id,content,date,is_pinned,is_saved,image_file_name FROM items"

inline constexpr auto insertOrReplace = "INSERT OR REPLACE INTO items (id, content, date, is_pinned, is_saved, "
                                        "image_file_name)\nVALUES (?,?,?,?,?,?);";
inline constexpr auto deleteById = "DELETE FROM items WHERE id=?;";
inline constexpr auto countProtected = "SELECT COUNT(*) FROM items WHERE is_pinned=1 OR is_saved=1;";
inline constexpr auto protectedAndUnprotected =
    ITEMS "\nWHERE is_pinned=1 OR is_saved=1\nUNION ALL\n" ITEMS "\nWHERE is_pinned=0 AND is_saved=0";
inline constexpr auto bySavedPinnedAndDate = " ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ?;";
inline constexpr auto contentLike = ITEMS "\nWHERE content LIKE ? ESCAPE '\\'\n"
                                          "ORDER BY is_saved DESC, is_pinned DESC, date DESC LIMIT ?;";
inline constexpr auto sameContentAndFile = ITEMS " WHERE content=? AND image_file_name=? LIMIT 1;";
inline constexpr auto sameContentWithoutFile = ITEMS " WHERE content=? AND image_file_name IS NULL LIMIT 1;";
inline constexpr auto contentOfId = "SELECT content FROM items WHERE id=?;";
inline constexpr auto allFiles = "SELECT image_file_name FROM items WHERE image_file_name IS NOT NULL;";
inline constexpr auto unprotectedFiles =
    "SELECT image_file_name FROM items WHERE is_pinned=0 AND is_saved=0 AND image_file_name IS NOT NULL;";
inline constexpr auto deleteUnprotected = "DELETE FROM items WHERE is_pinned=0 AND is_saved=0;";
inline constexpr auto countAll = "SELECT COUNT(*) FROM items;";
inline constexpr auto countPinned = "SELECT COUNT(*) FROM items WHERE is_pinned=1;";
inline constexpr auto countMedia = "SELECT COUNT(*) FROM items WHERE image_file_name IS NOT NULL;";
inline constexpr auto countProtectedMedia =
    "SELECT COUNT(*) FROM items WHERE (is_pinned=1 OR is_saved=1) AND image_file_name IS NOT NULL;";
inline constexpr auto rowOfIdWithoutText =
    "SELECT id,'',date,is_pinned,is_saved,image_file_name FROM items WHERE id=?;";
inline constexpr auto rowOfFile = "SELECT id FROM items WHERE image_file_name=? LIMIT 1;";
inline constexpr auto protectedRowOfFile =
    "SELECT id FROM items WHERE image_file_name=? AND (is_pinned=1 OR is_saved=1) LIMIT 1;";
inline constexpr auto items = ITEMS;

#undef ITEMS

/// Everything after `since`, pinned first. No parameters: a limit of 64 bits stands in the text.
[[nodiscard]] QByteArray selectAll(std::optional<Date> since, qint64 limit);

/// The unprotected rows to delete, oldest first. Parameters: the date when `hasBefore`, once more when `hasKeepNewest`
/// as well, then the count when `hasKeepNewest`.
[[nodiscard]] QByteArray pruneSelection(bool imagesOnly, bool hasBefore, bool hasKeepNewest);

/// The LIKE pattern for "contains `query`", with what LIKE would take for a wildcard escaped.
[[nodiscard]] QString containsPattern(QString query);

} // namespace tavrine::sql
