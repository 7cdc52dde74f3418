#include "adapters/x11/X11PasteboardFixture.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;

/// What other programs get when they paste from us.
class OwnWrites : public X11PasteboardFixture {
protected:
    OwnWrites() { start(); }

    /// Lets the turn end and waits until the clipboard is ours.
    void publish() {
        const xcb_window_t before = requestor.owner();
        ASSERT_TRUE(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
        // What follows is asked of the new owner.
    }
    void write(const QString &text) {
        pasteboard().clearContents();
        pasteboard().setString(text);
        publish();
    }
    [[nodiscard]] QByteArray pasted(const QByteArray &target) {
        const auto value = requestor.paste(target);
        return value ? value->bytes : QByteArray("refused");
    }

    TestRequestor requestor;
};

TEST_F(OwnWrites, textIsOfferedInEveryCommonForm) {
    write(QStringLiteral("Grüße 🌍"));
    EXPECT_THAT(requestor.targets(),
                IsSupersetOf({QByteArray("TARGETS"), QByteArray("MULTIPLE"), QByteArray("TIMESTAMP"),
                              QByteArray("SAVE_TARGETS"), QByteArray("UTF8_STRING"), QByteArray("TEXT"),
                              QByteArray("STRING"), QByteArray("text/plain"), QByteArray("text/plain;charset=utf-8")}));
    const QByteArray utf8 = QStringLiteral("Grüße 🌍").toUtf8();
    EXPECT_EQ(pasted("UTF8_STRING"), utf8);
    EXPECT_EQ(pasted("text/plain;charset=utf-8"), utf8);
    EXPECT_EQ(pasted("text/plain"), utf8);
    EXPECT_EQ(pasted("TEXT"), utf8);
    EXPECT_EQ(requestor.paste("TEXT")->type, "UTF8_STRING");
    EXPECT_EQ(requestor.paste("STRING")->type, "STRING");
    EXPECT_TRUE(pasted("STRING").startsWith("Gr\xFC\xDF"
                                            "e"));
}

TEST_F(OwnWrites, whatIsNotThereIsRefused) {
    write(QStringLiteral("text"));
    EXPECT_EQ(requestor.paste("image/png"), std::nullopt);
    EXPECT_EQ(requestor.paste("text/html"), std::nullopt);
    EXPECT_THAT(requestor.targets(), Not(Contains(QByteArray("image/png"))));
}

TEST_F(OwnWrites, aLoneSurrogateLeavesAsAReplacementCharacter) {
    write(QStringLiteral("a") + QChar(0xD800) + QStringLiteral("z"));
    EXPECT_EQ(pasted("UTF8_STRING"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(pasted("text/plain;charset=utf-8"), "a\xEF\xBF\xBDz");
}

TEST_F(OwnWrites, aNulInsideTheTextArrives) {
    write(QString(QLatin1String("a\0b", 3)));
    EXPECT_EQ(pasted("UTF8_STRING"), QByteArray("a\0b", 3));
}

TEST_F(OwnWrites, anImageIsOfferedAsPngPixelForPixel) {
    QImage image(64, 48, QImage::Format_ARGB32);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x)
            image.setPixelColor(x, y, QColor(x * 4, y * 5, x + y, 255 - x));
    }
    pasteboard().clearContents();
    pasteboard().writeImage(image);
    publish();
    for (int times = 0; times < 2; ++times) {
        const auto value = requestor.paste("image/png");
        ASSERT_TRUE(value);
        EXPECT_EQ(QImage::fromData(value->bytes).convertToFormat(QImage::Format_ARGB32), image);
    }
    EXPECT_THAT(requestor.targets(), Not(Contains(QByteArray("UTF8_STRING"))));
}

TEST_F(OwnWrites, aSecondImageIsNotTakenForTheFirst) {
    for (const int width : {2000, 1000, 500}) {
        pasteboard().clearContents();
        pasteboard().writeImage(coloured(width, 500));
        ASSERT_TRUE(waitUntil([&] {
            const auto value = requestor.paste("image/png");
            return value && QImage::fromData(value->bytes).width() == width;
        })) << width;
    }
}

TEST_F(OwnWrites, filesAreOfferedAsUrisAsCopiedFilesAndAsPaths) {
    pasteboard().clearContents();
    pasteboard().writeFileUrls(
        {QUrl::fromLocalFile(QStringLiteral("/tmp/ein Bär.txt")), QUrl::fromLocalFile(QStringLiteral("/tmp/b#c"))});
    publish();
    EXPECT_EQ(pasted("text/uri-list"), "file:///tmp/ein%20B%C3%A4r.txt\r\nfile:///tmp/b%23c\r\n");
    EXPECT_EQ(pasted("x-special/gnome-copied-files"), "copy\nfile:///tmp/ein%20B%C3%A4r.txt\nfile:///tmp/b%23c");
    EXPECT_EQ(pasted("UTF8_STRING"), QStringLiteral("/tmp/ein Bär.txt\n/tmp/b#c").toUtf8());
}

TEST_F(OwnWrites, aByteOrderMarkIsHandedOnWithTheText) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("\uFEFFtext"));
    publish();
    EXPECT_EQ(pasted("UTF8_STRING"), "\xEF\xBB\xBFtext");
}

