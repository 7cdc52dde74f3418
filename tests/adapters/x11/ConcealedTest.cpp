#include "adapters/pasteboard/SecretDigests.h"
#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;

/// What password managers put on the clipboard, and what becomes of it in other hands.
class Concealed : public X11PasteboardFixture {
protected:
    [[nodiscard]] static TestOwner::Contents marked(const Answer &text, const QByteArray &mark = hint,
                                                    const QByteArray &value = "secret") {
        return {{"UTF8_STRING", text}, {"text/html", {.bytes = "<b>secret</b>"}}, {mark, {.bytes = value}}};
    }
    [[nodiscard]] bool isConcealed() {
        const QStringList types = pasteboard().types().value_or(QStringList());
        return types.contains(QLatin1String(pasteboardType::concealed)) && !pasteboard().string() &&
               !pasteboard().image();
    }
    /// The password manager copies, and what it copied has been looked at.
    void conceal(TestOwner &manager, const Answer &text) {
        manager.own(marked(text));
        ASSERT_TRUE(changed());
        EXPECT_TRUE(isConcealed());
        ASSERT_TRUE(waitUntil([&] { return manager.requestCount("UTF8_STRING") > 0; }));
        ASSERT_TRUE(settles());
    }

    static constexpr auto hint = "x-kde-passwordManagerHint";
    TestRequestor requestor;
};

TEST_F(Concealed, contentsAreKnownByEveryMarkThatIsInUse) {
    start();
    TestOwner owner;
    for (const auto &[mark, value] : std::initializer_list<std::pair<QByteArray, QByteArray>>{
             {hint, "secret"},
             {hint, ""},
             {hint, "public"},
             {"org.nspasteboard.ConcealedType", ""},
             {"application/x-nspasteboard-concealed-type", "hunter2"},
             {"ExcludeClipboardContentFromMonitorProcessing", "1"}}) {
        owner.own(marked({.bytes = "hunter2"}, mark, value));
        ASSERT_TRUE(changed()) << mark.constData();
        EXPECT_TRUE(isConcealed()) << mark.constData();
        EXPECT_TRUE(settles());
        EXPECT_EQ(owner.requestCount("text/html"), 0) << mark.constData();
        EXPECT_EQ(owner.requestCount(mark), 0) << "that it is there is enough";
    }
}

TEST_F(Concealed, textIsConcealedInOtherHandsToo) {
    start();
    TestOwner passwords;
    conceal(passwords, {.bytes = "hunter2"});
    passwords.clear(); // as they do after some seconds
    ASSERT_TRUE(changed());
    TestOwner keeper; // another clipboard manager, which fills what is empty
    keeper.own({{"STRING", {.bytes = "hunter2"}}, {"UTF8_STRING", {.bytes = "hunter2"}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(isConcealed());
    keeper.end();
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().types()) << "it is not kept alive either";
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 300));
}

TEST_F(Concealed, textIsKnownAgainInAnyEncodingAndTrimmed) {
    start();
    TestOwner passwords;
    conceal(passwords, {.bytes = "gr\xC3\xBC\xC3\x9F\x65 2\n"});
    TestOwner keeper;
    for (const TestOwner::Contents &contents :
         {TestOwner::Contents{{"STRING", {.bytes = "gr\xFC\xDF\x65 2"}}},
          TestOwner::Contents{{"text/plain", {.bytes = QByteArray(" gr\xC3\xBC\xC3\x9F\x65 2\0", 11)}}},
          TestOwner::Contents{{"text/plain", {.bytes = "gr\xFC\xDF\x65 2"}}}}) {
        keeper.own(contents);
        ASSERT_TRUE(changed());
        EXPECT_TRUE(isConcealed()) << contents.front().first.constData();
    }
}

TEST_F(Concealed, textLeavesOtherTextsAlone) {
    start();
    TestOwner passwords;
    conceal(passwords, {.bytes = "hunter2"});
    TestOwner editor;
    for (const QByteArray text : {"hunter", "hunter22", "Hunter2", "hunter 2"}) {
        editor.ownText(text);
        ASSERT_TRUE(changed());
        EXPECT_EQ(pasteboard().string(), QString::fromLatin1(text));
    }
}

TEST_F(Concealed, textsOfTheLastTimeAreRememberedAndNoMore) {
    start();
    TestOwner passwords;
    const int count = static_cast<int>(SecretDigests::remembered);
    for (int i = 0; i <= count; ++i)
        conceal(passwords, {.bytes = "secret number " + QByteArray::number(i)});
    TestOwner keeper;
    keeper.ownText("secret number 1");
    ASSERT_TRUE(changed());
    EXPECT_TRUE(isConcealed());
    keeper.ownText("secret number 0");
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("secret number 0"));
}

TEST_F(Concealed, textLongerThanAnyPasswordIsNotFetched) {
    start();
    TestOwner passwords;
    const QByteArray longest(SecretDigests::longestBytes, 'p');
    conceal(passwords, {.bytes = longest});
    conceal(passwords, {.bytes = longest + 'q'});
    TestOwner keeper;
    keeper.ownText(longest);
    ASSERT_TRUE(changed());
    EXPECT_TRUE(isConcealed());
    keeper.ownText(longest + 'q');
    ASSERT_TRUE(changed());
    EXPECT_FALSE(isConcealed());
}

TEST_F(Concealed, contentsOfAProgramThatHangsHoldNobodyUp) {
    SelectionLimits patient = shortLimits();
    patient.answer = patient.total = std::chrono::minutes(1);
    start(patient);
    TestOwner passwords;
    passwords.own(marked(Answer::silent()));
    ASSERT_TRUE(changed());
    EXPECT_TRUE(isConcealed());
    EXPECT_TRUE(nextCopyIsSeen());
}

TEST_F(Concealed, contentsEndWithTheirProgram) {
    start();
    TestOwner passwords;
    conceal(passwords, {.bytes = "hunter2"});
    passwords.end();
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 300));
}

} // namespace
} // namespace tavrine
