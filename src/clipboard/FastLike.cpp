#include "clipboard/FastLike.h"

#include "clipboard/LikePattern.h"

#include <memory>
#include <optional>

#include <sqlite3.h>

namespace tavrine {
namespace {

constexpr int patternArgument = 0;
constexpr int textArgument = 1;
constexpr int escapeArgument = 2;

/// The argument as text, without the NUL behind it; absent when it is NULL. The text comes first: only then do the
/// bytes count its length.
std::optional<std::string_view> textOf(sqlite3_value *value) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    if (!text)
        return std::nullopt;
    return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

/// The escape character of the statement, or absent when the call has its result already: an error, or NULL.
std::optional<char32_t> escapeOf(sqlite3_context *context, sqlite3_value *value) {
    const auto text = textOf(value);
    if (!text)
        return std::nullopt;
    const char *position = text->data();
    const char32_t escape = LikePattern::readCharacter(&position);
    if (escape == 0 || *position != 0) {
        sqlite3_result_error(context, "ESCAPE expression must be a single character", -1);
        return std::nullopt;
    }
    return escape;
}

void deletePattern(void *pattern) {
    delete static_cast<LikePattern *>(pattern);
}

/// like(PATTERN, TEXT [, ESCAPE]), which is how SQLite calls TEXT LIKE PATTERN [ESCAPE ESCAPE].
void like(sqlite3_context *context, int argumentCount, sqlite3_value **arguments) {
    // Debian's SQLite lets no BLOB match, on either side.
    if (sqlite3_value_type(arguments[patternArgument]) == SQLITE_BLOB ||
        sqlite3_value_type(arguments[textArgument]) == SQLITE_BLOB) {
        sqlite3_result_int(context, 0);
        return;
    }
    sqlite3 *db = sqlite3_context_db_handle(context);
    if (sqlite3_value_bytes(arguments[patternArgument]) > sqlite3_limit(db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1)) {
        sqlite3_result_error(context, "LIKE or GLOB pattern too complex", -1);
        return;
    }
    char32_t escape = 0;
    if (argumentCount > escapeArgument) {
        const auto given = escapeOf(context, arguments[escapeArgument]);
        if (!given)
            return;
        escape = *given;
    }
    const auto text = textOf(arguments[textArgument]);
    // A pattern that does not change from row to row is kept with the statement.
    const auto *kept = static_cast<const LikePattern *>(sqlite3_get_auxdata(context, patternArgument));
    if (kept && kept->escape() == escape) {
        if (text)
            sqlite3_result_int(context, kept->matches(*text) ? 1 : 0);
        return;
    }
    const auto pattern = textOf(arguments[patternArgument]);
    if (!pattern || !text)
        return;
    auto compiled = std::make_unique<LikePattern>(*pattern, escape);
    sqlite3_result_int(context, compiled->matches(*text) ? 1 : 0);
    sqlite3_set_auxdata(context, patternArgument, compiled.release(), deletePattern); // may delete it at once
}

} // namespace

void installFastLike(sqlite3 *db) {
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (const int argumentCount : {2, 3})
        sqlite3_create_function_v2(db, "like", argumentCount, flags, nullptr, like, nullptr, nullptr, nullptr);
}

} // namespace tavrine
