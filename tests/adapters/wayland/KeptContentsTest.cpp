#include "adapters/wayland/WaylandPasteboardFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

namespace tavrine {
namespace {

constexpr auto plainText = "text/plain;charset=utf-8";

/// Keeping what others copied when they end.
class KeptContents : public WaylandPasteboardFixture {
protected:
    /// Until all that there is has been fetched: `last` is asked for behind everything else, and what is given before
    /// an end is taken.
    static void waitUntilFetched(const TestSource &source, const QByteArray &last) {
        ASSERT_TRUE(waitUntil([&] { return source.requestCount(last) == 1; }));
    }
};

TEST_F(KeptContents, whatStoodBeforeTheStartIsReadAndIsNoChange) {
    TestSource source;
    source.own({{plainText, {.bytes = "from before"}}, {"text/html", {.bytes = "<b>from before</b>"}}});
    start();
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string().has_value(); }));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("from before"));
    EXPECT_TRUE(hasType(pasteboardType::html));
    EXPECT_EQ(pasteboard().changeCount(), m_count);
    waitUntilFetched(source, "text/html");
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    EXPECT_EQ(TestPaster().paste("text/html"), "<b>from before</b>");
}

TEST_F(KeptContents, aCopyRightAfterTheStartIsAChangeEvenIfAnotherOwnerStoodBefore) {
    TestSource old;
    old.own({{plainText, SourceAnswer::silent()}});
    start();
    TestSource source;
    source.ownText("new");
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1) << "what stood before does not count, read or unread";
}

TEST_F(KeptContents, everyTargetIsGivenAsItCameWhenTheOwnerIsGone) {
    start();
    TestSource source;
    const TestSource::Contents contents{
        {plainText, {.bytes = "text"}},
        {"text/html", {.bytes = "<b>text</b>"}},
        {"application/rtf", {.bytes = "{\\rtf1 text}"}},
        {"image/png", {.bytes = pngOf(coloured(40, 30))}},
        {"image/svg+xml", {.bytes = "<svg/>"}},
        {"x/large", {.bytes = QByteArray(700'001, 'L')}},
        {"x/refused", SourceAnswer::refused()},
        {"application/x-kde-cutselection", {.bytes = "0"}},
        {"x-special/gnome-copied-files", {.bytes = "copy\nfile:///tmp/a"}},
        {"x/last", {.bytes = "last"}},
    };
    source.own(contents);
    ASSERT_TRUE(changed());
    waitUntilFetched(source, "x/last");
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    TestPaster paster;
    for (const auto &[target, answer] : contents) {
        const auto pasted = paster.paste(target);
        ASSERT_EQ(pasted.has_value(), target != "x/refused") << target.constData();
        if (pasted) {
            EXPECT_TRUE(*pasted == answer.bytes) << target.constData();
        }
    }
    EXPECT_FALSE(paster.targets().contains("x/refused"));
    EXPECT_EQ(pasteboard().changeCount(), m_count) << "keeping alive is no change";
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_EQ(pasteboard().changeCount(), m_count + 1);
}

TEST_F(KeptContents, formsOfTheSameTextAndPictureAreMadeWhenSomebodyAsks) {
    start();
    TestSource source;
    source.own({{"UTF8_STRING", {.bytes = "Grüße"}},
                {plainText, {.bytes = "?"}},
                {"STRING", {.bytes = "?"}},
                {"image/png", {.bytes = pngOf(coloured(40, 30))}},
                {"image/bmp", {.bytes = "?"}},
                {"x/last", {.bytes = "last"}}});
    ASSERT_TRUE(changed());
    waitUntilFetched(source, "x/last");
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    TestPaster paster;
    EXPECT_EQ(paster.paste(plainText), "Grüße");
    EXPECT_EQ(paster.paste("STRING"), QStringLiteral("Grüße").toLatin1());
    EXPECT_EQ(QImage::fromData(paster.paste("image/bmp").value_or(QByteArray())).size(), QSize(40, 30));
}

TEST_F(KeptContents, areReplacedByTheNextCopyAndKeptAgain) {
    start();
    for (const QByteArray word : {"one", "two", "three"}) {
        TestSource source;
        source.ownText(word);
        ASSERT_TRUE(changed());
        EXPECT_EQ(steps(), 1);
        ASSERT_TRUE(endAndWaitForTheKeeper(source));
        EXPECT_EQ(TestPaster().paste(plainText), word);
    }
}

TEST_F(KeptContents, areGoneWhenAnotherProgramEmptiesTheClipboard) {
    start();
    TestSource source;
    source.ownText("kept");
    ASSERT_TRUE(changed());
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    TestSource other;
    other.clear();
    ASSERT_TRUE(changed()) << "of what is ours nobody but we can end";
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(TestPaster().isOwned());
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_EQ(pasteboard().changeCount(), m_count + 1);
}

TEST_F(KeptContents, aLivingOwnerIsNotReplacedByThem) {
    start();
    TestSource source;
    source.ownText("first");
    ASSERT_TRUE(changed());
    TestPaster paster;
    for (int i = 0; i < 100; ++i) {
        const QByteArray word = QByteArray::number(i);
        source.letGo();
        source.ownText(word);
        ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QString::fromLatin1(word); })) << i;
        ASSERT_TRUE(source.isOwner()) << i;
        ASSERT_EQ(paster.paste(plainText), word) << i;
    }
}

