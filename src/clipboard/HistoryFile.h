#pragma once

#include <QString>

struct sqlite3;

namespace tavrine {

/// The database's file and the main connection to it. Belongs to the queue of the database.
class HistoryFile {
public:
    static constexpr int busyTimeoutMs = 1000;

    explicit HistoryFile(QString path);
    ~HistoryFile();
    HistoryFile(const HistoryFile &) = delete;
    HistoryFile &operator=(const HistoryFile &) = delete;

    /// Makes the file and its folder, if there are none, opens it and brings its schema up to date.
    void open();

    [[nodiscard]] sqlite3 *db() const { return m_db; }

private:
    QString m_path;
    sqlite3 *m_db = nullptr;
};

} // namespace tavrine
