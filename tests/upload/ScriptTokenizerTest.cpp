#include "upload/ScriptTokenizer.h"

#include "upload/ScriptEditing.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

/// Each token as "kind:text", in order; brackets are left out.
QStringList told(const QString &script) {
    static const QStringList names{QStringLiteral("keyword"),  QStringLiteral("number"),  QStringLiteral("string"),
                                   QStringLiteral("template"), QStringLiteral("comment"), QStringLiteral("regex"),
                                   QStringLiteral("function")};
    QStringList result;
    ScriptLineState state;
    for (const QString &line : script.split(QLatin1Char('\n'))) {
        state = ScriptLineState::unpacked(state.packed());
        for (const ScriptToken &token : scriptTokens(line, state)) {
            if (token.kind != ScriptTokenKind::bracket)
                result << names[int(token.kind)] + QLatin1Char(':') + line.mid(token.start, token.length);
        }
    }
    return result;
}

QStringList told(const char *script) {
    return told(QString::fromUtf8(script));
}

QStringList list(std::initializer_list<const char *> items) {
    QStringList result;
    for (const char *each : items)
        result << QString::fromUtf8(each);
    return result;
}

TEST(ScriptTokenizer, tellsKeywordsNumbersAndFunctions) {
    EXPECT_EQ(told("const a = f(0x1F, 1.5e-3, .5, 10n) + new_;"),
              list({"keyword:const", "function:f", "number:0x1F", "number:1.5e-3", "number:.5", "number:10n"}));
    EXPECT_EQ(told("0x1e+2 1-2"), list({"number:0x1e", "number:2", "number:1", "number:2"}));
    EXPECT_EQ(told("returned constant"), QStringList());
}

TEST(ScriptTokenizer, aMemberIsNoKeyword) {
    EXPECT_EQ(told("a.new + a.delete(1) + [...new Set]"), list({"function:delete", "number:1", "keyword:new"}));
}

TEST(ScriptTokenizer, stringsEndAtTheirQuoteOrAtTheLine) {
    EXPECT_EQ(told(R"("a\"b" 'c"d' "open)"), list({R"(string:"a\"b")", R"(string:'c"d')", "string:\"open"}));
    EXPECT_EQ(told("\"open\nlet"), list({"string:\"open", "keyword:let"}));
    EXPECT_EQ(told("\"\\"), list({"string:\"\\"}));
}

TEST(ScriptTokenizer, commentsReachOverLines) {
    EXPECT_EQ(told("a // let 1\nlet"), list({"comment:// let 1", "keyword:let"}));
    EXPECT_EQ(told("/* let\n1 */ let /* */ 2"),
              list({"comment:/* let", "comment:1 */", "keyword:let", "comment:/* */", "number:2"}));
    EXPECT_EQ(told("/*/ let */ 1"), list({"comment:/*/ let */", "number:1"}));
}

TEST(ScriptTokenizer, templatesReachOverLinesAndHoldCode) {
    EXPECT_EQ(told("`a ${b + 1} c`"), list({"template:`a ${", "number:1", "template:} c`"}));
    EXPECT_EQ(told("`a\nlet` let"), list({"template:`a", "template:let`", "keyword:let"}));
    EXPECT_EQ(told("`${ {a: {b: 1}} }x` 2"), list({"template:`${", "number:1", "template:}x`", "number:2"}));
    EXPECT_EQ(told("`\\${a}` 1"), list({"template:`\\${a}`", "number:1"}));
}

TEST(ScriptTokenizer, templatesNestAndComeBack) {
    EXPECT_EQ(told("`1${`2${`3${4}`}`}` 5"), list({"template:`1${", "template:`2${", "template:`3${", "number:4",
                                                   "template:}`", "template:}`", "template:}`", "number:5"}));
    EXPECT_EQ(told("`${\n`${\n1\n}`\n}` 2"),
              list({"template:`${", "template:`${", "number:1", "template:}`", "template:}`", "number:2"}));
}

