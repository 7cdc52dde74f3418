#include "adapters/wayland/WaylandPasteboardFixture.h"

#include <QElapsedTimer>
#include <QTemporaryFile>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

constexpr auto offeredText = "text/plain;charset=utf-8";

/// What other programs get when they paste from us.
class OwnOffers : public WaylandPasteboardFixture {
protected:
    OwnOffers() { start(); }

    /// Lets the turn end and waits until the clipboard is ours anew.
    void publish() {
        const int before = paster.notices();
        ASSERT_TRUE(waitUntil([&] { return paster.notices() > before; }));
    }
    void write(const QString &string) {
        pasteboard().clearContents();
        pasteboard().setString(string);
        publish();
    }
    /// The pasting ends while the main queue runs: recipes and pieces do not need it, but a test waits there.
    [[nodiscard]] QByteArray pasted(const QByteArray &target) {
        return paster.paste(target).value_or(QByteArray("(refused)"));
    }

    TestPaster paster;
};

TEST_F(OwnOffers, textIsOfferedInEveryCommonForm) {
    write(QStringLiteral("Grüße 🌍"));
    EXPECT_THAT(paster.targets(), IsSupersetOf({QByteArray("UTF8_STRING"), QByteArray("TEXT"), QByteArray("STRING"),
                                                QByteArray("text/plain"), QByteArray(offeredText)}));
    const QByteArray utf8 = QStringLiteral("Grüße 🌍").toUtf8();
    for (const char *target : {"UTF8_STRING", offeredText, "text/plain", "TEXT"})
        EXPECT_EQ(pasted(target), utf8) << target;
    EXPECT_EQ(pasted("image/png"), "(refused)");
}

TEST_F(OwnOffers, anImageIsOfferedAsPngPixelForPixel) {
    const QImage image = coloured(64, 48);
    pasteboard().clearContents();
    pasteboard().writeImage(image);
    publish();
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(QImage::fromData(pasted("image/png")).convertToFormat(image.format()), image);
    EXPECT_THAT(paster.targets(), Not(Contains(QByteArray("UTF8_STRING"))));
}

TEST_F(OwnOffers, filesAreOfferedAsUrisAsCopiedFilesAndAsPaths) {
    pasteboard().clearContents();
    pasteboard().writeFileUrls(
        {QUrl::fromLocalFile(QStringLiteral("/tmp/ein Bär.txt")), QUrl::fromLocalFile(QStringLiteral("/tmp/b#c"))});
    publish();
    EXPECT_EQ(pasted("text/uri-list"), "file:///tmp/ein%20B%C3%A4r.txt\r\nfile:///tmp/b%23c\r\n");
    EXPECT_EQ(pasted("x-special/gnome-copied-files"), "copy\nfile:///tmp/ein%20B%C3%A4r.txt\nfile:///tmp/b%23c");
    EXPECT_EQ(pasted("UTF8_STRING"), QStringLiteral("/tmp/ein Bär.txt\n/tmp/b#c").toUtf8());
}

TEST_F(OwnOffers, aClearedClipboardHasNothing) {
    TestSource other;
    other.ownText("theirs");
    ASSERT_TRUE(changed());
    pasteboard().clearContents();
    publish();
    EXPECT_TRUE(paster.targets().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return !other.isOwner(); }));
    other.ownText("again");
    EXPECT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("again"); }));
}

TEST_F(OwnOffers, severalWritesOfOneTurnReachTheOthersInOneStep) {
    TestSource other;
    other.ownText("before");
    ASSERT_TRUE(changed());
    const int before = paster.notices();
    pasteboard().clearContents();
    EXPECT_EQ(pasted(offeredText), "before") << "nothing leaves before the turn ends";
    pasteboard().setString(QStringLiteral("first"));
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("second"));
    ASSERT_TRUE(waitUntil([&] { return paster.notices() > before; }));
    EXPECT_EQ(pasted(offeredText), "second");
    EXPECT_EQ(paster.notices(), before + 1);
}

TEST_F(OwnOffers, theOwnClaimIsNotCountedAgainHoweverOften) {
    for (int i = 0; i < 30; ++i) {
        write(QString::number(i));
        m_count = pasteboard().changeCount();
    }
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_EQ(pasteboard().changeCount(), m_count + 1);
}

