#pragma once

#include "base/Uuid.h"
#include "clipboard/ClipboardDatabase.h"

#include <QFile>
#include <QTemporaryDir>

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace tavrine {

/// A second connection to a database file: another program, as far as the class under test can tell.
class Outside {
public:
    explicit Outside(const QString &path) { sqlite3_open(path.toUtf8().constData(), &m_db); }
    ~Outside() { sqlite3_close(m_db); }
    Outside(const Outside &) = delete;
    Outside &operator=(const Outside &) = delete;

    bool run(const std::string &sql) { return sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK; }

    /// All values of the result in reading order, NULL as "NULL".
    std::vector<std::string> values(const std::string &sql) {
        std::vector<std::string> values;
        const auto collect = [](void *all, int count, char **texts, char **) {
            for (int i = 0; i < count; ++i)
                static_cast<std::vector<std::string> *>(all)->emplace_back(texts[i] ? texts[i] : "NULL");
            return 0;
        };
        sqlite3_exec(m_db, sql.c_str(), collect, &values, nullptr);
        return values;
    }

    sqlite3 *handle() { return m_db; }

private:
    sqlite3 *m_db = nullptr;
};

/// Records every statement that is started on connections opened while it lives, in SQLite's own words. What
/// the readers prepare for themselves does not count: it names `main.items`, and never reaches the file.
class SqlTrace {
public:
    SqlTrace() {
        current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&install));
    }
    ~SqlTrace() {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&install));
        current = nullptr;
    }
    SqlTrace(const SqlTrace &) = delete;
    SqlTrace &operator=(const SqlTrace &) = delete;

    std::vector<std::string> texts;    ///< as they were prepared
    std::vector<std::string> expanded; ///< with the bound values

    void clear() {
        texts.clear();
        expanded.clear();
    }

private:
    static int install(sqlite3 *db, const char **, const void *) {
        sqlite3_trace_v2(db, SQLITE_TRACE_STMT, &record, nullptr);
        return SQLITE_OK;
    }
    static int record(unsigned, void *, void *statement, void *) {
        if (!current)
            return 0;
        auto *prepared = static_cast<sqlite3_stmt *>(statement);
        if (std::string_view(sqlite3_sql(prepared)).find("main.items") != std::string_view::npos)
            return 0;
        current->texts.emplace_back(sqlite3_sql(prepared));
        char *expanded = sqlite3_expanded_sql(prepared);
        current->expanded.emplace_back(expanded);
        sqlite3_free(expanded);
        return 0;
    }
    static inline SqlTrace *current = nullptr;
};

class DatabaseFixture : public testing::Test {
protected:
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("Tavrine/clipboard.db"));

    static ClipboardItem text(const QString &content, double date) {
        ClipboardItem item;
        item.id = QUuid::createUuid();
        item.content = content;
        item.date = Date{date};
        return item;
    }
    static ClipboardItem image(const QString &fileName, double date) {
        ClipboardItem item = text(QStringLiteral("Copied Image"), date);
        item.imageFileName = fileName;
        return item;
    }
    static ClipboardItem flagged(ClipboardItem item, bool isPinned, bool isSaved) {
        item.isPinned = isPinned;
        item.isSaved = isSaved;
        return item;
    }
    static QStringList contents(const std::vector<ClipboardItem> &items) {
        QStringList contents;
        for (const ClipboardItem &item : items)
            contents.append(item.content);
        return contents;
    }
};

} // namespace tavrine