TEST_F(OwnWrites, aPictureInAnOwnFileIsReadOnlyAfterTheTurnAndIsNoChange) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(coloured(12, 11).save(path));
    const int count = pasteboard().clearContents();
    pasteboard().writeFileUrls({QUrl::fromLocalFile(path)});
    EXPECT_FALSE(pasteboard().image()) << "that would be a read on the main thread";
    ASSERT_TRUE(waitUntil([&] { return pasteboard().image().has_value(); }));
    EXPECT_EQ(pasteboard().image()->size(), QSize(12, 11));
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(OwnWrites, aPictureInAnOwnFileIsGoneWithTheWrite) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(coloured(12, 11).save(path));
    for (const bool isRead : {true, false}) {
        pasteboard().clearContents();
        pasteboard().writeFileUrls({QUrl::fromLocalFile(path)});
        if (isRead) {
            ASSERT_TRUE(waitUntil([&] { return pasteboard().image().has_value(); }));
        }
        pasteboard().clearContents();
        pasteboard().setString(QStringLiteral("text"));
        EXPECT_FALSE(pasteboard().image());
        EXPECT_FALSE(waitUntil([&] { return pasteboard().image().has_value(); }, 100));
    }
}

TEST_F(OwnWrites, aPictureInAnOwnFileIsReadWithoutAServerToo) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(coloured(12, 11).save(path));
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":4999");
    X11Pasteboard alone;
    qputenv("DISPLAY", display);
    alone.clearContents();
    alone.writeFileUrls({QUrl::fromLocalFile(path)});
    EXPECT_TRUE(waitUntil([&] { return alone.image().has_value(); }));
}

TEST_F(OwnWrites, aClearedClipboardIsOursAndHasNothing) {
    pasteboard().clearContents();
    publish();
    EXPECT_THAT(requestor.targets(), testing::UnorderedElementsAre("TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS"));
    EXPECT_EQ(requestor.paste("UTF8_STRING"), std::nullopt);
}

TEST_F(OwnWrites, nobodySeesTheClipboardEmptyBetweenClearingAndWriting) {
    TestOwner other;
    other.ownText("before");
    ASSERT_TRUE(changed());
    pasteboard().clearContents();
    EXPECT_EQ(pasted("UTF8_STRING"), "before") << "nothing leaves before the turn ends";
    pasteboard().setString(QStringLiteral("after"));
    EXPECT_EQ(pasted("UTF8_STRING"), "before");
    publish();
    EXPECT_EQ(pasted("UTF8_STRING"), "after");
}

TEST_F(OwnWrites, severalWritesOfOneTurnAreOneClaim) {
    write(QStringLiteral("first"));
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("second"));
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("third"));
    ASSERT_TRUE(waitUntil([&] { return pasted("UTF8_STRING") != "first"; }));
    EXPECT_EQ(pasted("UTF8_STRING"), "third");
}

TEST_F(OwnWrites, theOwnClaimIsNotCountedAgain) {
    write(QStringLiteral("mine"));
    const int count = pasteboard().changeCount();
    EXPECT_FALSE(waitUntil([&] { return pasteboard().changeCount() != count; }, 300));
}