TEST_F(OwnOffers, largeTextArrivesByteForByte) {
    QByteArray bytes(20 * 1024 * 1024, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>('!' + i * i % 89);
    write(QString::fromLatin1(bytes));
    EXPECT_TRUE(paster.paste(offeredText) == bytes);
}

TEST_F(OwnOffers, programsThatVanishWhilePastingDoNoHarm) {
    write(QString(3'000'000, QLatin1Char('z')));
    for (int i = 0; i < 50; ++i)
        paster.askAndLeave(offeredText);
    EXPECT_EQ(pasted(offeredText).size(), 3'000'000);
}

TEST_F(OwnOffers, moreHungProgramsThanAreServedAtOnceAreForgottenInTime) {
    SelectionLimits limits = patientLimits();
    limits.outgoingTransfers = 2;
    limits.outgoingStall = std::chrono::milliseconds(1500);
    start(limits);
    write(QString(3'000'000, QLatin1Char('z')));
    TestPaster first;
    TestPaster second;
    QElapsedTimer timer;
    timer.start();
    first.askAndHang(offeredText);
    second.askAndHang(offeredText);
    const bool isServed = pasted(offeredText).size() == 3'000'000;
    EXPECT_TRUE(!isServed || timer.elapsed() >= 1500) << "there was no place for a third";
    EXPECT_TRUE(waitUntil([&] { return pasted(offeredText).size() == 3'000'000; }));
}

TEST_F(OwnOffers, aTransferUnderWayIsFinishedAfterTheClipboardHasPassedOn) {
    write(QString(8'000'000, QLatin1Char('a')));
    TestPaster other;
    other.askAndHang(offeredText);
    write(QStringLiteral("new"));
    EXPECT_EQ(pasted(offeredText), "new");
    EXPECT_EQ(other.finish(), QByteArray(8'000'000, 'a'));
}

TEST_F(OwnOffers, whatIsNoPipeIsNotWrittenTo) {
    write(QStringLiteral("text"));
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    paster.askInto(offeredText, file.handle());
    EXPECT_EQ(pasted(offeredText), "text") << "served behind it";
    EXPECT_EQ(file.size(), 0);
}

TEST_F(OwnOffers, aWriteOverAnOwnOneNeverLeavesTheClipboardEmpty) {
    write(QStringLiteral("first"));
    ASSERT_EQ(pasted(offeredText), "first");
    TestPaster keeper; // as a program that takes what nobody owns
    const int before = keeper.timesEmpty();
    for (int i = 0; i < 10; ++i) {
        write(QStringLiteral("text %1").arg(i));
        ASSERT_TRUE(waitUntil([&] { return keeper.paste(offeredText) == "text " + QByteArray::number(i); })) << i;
    }
    EXPECT_EQ(keeper.timesEmpty(), before);
}

TEST_F(OwnOffers, ofACopyAndAWriteAtTheSameTimeTheWriteStandsInBothPlaces) {
    TestSource other;
    for (int i = 0; i < 30; ++i) {
        const int asked = other.requestCount(offeredText);
        other.ownText("theirs " + QByteArray::number(i));
        const QString string = QStringLiteral("mine %1").arg(i);
        ASSERT_TRUE(
            waitUntil([&] { return other.requestCount(offeredText) > asked; })); // its contents are on their way
        const int count = pasteboard().clearContents();
        pasteboard().setString(string);
        ASSERT_TRUE(waitUntil([&] { return pasted(offeredText) == string.toUtf8(); })) << i;
        EXPECT_EQ(pasteboard().string(), string);
        EXPECT_EQ(pasteboard().changeCount(), count) << "the copy came before the write and was replaced by it";
    }
}

TEST_F(OwnOffers, aCopyMadeAfterAWriteStandsThoughTheTurnOfTheWriteGoesOn) {
    for (const bool isReadBefore : {true, false}) {
        const int count = pasteboard().clearContents();
        pasteboard().setString(QStringLiteral("mine"));
        std::this_thread::sleep_for(std::chrono::milliseconds(300)); // something else holds the main thread
        TestSource other;
        other.ownText("theirs");
        for (int i = 0; isReadBefore && i < 1000 && other.requestCount(offeredText) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("theirs"); }));
        EXPECT_EQ(pasteboard().changeCount(), count + 1);
        EXPECT_EQ(pasted(offeredText), "theirs");
        EXPECT_TRUE(other.isOwner());
        m_count = pasteboard().changeCount();
    }
}

TEST_F(OwnOffers, whoeverWinsARaceForTheClipboardIsReadHereToo) {
    TestSource other;
    for (int i = 0; i < 100; ++i) {
        std::atomic<bool> isOver = false;
        std::thread racer([&] {
            for (int times = 0; times < 4; ++times)
                other.ownText("theirs " + QByteArray::number(i));
            isOver = true;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(i % 25 * 40)); // so that either wins now and then
        pasteboard().clearContents();
        pasteboard().setString(QStringLiteral("mine %1").arg(i));
        ASSERT_TRUE(waitUntil([&] { return isOver.load(); }));
        racer.join();
        ASSERT_TRUE(waitUntil([&] {
            const QByteArray there = pasted(offeredText);
            return there.endsWith(" " + QByteArray::number(i)) && pasteboard().string() == QString::fromLatin1(there);
        })) << i;
    }
}

TEST_F(OwnOffers, writesWithoutOwningGoNowhere) {
    TestSource other;
    other.ownText("theirs");
    ASSERT_TRUE(changed());
    pasteboard().setString(QStringLiteral("mine"));
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_EQ(pasteboard().changeCount(), m_count + 1);
}

TEST_F(OwnOffers, theEndIsImmediate) {
    SelectionLimits limits = patientLimits();
    limits.outgoingStall = std::chrono::seconds(60);
    start(limits);
    write(QString(3'000'000, QLatin1Char('z')));
    TestPaster hanging;
    hanging.askAndHang(offeredText);
    QElapsedTimer timer;
    timer.start();
    stop();
    EXPECT_LT(timer.elapsed(), 10000) << "nobody is waited for";
}

TEST_F(OwnOffers, withoutACompositorTheClipboardWorksWithinTheProgram) {
    const QByteArray display = qgetenv("WAYLAND_DISPLAY");
    qputenv("WAYLAND_DISPLAY", "nobody");
    WaylandPasteboard alone([this](const std::string &reason) { m_lost = reason; });
    qputenv("WAYLAND_DISPLAY", display);
    EXPECT_FALSE(alone.types());
    EXPECT_EQ(alone.clearContents(), 1);
    alone.setString(QStringLiteral("mine"));
    EXPECT_FALSE(waitUntil([&] { return alone.changeCount() != 1; }, 100));
    EXPECT_EQ(alone.string(), QStringLiteral("mine"));
    EXPECT_EQ(m_lost, "");
}

} // namespace
} // namespace tavrine
