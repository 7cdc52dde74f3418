#include "adapters/wayland/WaylandPasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QElapsedTimer>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto text = "text/plain;charset=utf-8";

/// Owners that hang, lie, flood and send rubbish. None of them may cost more than the limits, and after each the next
/// copy is seen.
class HostileSource : public WaylandPasteboardFixture {
protected:
    HostileSource() { start(); }
    ~HostileSource() override {
        EXPECT_TRUE(nextCopyIsSeen());
        EXPECT_EQ(pasteboard().changeCount(), m_count + 1) << "and nothing was told of twice before it";
        EXPECT_EQ(m_lost, "");
    }

    void expectNoText() {
        ASSERT_TRUE(changed());
        EXPECT_EQ(steps(), 1);
        EXPECT_TRUE(hasType(pasteboardType::string));
        EXPECT_FALSE(pasteboard().string());
    }
    void expectText(const QString &expected) {
        ASSERT_TRUE(changed());
        EXPECT_EQ(steps(), 1);
        EXPECT_TRUE(pasteboard().string() == expected);
    }
    static QByteArray letters(qsizetype count) { return QByteArray(count, 'x'); }

    TestSource source;
};

TEST_F(HostileSource, hangsAndIsWaitedForOnlyAsLongAsTheLimitSays) {
    start(shortLimits());
    QElapsedTimer timer;
    timer.start();
    source.own({{text, SourceAnswer::silent()}, {"text/plain", {.bytes = "plain"}}});
    expectNoText();
    EXPECT_GE(timer.elapsed(), shortLimits().answer.count() - 1);
    EXPECT_EQ(source.requestCount("text/plain"), 0) << "who hangs is asked for nothing more";
    EXPECT_EQ(source.requestCount(text), 1) << "no question gets lost, so none is asked twice";
}

TEST_F(HostileSource, hangsAndDelaysNeitherTheMainThreadNorTheNextCopy) {
    SelectionLimits limits = patientLimits();
    limits.answer = limits.total = 60s;
    start(limits);
    source.own({{text, SourceAnswer::silent()}});
    ASSERT_TRUE(waitUntil([&] { return source.requestCount(text) == 1; }));
    QElapsedTimer timer;
    timer.start();
    static_cast<void>(pasteboard().types());
    static_cast<void>(pasteboard().string());
    static_cast<void>(pasteboard().image());
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_LT(timer.elapsed(), 30000) << "not for as long as an owner may take";
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 2) << "the one that was replaced unread is counted as well";
}

TEST_F(HostileSource, offersNothing) {
    source.own({});
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_FALSE(pasteboard().types());
}

TEST_F(HostileSource, offersMoreTargetsThanAreReadAndTheFirstOnesCount) {
    for (const int before : {499, 500}) {
        TestSource::Contents contents;
        for (int i = 0; i < 700; ++i) {
            if (i == before)
                contents.push_back({text, {.bytes = "among many"}});
            contents.push_back({"x/nothing-" + QByteArray::number(i), SourceAnswer::refused()});
        }
        source.own(contents);
        ASSERT_TRUE(changed());
        EXPECT_EQ(pasteboard().string().has_value(), before == 499);
        EXPECT_EQ(pasteboard().types()->size(), 500);
    }
}

TEST_F(HostileSource, offersTheSameTargetAgainAndAgain) {
    source.own({{text, {.bytes = "once"}}, {text, {.bytes = "twice"}}, {text, {.bytes = "thrice"}}});
    expectText(QStringLiteral("once"));
    EXPECT_EQ(pasteboard().types()->size(), 1);
}

TEST_F(HostileSource, refusesWhatItHasOffered) {
    source.own({{text, SourceAnswer::refused()}, {"text/plain", {.bytes = "plain"}}});
    expectText(QStringLiteral("plain"));
}

TEST_F(HostileSource, isAskedForNothingThatIsMadeOfTheTextAsWell) {
    source.own({{"UTF8_STRING", {.bytes = "text"}},
                {text, {.bytes = "?"}},
                {"STRING", {.bytes = "?"}},
                {"TEXT", {.bytes = "?"}},
                {"x/last", {.bytes = "last"}}});
    expectText(QStringLiteral("text"));
    ASSERT_TRUE(waitUntil([&] { return source.requestCount("x/last") == 1; }));
    EXPECT_EQ(source.requestCount(), 2) << "the best form of the text, and what is something else";
}