TEST(ScriptTokenizer, aSlashDividesBehindAnOperandAndBeginsAnExpressionElsewhere) {
    EXPECT_EQ(told("a / b / 2"), list({"number:2"}));
    EXPECT_EQ(told("(a) / 2 / g"), list({"number:2"}));
    EXPECT_EQ(told("x = /a\\/[/]b/gi.test(1)"), list({"regex:/a\\/[/]b/gi", "function:test", "number:1"}));
    EXPECT_EQ(told("return /let/;"), list({"keyword:return", "regex:/let/"}));
    EXPECT_EQ(told("this / 1 / 2"), list({"keyword:this", "number:1", "number:2"}));
    EXPECT_EQ(told("a\n/ 2 / 3"), list({"number:2", "number:3"}));
    EXPECT_EQ(told("= / open"), QStringList());
}

TEST(ScriptTokenizer, takesWhateverTextThereIs) {
    const QString signs = QStringLiteral("`${}{}()[]/\\*'\"a1.\n \u00e4\U0001F642$");
    quint32 seed = 1;
    ScriptLineState state;
    for (int i = 0; i < 20'000; ++i) {
        QString line;
        for (int letters = 0; letters < 24; ++letters) {
            seed = seed * 1664525 + 1013904223;
            line += signs[qsizetype(seed >> 8) % signs.size()];
        }
        qsizetype end = 0;
        for (const ScriptToken &token : scriptTokens(line, state)) {
            ASSERT_GE(token.start, end);
            ASSERT_GT(token.length, 0);
            end = token.start + token.length;
        }
        ASSERT_LE(end, line.size());
        ASSERT_GE(state.packed(), 0);
        ASSERT_EQ(ScriptLineState::unpacked(state.packed()), state);
    }
}

TEST(ScriptEditing, aNewLineKeepsTheIndentationAndAnOpenBracketAddsAStep) {
    using scriptEditing::indentAfter;
    EXPECT_EQ(indentAfter(QStringLiteral("  a;")), QStringLiteral("  "));
    EXPECT_EQ(indentAfter(QStringLiteral("  if (a) {")), QStringLiteral("    "));
    EXPECT_EQ(indentAfter(QStringLiteral("f(  ")), QStringLiteral("  "));
    EXPECT_EQ(indentAfter(QStringLiteral("\t[")), QStringLiteral("\t  "));
    EXPECT_EQ(indentAfter(QStringLiteral("   ")), QStringLiteral("   "));
    EXPECT_EQ(indentAfter(QString()), QString());
}

TEST(ScriptEditing, aStepToTheLeftTakesOneStepOfWhiteSpaceAtMost) {
    using scriptEditing::outdentOf;
    EXPECT_EQ(outdentOf(QStringLiteral("    a")), 2);
    EXPECT_EQ(outdentOf(QStringLiteral(" a")), 1);
    EXPECT_EQ(outdentOf(QStringLiteral("\t\ta")), 1);
    EXPECT_EQ(outdentOf(QStringLiteral("a")), 0);
    EXPECT_EQ(outdentOf(QString()), 0);
}

TEST(ScriptEditing, bracketsFindEachOther) {
    using scriptEditing::matchingBracket;
    const QString text = QStringLiteral("f(a[1], {b: (2)})");
    EXPECT_EQ(matchingBracket(text, 1), 16);
    EXPECT_EQ(matchingBracket(text, 16), 1);
    EXPECT_EQ(matchingBracket(text, 3), 5);
    EXPECT_EQ(matchingBracket(text, 0), -1);
    EXPECT_EQ(matchingBracket(text, -1), -1);
    EXPECT_EQ(matchingBracket(text, 99), -1);
    EXPECT_EQ(matchingBracket(QStringLiteral("((a)"), 0), -1);
    EXPECT_EQ(matchingBracket(QStringLiteral("(  )"), 0, 3), 3);
    EXPECT_EQ(matchingBracket(QStringLiteral("(  )"), 0, 2), -1);
}

} // namespace
} // namespace tavrine