TEST_F(OwnWrites, theTimestampIsThatOfTheClaimAndNeverZero) {
    write(QStringLiteral("first"));
    const auto time = [&] {
        const auto value = requestor.paste("TIMESTAMP");
        quint32 number = 0;
        EXPECT_TRUE(value && value->type == "INTEGER" && value->format == 32 && value->bytes.size() == 4);
        memcpy(&number, value->bytes.constData(), 4);
        return number;
    };
    const quint32 first = time();
    EXPECT_NE(first, 0u);
    EXPECT_EQ(time(), first) << "asking changes nothing";
    TestOwner other;
    other.ownText("between");
    ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("between"); }));
    write(QStringLiteral("second"));
    EXPECT_GE(time(), first);
}

TEST_F(OwnWrites, largeTextGoesPiecemealByteForByte) {
    QByteArray bytes(20 * 1024 * 1024, '\0');
    QRandomGenerator random(7);
    for (char &byte : bytes)
        byte = static_cast<char>('!' + random.bounded(90));
    write(QString::fromLatin1(bytes));
    const auto value = requestor.paste("UTF8_STRING");
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->wasPiecemeal);
    EXPECT_EQ(value->type, "UTF8_STRING");
    EXPECT_TRUE(value->bytes == bytes);
}

TEST_F(OwnWrites, answersUpToThePieceSizeGoWholeAndOneByteMoreGoesPiecemeal) {
    const qsizetype size = shortLimits().pieceBytes;
    write(QString(size, QLatin1Char('x')));
    EXPECT_FALSE(requestor.paste("UTF8_STRING")->wasPiecemeal);
    TestOwner other;
    other.ownText("between");
    ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("between"); }));
    write(QString(size + 1, QLatin1Char('x')));
    const auto value = requestor.paste("UTF8_STRING");
    EXPECT_TRUE(value->wasPiecemeal);
    EXPECT_EQ(value->bytes.size(), size + 1);
}

TEST_F(OwnWrites, multipleTargetsAreAnsweredTogetherAndTheMissingOnesMarked) {
    write(QStringLiteral("text"));
    const auto values = requestor.pasteMultiple({"UTF8_STRING", "image/png", "TIMESTAMP", "STRING", "MULTIPLE"});
    ASSERT_EQ(values.size(), 5);
    EXPECT_EQ(values[0]->bytes, "text");
    EXPECT_FALSE(values[1]);
    EXPECT_EQ(values[2]->bytes.size(), 4);
    EXPECT_EQ(values[3]->bytes, "text");
    EXPECT_FALSE(values[4]) << "not one within the other";
}

TEST_F(OwnWrites, multipleTargetsMayBeLargeAndMayHoldAnImageStillToBeEncoded) {
    const QString text(3'000'000, QLatin1Char('y'));
    pasteboard().clearContents();
    pasteboard().setString(text);
    pasteboard().writeImage(coloured(300, 200));
    publish();
    const auto values = requestor.pasteMultiple({"image/png", "UTF8_STRING", "STRING"});
    ASSERT_EQ(values.size(), 3);
    EXPECT_EQ(QImage::fromData(values[0]->bytes).size(), QSize(300, 200));
    EXPECT_TRUE(values[1]->bytes == text.toUtf8());
    EXPECT_TRUE(values[2]->bytes == text.toLatin1());
}

TEST_F(OwnWrites, anEmptyMultipleRequestIsRefused) {
    write(QStringLiteral("text"));
    EXPECT_TRUE(requestor.pasteMultiple({}).isEmpty());
    EXPECT_EQ(pasted("UTF8_STRING"), "text");
}

TEST_F(OwnWrites, programsThatVanishWhilePastingDoNoHarm) {
    write(QString(3'000'000, QLatin1Char('z')));
    for (int i = 0; i < 50; ++i)
        requestor.askAndLeave("UTF8_STRING");
    for (int i = 0; i < 5; ++i) {
        TestRequestor vanishing;
        vanishing.askAndHang("UTF8_STRING");
    }
    EXPECT_EQ(pasted("UTF8_STRING").size(), 3'000'000);
}