TEST_F(KeptContents, whoLetsGoAndTakesItAgainWithinTheCalmFindsNobodyInBetween) {
    SelectionLimits limits = patientLimits();
    limits.calm = std::chrono::seconds(20);
    start(limits);
    TestSource source;
    source.ownText("first");
    ASSERT_TRUE(changed());
    TestPaster paster;
    const int before = paster.notices();
    source.letGo();
    ASSERT_TRUE(waitUntil([&] { return paster.notices() > before; }));
    EXPECT_FALSE(waitUntil([&] { return paster.isOwned(); }, 300)) << "whatever is offered now can cross the next copy";
    source.ownText("second");
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("second"));
    EXPECT_EQ(paster.notices(), before + 2);
}

TEST_F(KeptContents, aPictureInACopiedFileIsReadAlsoWhenTheFileManagerHasEnded) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(coloured(12, 11).save(path));
    start();
    TestSource source;
    source.own({{"text/uri-list", {.bytes = QUrl::fromLocalFile(path).toEncoded() + "\r\n"}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(12, 11));
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    EXPECT_EQ(TestPaster().paste("text/uri-list"), QUrl::fromLocalFile(path).toEncoded() + "\r\n");
}

TEST_F(KeptContents, programsThatFightOverTheClipboardAreLeftAloneUntilASecondOfCalm) {
    start();
    TestSource source;
    QElapsedTimer calm;
    calm.start();
    source.own({{plainText, {.bytes = "kept after the war"}}}, 12);
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string() == QStringLiteral("kept after the war"); }));
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    EXPECT_GE(calm.elapsed(), 1000);
    EXPECT_EQ(TestPaster().paste(plainText), "kept after the war");
}

TEST_F(KeptContents, twoKeepersDoNotFightForEver) {
    start();
    WaylandPasteboard other([](const std::string &) {}, patientLimits());
    TestSource source;
    source.ownText("text");
    ASSERT_TRUE(changed());
    ASSERT_TRUE(waitUntil([&] { return other.string() == QStringLiteral("text"); }));
    TestPaster paster;
    const int before = paster.notices();
    ASSERT_TRUE(endAndWaitForTheKeeper(source));
    EXPECT_EQ(paster.paste(plainText), "text");
    static_cast<void>(waitUntil([] { return false; }, 500)); // the time for a fight
    EXPECT_LE(paster.notices() - before, 4) << "the end, the one, and at most the other after it";
}

TEST_F(KeptContents, atRestNothingWakesUp) {
    start();
    TestSource source;
    source.ownText("text");
    ASSERT_TRUE(changed());
    // The reader is the one thread of this name.
    const auto switches = [] {
        long sum = -1;
        const QStringList tasks = QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString &task : tasks) {
            QFile name(QStringLiteral("/proc/self/task/%1/comm").arg(task));
            QFile status(QStringLiteral("/proc/self/task/%1/status").arg(task));
            if (!name.open(QIODevice::ReadOnly) || name.readAll().trimmed() != "pasteboard" ||
                !status.open(QIODevice::ReadOnly))
                continue;
            for (const QByteArray &line : status.readAll().split('\n')) {
                if (line.startsWith("voluntary_ctxt_switches:"))
                    sum = line.split('\t').last().trimmed().toLong();
            }
        }
        return sum;
    };
    ASSERT_GE(switches(), 0);
    EXPECT_TRUE(waitUntil([&] {
        const long before = switches();
        static_cast<void>(changed(1000));
        return switches() == before;
    })) << "there is no quiet second";
}

} // namespace
} // namespace tavrine
