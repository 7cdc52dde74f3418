#include "clipboard/FastLike.h"

#include "clipboard/LikePattern.h"
#include "clipboard/LiteralSearch.h"

#include <array>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace tavrine {
namespace {

struct Blob {
    std::string bytes;
};
using Value = std::variant<std::nullptr_t, std::string, Blob, double, int>;

/// One statement on a connection of its own, with SQLite's LIKE or with ours.
class Like {
public:
    enum class Kind { builtIn, ours };
    Like(Kind kind, const char *sql) {
        sqlite3_open(":memory:", &m_db);
        if (kind == Kind::ours)
            installFastLike(m_db);
        sqlite3_prepare_v2(m_db, sql, -1, &m_statement, nullptr);
    }
    ~Like() {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_db);
    }
    Like(const Like &) = delete;
    Like &operator=(const Like &) = delete;

    /// "1", "0", "NULL", or the error.
    std::string of(std::initializer_list<Value> values) {
        int index = 0;
        for (const Value &value : values)
            bind(++index, value);
        if (sqlite3_step(m_statement) != SQLITE_ROW) {
            const std::string error = sqlite3_errmsg(m_db);
            sqlite3_reset(m_statement);
            return error;
        }
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, 0));
        const std::string result = text ? text : "NULL";
        sqlite3_reset(m_statement);
        return result;
    }
    sqlite3 *handle() { return m_db; }

private:
    void bind(int index, const Value &value) {
        if (const auto *text = std::get_if<std::string>(&value))
            sqlite3_bind_text(m_statement, index, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
        else if (const auto *blob = std::get_if<Blob>(&value))
            sqlite3_bind_blob(m_statement, index, blob->bytes.data(), static_cast<int>(blob->bytes.size()),
                              SQLITE_STATIC);
        else if (const auto *real = std::get_if<double>(&value))
            sqlite3_bind_double(m_statement, index, *real);
        else if (const auto *integer = std::get_if<int>(&value))
            sqlite3_bind_int(m_statement, index, *integer);
        else
            sqlite3_bind_null(m_statement, index);
    }

    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_statement = nullptr;
};

std::string hex(const std::string &bytes) {
    std::string text;
    for (const char byte : bytes) {
        constexpr auto digits = "0123456789abcdef";
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[byte & 15];
        text += ' ';
    }
    return text;
}

/// Makes texts and patterns of few letters, so that they meet, and of every malformed sort of UTF-8.
class Bytes {
public:
    explicit Bytes(unsigned seed) : m_random(seed) {}

    unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

    std::string text(unsigned longest) {
        std::string text;
        for (auto pieces = below(longest + 1); pieces > 0; --pieces)
            text += piece();
        return text;
    }
    std::string pattern(unsigned longest) {
        std::string pattern;
        for (auto pieces = below(longest + 1); pieces > 0; --pieces) {
            constexpr std::array<const char *, 6> special{"%", "_", "\\", "\\%", "\\_", "\\\\"};
            pattern += below(3) == 0 ? std::string(special[below(special.size())]) : piece();
        }
        return pattern;
    }
    /// A part of `text` as the search wraps one: between percent signs.
    std::string partOf(const std::string &text) {
        const auto start = below(static_cast<unsigned>(text.size()) + 1);
        std::string part = text.substr(start, below(12));
        for (char &byte : part) {
            if (below(4) == 0 && byte >= 'a' && byte <= 'z')
                byte = static_cast<char>(byte - 0x20);
        }
        return "%" + part + "%";
    }

private:
    std::string piece() {
        constexpr std::array<const char *, 30> pieces{"a",
                                                      "A",
                                                      "b",
                                                      "B",
                                                      "z",
                                                      "[",
                                                      "{",
                                                      "@",
                                                      "`",
                                                      "%",
                                                      "_",
                                                      "\\",
                                                      "k",
                                                      "\xC3\xA9",
                                                      "\xC3\x89",
                                                      "\xE2\x82\xAC",
                                                      "\xF0\x9F\x98\x80",
                                                      "\xEF\xBF\xBD",
                                                      "\xEF\xBF\xBE",
                                                      "\xED\xA0\x80",
                                                      "\xC1\xA1",
                                                      "\xE0\x83\xA9",
                                                      "\xA9",
                                                      "\xC3",
                                                      "\xE2\x82",
                                                      "\xF4\x90\x80\x80",
                                                      "\xFC\x80\x80\x80\x83\xA9",
                                                      "\xFF",
                                                      "\xE2\x84\xAA",
                                                      "\xC5\xBF"};
        if (below(200) == 0)
            return {1, '\0'};
        if (below(8) == 0)
            return {1, static_cast<char>(below(256))};
        return pieces[below(pieces.size())];
    }

