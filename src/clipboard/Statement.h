#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tavrine {

/// One SQL statement, prepared at construction and finalized at destruction: it lives inside one operation of the
/// database and on its queue. Nothing throws. A statement that could not be prepared ignores its bindings and ends at
/// the first step.
class Statement {
public:
    /// Where a step left the statement.
    enum class Step { row, done, failed };

    Statement(sqlite3 *db, const QByteArray &sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    [[nodiscard]] bool isPrepared() const { return m_statement != nullptr; }
    /// SQLite's word on the preparation or, after that, on the last step.
    [[nodiscard]] int code() const { return m_code; }

    /// Binds `utf8` up to its first NUL. Indexes start at 1.
    void bindText(int index, const QByteArray &utf8);
    void bindDouble(int index, double value);
    void bindNull(int index);
    void bindInt(int index, qint64 value);
    /// `value` as a 32-bit parameter. Ends the process when it does not fit: what asked for it is broken.
    static int checkedInt(qint64 value);

    Step step();

    /// The column's text up to its first NUL. Ends the process on NULL, which the schema excludes. Columns start at 0.
    [[nodiscard]] QByteArray requiredUtf8(int column) const;
    /// The same, decoded.
    [[nodiscard]] QString requiredText(int column) const;
    /// What stands behind the first NUL of the column's text; empty for nearly every column.
    [[nodiscard]] std::string_view behindNul(int column) const;
    /// The column's text up to its first NUL, absent when the column is NULL.
    [[nodiscard]] std::optional<QString> text(int column) const;
    [[nodiscard]] double real(int column) const;
    /// True only for the integer 1.
    [[nodiscard]] bool flag(int column) const;
    [[nodiscard]] int integer(int column) const;
    [[nodiscard]] bool isReal(int column) const;
    [[nodiscard]] bool isText(int column) const;
    /// True when the column holds the integer 0 or 1 and nothing that merely reads as one.
    [[nodiscard]] bool isPlainFlag(int column) const;

private:
    [[nodiscard]] const char *requiredCString(int column) const;

    sqlite3_stmt *m_statement = nullptr;
    int m_code = 0;
};

} // namespace tavrine
