#include "clipboard/Statement.h"

#include <cstring>
#include <limits>

#include <sqlite3.h>

namespace tavrine {

Statement::Statement(sqlite3 *db, const QByteArray &sql) {
    m_code = 0xFF & sqlite3_prepare_v2(db, sql.constData(), -1, &m_statement, nullptr);
}

Statement::~Statement() {
    sqlite3_finalize(m_statement);
}

void Statement::bindText(int index, const QByteArray &utf8) {
    sqlite3_bind_text(m_statement, index, utf8.constData(), -1, SQLITE_TRANSIENT);
}

void Statement::bindDouble(int index, double value) {
    sqlite3_bind_double(m_statement, index, value);
}

void Statement::bindNull(int index) {
    sqlite3_bind_null(m_statement, index);
}

void Statement::bindInt(int index, qint64 value) {
    sqlite3_bind_int(m_statement, index, checkedInt(value));
}

int Statement::checkedInt(qint64 value) {
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        qFatal("a number does not fit in a 32-bit parameter: %lld", static_cast<long long>(value));
    return static_cast<int>(value);
}

Statement::Step Statement::step() {
    if (!m_statement)
        return Step::failed; // the code of the preparation stands
    m_code = 0xFF & sqlite3_step(m_statement);
    switch (m_code) {
    case SQLITE_ROW:
        return Step::row;
    case SQLITE_DONE:
        return Step::done;
    default:
        return Step::failed;
    }
}

const char *Statement::requiredCString(int column) const {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    if (!text)
        qFatal("a column that is never NULL is NULL: %s", sqlite3_column_name(m_statement, column));
    return text;
}

std::string_view Statement::behindNul(int column) const {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
    const std::size_t end = text ? std::strlen(text) : size;
    return end < size ? std::string_view(text + end + 1, size - end - 1) : std::string_view();
}

QByteArray Statement::requiredUtf8(int column) const {
    return requiredCString(column);
}

QString Statement::requiredText(int column) const {
    return QString::fromUtf8(requiredCString(column));
}

std::optional<QString> Statement::text(int column) const {
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL)
        return std::nullopt;
    return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column)));
}

double Statement::real(int column) const {
    return sqlite3_column_double(m_statement, column);
}

bool Statement::flag(int column) const {
    return sqlite3_column_int(m_statement, column) == 1;
}

int Statement::integer(int column) const {
    return sqlite3_column_int(m_statement, column);
}

bool Statement::isReal(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_FLOAT;
}

bool Statement::isText(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_TEXT;
}

bool Statement::isPlainFlag(int column) const {
    if (sqlite3_column_type(m_statement, column) != SQLITE_INTEGER)
        return false;
    const sqlite3_int64 value = sqlite3_column_int64(m_statement, column);
    return value == 0 || value == 1;
}

} // namespace tavrine