    std::mt19937_64 m_random;
};

class FastLikeTest : public testing::Test {
protected:
    static constexpr auto two = "SELECT ?2 LIKE ?1";
    static constexpr auto three = "SELECT ?2 LIKE ?1 ESCAPE ?3";
    Like builtIn2{Like::Kind::builtIn, two};
    Like ours2{Like::Kind::ours, two};
    Like builtIn3{Like::Kind::builtIn, three};
    Like ours3{Like::Kind::ours, three};

    void expectEqual(const Value &pattern, const Value &text) {
        EXPECT_EQ(ours2.of({pattern, text}), builtIn2.of({pattern, text}));
    }
    void expectEqual(const Value &pattern, const Value &text, const Value &escape) {
        EXPECT_EQ(ours3.of({pattern, text, escape}), builtIn3.of({pattern, text, escape}));
    }
};

TEST_F(FastLikeTest, equalsTheBuiltInOnRandomTextsAndPatterns) {
    Bytes bytes(1);
    int matched = 0;
    for (int i = 0; i < 150'000; ++i) {
        const std::string text = bytes.text(10);
        const std::string pattern = bytes.below(2) == 0 ? bytes.partOf(text) : bytes.pattern(6);
        const std::string expected = builtIn3.of({pattern, text, std::string("\\")});
        ASSERT_EQ(ours3.of({pattern, text, std::string("\\")}), expected) << hex(pattern) << "on " << hex(text);
        matched += expected == "1";
    }
    EXPECT_GT(matched, 30'000); // both answers are common
    EXPECT_LT(matched, 120'000);
}

TEST_F(FastLikeTest, equalsTheBuiltInWithoutAnEscape) {
    Bytes bytes(2);
    for (int i = 0; i < 40'000; ++i) {
        const std::string text = bytes.text(10);
        const std::string pattern = bytes.below(2) == 0 ? bytes.partOf(text) : bytes.pattern(6);
        ASSERT_EQ(ours2.of({pattern, text}), builtIn2.of({pattern, text})) << hex(pattern) << "on " << hex(text);
    }
}

TEST_F(FastLikeTest, equalsTheBuiltInWithAnyEscape) {
    Bytes bytes(3);
    constexpr std::array<const char *, 9> escapes{"%", "_", "a", "A", "\xC3\xA9", "\xA9", "\xEF\xBF\xBD", "\xFF", "[["};
    for (int i = 0; i < 40'000; ++i) {
        const std::string text = bytes.text(8);
        const std::string pattern = bytes.pattern(7);
        const std::string escape = escapes[bytes.below(escapes.size())];
        ASSERT_EQ(ours3.of({pattern, text, escape}), builtIn3.of({pattern, text, escape}))
            << hex(pattern) << "on " << hex(text) << "escape " << hex(escape);
    }
}

TEST_F(FastLikeTest, equalsTheBuiltInWhereALiteralCrossesTheBlocksOfTheSearch) {
    Bytes bytes(4);
    for (unsigned length = 0; length < 70; ++length) {
        for (unsigned size = 1; size < 40; ++size) {
            std::string text(length, 'a');
            for (char &byte : text)
                byte = "aAbB"[bytes.below(4)];
            std::string literal =
                length >= size ? text.substr(bytes.below(length - size + 1), size) : std::string(size, 'a');
            if (bytes.below(2) == 0)
                literal[bytes.below(size)] = 'b';
            const std::string pattern = "%" + literal + "%";
            ASSERT_EQ(ours2.of({pattern, text}), builtIn2.of({pattern, text})) << pattern << " on " << text;
        }
    }
}

TEST_F(FastLikeTest, equalsTheBuiltInOnTextThatTemptsTheSearch) {
    const std::string many(5000, 'a');
    expectEqual("%" + std::string(300, 'a') + "b%", many);
    expectEqual("%" + std::string(300, 'a') + "b%", many + "b");
    expectEqual(std::string("%a_b%"), many);
    expectEqual("%a%a%a%a%b", std::string(60, 'a'));
    expectEqual("%__________%", std::string("123456789"));
    expectEqual("%__________%", std::string("1234567890"));
    expectEqual(std::string("%\\"), std::string("a\\"), std::string("\\"));
    expectEqual(std::string("%"), std::string());
    expectEqual(std::string(), std::string());
    expectEqual(std::string("%%"), std::string("anything"));
    expectEqual(std::string("%{%"), std::string("["));
    expectEqual(std::string("%@%"), std::string("`"));
}

TEST_F(FastLikeTest, equalsTheBuiltInOnNumbersBlobsAndNull) {
    const std::vector<Value> values{nullptr,
                                    std::string("1%"),
                                    std::string("%5%"),
                                    std::string(),
                                    Blob{"%"},
                                    Blob{""},
                                    Blob{"1.5"},
                                    1.5,
                                    15,
                                    -1,
                                    std::string("%\0%", 3),
                                    std::string("1\0"
                                                "5",
                                                3),
                                    std::string("\xEF\xBF\xBD")};
    for (const Value &pattern : values) {
        for (const Value &text : values) {
            expectEqual(pattern, text);
            for (const Value &escape : values)
                expectEqual(pattern, text, escape);
        }
    }
}

TEST_F(FastLikeTest, refusesWhatTheBuiltInRefusesInItsWords) {
    const std::string longest(50'000, 'a');
    expectEqual(longest, longest);
    EXPECT_EQ(ours2.of({longest, longest}), "1");
    expectEqual(longest + "a", std::string("a"));
    EXPECT_EQ(ours2.of({longest + "a", std::string("a")}), "LIKE or GLOB pattern too complex");
    EXPECT_EQ(ours3.of({std::string("a"), std::string("a"), std::string("ab")}),
              "ESCAPE expression must be a single character");
    EXPECT_EQ(ours3.of({std::string("a"), std::string("a"), std::string()}),
              "ESCAPE expression must be a single character");
    for (Like *like : {&ours2, &builtIn2})
        sqlite3_limit(like->handle(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 3);
    expectEqual(std::string("%a%"), std::string("a"));
    expectEqual(std::string("%aa%"), std::string("aa"));
}

TEST_F(FastLikeTest, aPatternOrAnEscapeThatChangesFromRowToRowIsReadAnew) {
    constexpr auto rows =
        "WITH rows(pattern,text,sign) AS (VALUES ('%a%','xAx','!'),('%b%','xAx','!'),('%!%','x%','!'),"
        "('%!%%','x%','!'),('%!%','!x','#'),(NULL,'x','!'),('%x%',NULL,'!')) "
        "SELECT group_concat(ifnull(text LIKE pattern ESCAPE sign,'n') || ifnull(text LIKE '%!%' ESCAPE "
        "sign,'n') || ifnull(text LIKE pattern,'n')) FROM rows";
    Like builtIn(Like::Kind::builtIn, rows);
    Like ours(Like::Kind::ours, rows);
    const std::string expected = builtIn.of({});
    EXPECT_NE(expected.find('1'), std::string::npos);
    EXPECT_EQ(ours.of({}), expected);
}

TEST(LiteralSearch, theRarestBytesAreTwoPlacesOfTheLiteral) {
    EXPECT_EQ(rarestBytes("e"), (std::pair<std::size_t, std::size_t>(0, 0)));
    EXPECT_EQ(rarestBytes("eq"), (std::pair<std::size_t, std::size_t>(1, 0)));
    EXPECT_EQ(rarestBytes("eeqez"), (std::pair<std::size_t, std::size_t>(2, 4)));
}

TEST(LiteralSearch, wellFormedMeansOneProperSpelling) {
    for (const char *proper : {"", "a", "\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x90\x80\x80",
                               "\xF4\x8F\xBF\xBF", "a long text of letters with \xE2\x82\xAC behind"})
        EXPECT_TRUE(isWellFormedUtf8(proper)) << hex(proper);
    for (const char *improper : {"\x80", "\xC1\xBF", "\xC3", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xEF\xBF",
                                 "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3\xA9\xA9",
                                 "a long text of letters with \xE2\x82 behind"})
        EXPECT_FALSE(isWellFormedUtf8(improper)) << hex(improper);
}

} // namespace
} // namespace tavrine