TEST_F(HostileSource, hangsAfterTheTextAndTheTextStands) {
    source.own({{"image/png", SourceAnswer::silent()}, {text, {.bytes = "text"}}});
    expectText(QStringLiteral("text"));
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileSource, stallsInTheMiddleOfATransfer) {
    start(shortLimits());
    source.own({{text, {.bytes = letters(10000), .pieceBytes = 1000, .silentAfterPieces = 3}}});
    expectNoText();
}

TEST_F(HostileSource, endsInTheMiddleOfATransferAndWhatWasWholeStands) {
    const QByteArray picture = pngOf(coloured(90, 90)) + letters(200'000);
    source.own(
        {{text, {.bytes = "whole"}}, {"image/png", {.bytes = picture, .pieceBytes = 50'000, .endAfterPieces = 3}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("whole"));
    EXPECT_FALSE(pasteboard().image()) << "what came of it looks like a picture, but nobody knows its end";
    EXPECT_FALSE(hasType(pasteboardType::png)) << "it stands nowhere any more";
    TestPaster paster;
    ASSERT_TRUE(waitUntil([&] { return paster.isOwned(); }));
    EXPECT_EQ(paster.paste(text), "whole");
    EXPECT_EQ(paster.paste("image/png"), std::nullopt);
}

TEST_F(HostileSource, endsRightAfterItHasGivenASmallText) {
    // As programs do that serve one paste and leave.
    source.own({{text, {.bytes = "once"}}, {"x/late", {.bytes = "late", .endAfterPieces = 0}}});
    expectText(QStringLiteral("once"));
    TestPaster paster;
    ASSERT_TRUE(waitUntil([&] { // until it is ours: the compositor hears of the end when it comes to it
        const QList<QByteArray> targets = paster.targets();
        return targets.contains(text) && !targets.contains("x/late");
    }));
    EXPECT_EQ(paster.paste(text), "once");
}

TEST_F(HostileSource, endsWhenAskedForItsOnlyContents) {
    source.own({{text, {.bytes = "never seen", .endAfterPieces = 0}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(pasteboard().string());
}

TEST_F(HostileSource, sendsWithoutEndFast) {
    source.own({{text, {.bytes = letters(64 * 1024), .isEndless = true}}});
    expectNoText();
    EXPECT_LE(source.writtenBytes(), 1024 * 1024 + 3 * 64 * 1024) << "1 MiB, and what the pipe holds";
}

TEST_F(HostileSource, sendsWithoutEndSlowly) {
    SelectionLimits limits = patientLimits();
    limits.total = 600ms;
    start(limits);
    QElapsedTimer timer;
    timer.start();
    source.own({{text, {.bytes = "x", .pause = 5ms, .isEndless = true}}});
    expectNoText();
    EXPECT_GE(timer.elapsed(), 590);
}

TEST_F(HostileSource, sendsExactlyAsMuchAsAllowedAndOneByteMore) {
    source.own({{text, {.bytes = letters(1024 * 1024)}}});
    expectText(QString(1024 * 1024, QLatin1Char('x')));
    source.own({{text, {.bytes = letters(1024 * 1024 + 1)}}});
    expectNoText();
}

TEST_F(HostileSource, hasMoreInAllThanIsKept) {
    // 1.5 MiB for all: the second large one does not fit, the small one after it does.
    source.own({{text, {.bytes = "text"}},
                {"x/one", {.bytes = QByteArray(1024 * 1024, '1')}},
                {"x/two", {.bytes = QByteArray(1024 * 1024, '2')}},
                {"x/three", {.bytes = QByteArray(1000, '3')}}});
    ASSERT_TRUE(changed());
    TestPaster paster;
    ASSERT_TRUE(waitUntil([&] { return source.requestCount("x/three") == 1; }));
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    const QList<QByteArray> targets = paster.targets();
    EXPECT_TRUE(targets.contains("x/one"));
    EXPECT_FALSE(targets.contains("x/two"));
    EXPECT_TRUE(targets.contains("x/three"));
}

TEST_F(HostileSource, sendsFourHundredMegabytesAgainstTheProductsLimits) {
    start({});
    source.own({{text, {.bytes = letters(1024 * 1024), .isEndless = true}}});
    expectNoText();
    EXPECT_LE(source.writtenBytes(), qint64{66} * 1024 * 1024) << "64 MiB, and not 400";
}

TEST_F(HostileSource, sendsInvalidUtf8AndNuls) {
    source.ownText(QByteArray("a\xFF\xFE"
                              "b\0c\0\0",
                              8));
    expectText(QStringLiteral("a\uFFFD\uFFFDb") + QChar(u'\0') + QStringLiteral("c"));
}

TEST_F(HostileSource, sendsAPictureThatUnpacksIntoAllMemory) {
    source.own({{"image/png", {.bytes = pngThatSays(30000, 30000)}}, {text, {.bytes = "beside it"}}});
    expectText(QStringLiteral("beside it"));
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileSource, sendsHalfAPngAndTheNextFormIsTaken) {
    const QByteArray whole = pngOf(coloured(60, 60));
    QByteArray bmp;
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    coloured(60, 60).save(&buffer, "bmp");
    source.own({{"image/png", {.bytes = whole.first(whole.size() / 2)}}, {"image/bmp", {.bytes = bmp}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(60, 60));
}

TEST_F(HostileSource, takesTheClipboardAHundredTimesWithoutEverAnswering) {
    for (int i = 0; i < 100; ++i)
        source.own({{text, SourceAnswer::silent()}});
    EXPECT_TRUE(nextCopyIsSeen());
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 101);
}

TEST_F(HostileSource, copiesQuicklyAndNoTextIsTakenForAnothers) {
    // Of what was replaced before it was read some compositors give the newest contents.
    for (int i = 0; i < 100; ++i) {
        source.own({{text, {.bytes = "plain " + QByteArray::number(i)}}});
        source.own(
            {{text, {.bytes = "secret " + QByteArray::number(i)}}, {"x-kde-passwordManagerHint", {.bytes = "secret"}}});
        QElapsedTimer patience;
        patience.start();
        while (!hasType(pasteboardType::concealed) && patience.elapsed() < 10000) {
            const QString seen = pasteboard().string().value_or(QString());
            ASSERT_FALSE(seen.startsWith(QLatin1String("secret"))) << i;
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
        }
        ASSERT_FALSE(pasteboard().string()) << i;
        source.ownText("between");
        ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("between"); }));
    }
    m_count = pasteboard().changeCount();
}

TEST_F(HostileSource, hasASecretThatIsNotKeptAndIsKnownAgain) {
    source.own({{text, {.bytes = "hunter2"}}, {"x-kde-passwordManagerHint", {.bytes = "secret"}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(hasType(pasteboardType::concealed));
    EXPECT_FALSE(pasteboard().string());
    ASSERT_TRUE(waitUntil([&] { return source.requestCount(text) == 1; }));
    source.end();
    ASSERT_TRUE(changed()) << "it ends with its program";
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(TestPaster().isOwned());
    source.ownText("hunter2\n"); // as another program does that has let the mark go
    ASSERT_TRUE(changed());
    EXPECT_TRUE(hasType(pasteboardType::concealed));
    EXPECT_FALSE(pasteboard().string());
}

TEST_F(HostileSource, hasFilesThatWaitToBeMovedAndAreLeftToTheFileManager) {
    source.own({{"text/uri-list", {.bytes = "file:///tmp/a\r\n"}},
                {"x-special/gnome-copied-files", {.bytes = "cut\nfile:///tmp/a"}},
                {"application/x-kde-cutselection", {.bytes = "1"}},
                {"x/last", {.bytes = "last"}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(hasType(pasteboardType::fileUrl));
    ASSERT_TRUE(waitUntil([&] { return source.requestCount("x/last") == 1; }));
    EXPECT_EQ(source.requestCount("x-special/gnome-copied-files"), 0);
}

} // namespace
} // namespace tavrine