TEST_F(OwnWrites, moreHungProgramsThanAreServedAtOnceAreForgottenInTime) {
    SelectionLimits limits = shortLimits();
    limits.outgoingTransfers = 2;
    start(limits);
    write(QString(3'000'000, QLatin1Char('z')));
    TestRequestor first;
    TestRequestor second;
    first.askAndHang("UTF8_STRING");
    second.askAndHang("UTF8_STRING");
    EXPECT_EQ(requestor.paste("UTF8_STRING"), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return requestor.paste("UTF8_STRING").has_value(); }, 3000));
}

TEST_F(OwnWrites, aTransferUnderWayIsFinishedAfterTheClipboardHasPassedOn) {
    write(QString(8'000'000, QLatin1Char('a')));
    TestRequestor other;
    other.askAndHang("UTF8_STRING");
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("new"));
    ASSERT_TRUE(waitUntil([&] { return pasted("UTF8_STRING") == "new"; }));
    const auto value = other.finish();
    ASSERT_TRUE(value);
    EXPECT_EQ(value->bytes, QByteArray(8'000'000, 'a'));
}

TEST_F(OwnWrites, writesWithoutOwningGoNowhere) {
    TestOwner other;
    other.ownText("theirs");
    ASSERT_TRUE(changed());
    pasteboard().setString(QStringLiteral("mine"));
    EXPECT_FALSE(changed(200));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("theirs"));
    EXPECT_TRUE(other.isOwner());
}

TEST_F(OwnWrites, ofACopyAndAWriteAtTheSameTimeTheWriteStandsInBothPlaces) {
    for (int i = 0; i < 50; ++i) {
        TestOwner other;
        other.ownText("theirs " + QByteArray::number(i));
        // Its notice is on its way, or its contents are.
        const QString text = QStringLiteral("mine %1").arg(i);
        const int count = pasteboard().clearContents();
        pasteboard().setString(text);
        ASSERT_TRUE(waitUntil([&] { return pasted("UTF8_STRING") == text.toUtf8(); }));
        EXPECT_EQ(pasteboard().string(), text);
        EXPECT_EQ(pasteboard().changeCount(), count) << "the copy came before the write and was replaced by it";
    }
}

TEST_F(OwnWrites, aCopyMadeAfterAWriteStandsThoughTheTurnOfTheWriteGoesOn) {
    for (const bool isReadBefore : {true, false}) {
        const int count = pasteboard().clearContents();
        pasteboard().setString(QStringLiteral("mine"));
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // something else holds the main thread
        TestOwner other;
        other.ownText("theirs");
        if (isReadBefore) {
            for (int i = 0; i < 500 && other.requestCount("UTF8_STRING") == 0; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the reader has told of it, in vain
        }
        ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("theirs"); }));
        EXPECT_EQ(pasteboard().changeCount(), count + 1);
        EXPECT_EQ(pasted("UTF8_STRING"), "theirs");
        EXPECT_TRUE(other.isOwner());
        EXPECT_FALSE(waitUntil([&] { return pasteboard().changeCount() != count + 1; }, 100));
    }
}

TEST_F(OwnWrites, anEmptyingMadeAfterAWriteStandsThoughTheTurnOfTheWriteGoesOn) {
    TestOwner other;
    other.ownText("theirs");
    ASSERT_TRUE(changed());
    const int count = pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("mine"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    other.clear();
    ASSERT_TRUE(waitUntil([&] { return pasteboard().changeCount() != count; }));
    EXPECT_EQ(pasteboard().changeCount(), count + 1);
    EXPECT_FALSE(pasteboard().types());
    EXPECT_EQ(requestor.owner(), 0U);
}

TEST_F(OwnWrites, theLastWriteOfATurnCountsWhereACopyCameBetweenTwo) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("first"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    TestOwner other;
    other.ownText("theirs");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const int count = pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("second"));
    ASSERT_TRUE(waitUntil([&] { return pasted("UTF8_STRING") == "second"; }));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("second"));
    EXPECT_EQ(pasteboard().changeCount(), count);
}

TEST_F(OwnWrites, whoeverWinsARaceForTheClipboardIsReadHereToo) {
    TestOwner other;
    for (int i = 0; i < 300; ++i) {
        std::atomic<bool> isOver = false;
        std::thread racer([&] {
            for (int times = 0; times < 4; ++times)
                other.ownText("theirs " + QByteArray::number(i));
            isOver = true;
        });
        const QString text = QStringLiteral("mine %1").arg(i);
        std::this_thread::sleep_for(std::chrono::microseconds(i % 25 * 40)); // so that either wins now and then
        pasteboard().clearContents();
        pasteboard().setString(text);
        ASSERT_TRUE(waitUntil([&] { return isOver.load(); }));
        racer.join();
        ASSERT_TRUE(waitUntil([&] {
            const QByteArray there = pasted("UTF8_STRING");
            return there.endsWith(" " + QByteArray::number(i)) && pasteboard().string() == QString::fromLatin1(there);
        })) << i
            << ": here " << pasteboard().string().value_or(QStringLiteral("nothing")).toStdString() << ", there "
            << pasted("UTF8_STRING").constData();
    }
}

TEST_F(OwnWrites, onDestructionTheContentsAreHandedToAClipboardManager) {
    SelectionLimits patient = shortLimits();
    patient.handOver = std::chrono::minutes(1);
    start(patient);
    write(QString(1'000'000, QLatin1Char('m')));
    std::atomic<bool> isSaved = false;
    QByteArray saved;
    TestOwner manager("CLIPBOARD_MANAGER");
    Answer save{.bytes = "", .type = "NULL"};
    save.before = [&] {
        TestRequestor fetcher;
        if (const auto value = fetcher.paste("UTF8_STRING"))
            saved = value->bytes;
        isSaved = true;
    };
    manager.own({{"SAVE_TARGETS", save}});
    QElapsedTimer timer;
    timer.start();
    stop();
    EXPECT_LT(timer.elapsed(), 20'000) << "it need not wait for the deadline";
    EXPECT_TRUE(isSaved);
    EXPECT_EQ(saved.size(), 1'000'000);
}

TEST_F(OwnWrites, aLastWriteBeforeDestructionIsHandedOverToo) {
    QByteArray saved;
    TestOwner manager("CLIPBOARD_MANAGER");
    Answer save{.bytes = "", .type = "NULL"};
    save.before = [&] {
        TestRequestor fetcher;
        if (const auto value = fetcher.paste("UTF8_STRING"))
            saved = value->bytes;
    };
    manager.own({{"SAVE_TARGETS", save}});
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("last"));
    stop();
    EXPECT_EQ(saved, "last");
}

TEST_F(OwnWrites, aHungClipboardManagerDelaysTheEndByTheLimitOnly) {
    write(QStringLiteral("text"));
    TestOwner manager("CLIPBOARD_MANAGER");
    manager.own({{"SAVE_TARGETS", Answer::silent()}});
    QElapsedTimer timer;
    timer.start();
    stop();
    EXPECT_GE(timer.elapsed(), 990);
    EXPECT_LT(timer.elapsed(), 10'000);
    EXPECT_EQ(manager.requestCount("SAVE_TARGETS"), 1);
}

TEST_F(OwnWrites, withoutAClipboardManagerOrWithoutContentsTheEndIsImmediate) {
    SelectionLimits patient = shortLimits();
    patient.handOver = std::chrono::minutes(1);
    start(patient);
    write(QStringLiteral("text"));
    QElapsedTimer timer;
    timer.start();
    stop();
    EXPECT_LT(timer.elapsed(), 20'000);
    TestOwner manager("CLIPBOARD_MANAGER");
    manager.own({{"SAVE_TARGETS", Answer::silent()}});
    start(patient);
    timer.restart();
    stop();
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_EQ(manager.requestCount("SAVE_TARGETS"), 0);
}

TEST_F(OwnWrites, withoutAServerTheClipboardWorksWithinTheProgram) {
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":4999");
    X11Pasteboard alone;
    qputenv("DISPLAY", display);
    EXPECT_FALSE(alone.types());
    EXPECT_EQ(alone.clearContents(), 1);
    alone.setString(QStringLiteral("mine"));
    EXPECT_FALSE(waitUntil([&] { return alone.changeCount() != 1; }, 100));
    EXPECT_EQ(alone.string(), QStringLiteral("mine"));
}

} // namespace
} // namespace tavrine
