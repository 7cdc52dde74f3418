#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QElapsedTimer>

namespace tavrine {
namespace {

/// Owners that hang, lie, flood and send rubbish. None of them may cost more than the limits, and after each the next
/// copy is seen.
class HostileOwner : public X11PasteboardFixture {
protected:
    HostileOwner() { start(); }
    ~HostileOwner() override { EXPECT_TRUE(nextCopyIsSeen()); }

    static Answer piecemeal(const QByteArray &bytes) {
        return {.manner = Answer::Manner::piecemeal, .bytes = bytes, .pieceBytes = 1024};
    }
    [[nodiscard]] bool hasType(const char *type) {
        const auto types = pasteboard().types();
        return types && types->contains(QLatin1String(type));
    }
    /// Both ways to empty contents: the count moves once, and nothing is there.
    void expectOneChangeToNothing() {
        ASSERT_TRUE(changed());
        EXPECT_EQ(steps(), 1);
        EXPECT_FALSE(pasteboard().types());
        EXPECT_FALSE(pasteboard().string());
        EXPECT_FALSE(changed(700)) << "and not once more";
    }
    void expectNoText() {
        ASSERT_TRUE(changed(30000));
        EXPECT_EQ(steps(), 1);
        EXPECT_TRUE(hasType(pasteboardType::string));
        EXPECT_FALSE(pasteboard().string());
    }

    TestOwner owner;
};

TEST_F(HostileOwner, hangsWhenAskedForItsTargets) {
    owner.own({{"UTF8_STRING", {.bytes = "never seen"}}}, Answer::silent());
    expectOneChangeToNothing();
    EXPECT_EQ(owner.requestCount("UTF8_STRING"), 0);
}

TEST_F(HostileOwner, hangsAndIsWaitedForOnlyAsLongAsTheLimitSays) {
    const qint64 bound = shortLimits().answer.count() + 400;
    qint64 shortest = bound;
    for (int tries = 0; tries < 3 && shortest >= bound; ++tries) { // the machine itself may stand still in one
        QElapsedTimer timer;
        timer.start();
        owner.own({}, Answer::silent());
        ASSERT_TRUE(changed());
        EXPECT_GE(timer.elapsed(), shortLimits().answer.count() - 1);
        shortest = std::min(shortest, timer.elapsed());
    }
    EXPECT_LT(shortest, bound);
}

TEST_F(HostileOwner, hangsAndDoesNotDelayTheMainThreadNorTheNextCopy) {
    SelectionLimits patient = shortLimits();
    patient.answer = patient.total = std::chrono::minutes(1);
    start(patient);
    owner.own({}, Answer::silent());
    ASSERT_TRUE(waitUntil([&] { return owner.requestCount("TARGETS") == 1; }));
    QElapsedTimer timer;
    timer.start();
    static_cast<void>(pasteboard().types());
    static_cast<void>(pasteboard().string());
    static_cast<void>(pasteboard().image());
    EXPECT_LT(timer.elapsed(), 50);
    EXPECT_TRUE(nextCopyIsSeen());
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 2) << "the one that was replaced unread is counted as well";
}

TEST_F(HostileOwner, refusesItsTargets) {
    owner.own({{"UTF8_STRING", {.bytes = "text"}}}, Answer::refused());
    expectOneChangeToNothing();
}

TEST_F(HostileOwner, listsTargetsOfTheWrongTypeOrFormat) {
    owner.own({{"UTF8_STRING", {.bytes = "text"}}}, {.bytes = "UTF8_STRING", .type = "STRING", .format = 8});
    expectOneChangeToNothing();
    owner.own({{"UTF8_STRING", {.bytes = "text"}}}, {.bytes = QByteArray(40, '\x7F'), .type = "ATOM", .format = 16});
    expectOneChangeToNothing();
}

TEST_F(HostileOwner, listsNumbersThatAreNoAtoms) {
    owner.own({{"UTF8_STRING", {.bytes = "text"}}}, {.bytes = QByteArray(40, '\x7F'), .type = "ATOM", .format = 32});
    expectOneChangeToNothing();
}

/// As many names as `count`, none of which means anything, with a text behind the first `before` of them.
TestOwner::Contents manyTargets(int count, int before) {
    TestOwner::Contents contents;
    for (int i = 0; i < count; ++i) {
        if (i == before)
            contents.push_back({"UTF8_STRING", {.bytes = "among many"}});
        contents.push_back({"x/nothing-" + QByteArray::number(i), Answer::refused()});
    }
    return contents;
}

TEST_F(HostileOwner, listsMoreTargetsThanAreReadAndTheFirstOnesCount) {
    owner.own(manyTargets(700, 499));
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("among many")) << "the five hundredth is read";
    owner.own(manyTargets(700, 500));
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().string()) << "the next is not";
    EXPECT_EQ(pasteboard().types()->size(), 500);
}

TEST_F(HostileOwner, listsATargetForEveryNumberThereIs) {
    QByteArray list;
    for (quint32 atom = 100001; atom <= 200000; ++atom)
        list.append(reinterpret_cast<const char *>(&atom), sizeof atom);
    owner.own({}, {.bytes = list, .type = "ATOM", .format = 32});
    expectOneChangeToNothing();
}

TEST_F(HostileOwner, sendsMoreTargetsThanAreReadPiecemeal) {
    Answer targets = owner.listOf(manyTargets(700, 10));
    targets.manner = Answer::Manner::piecemeal;
    for (const qsizetype size : {1000, 2800}) {
        targets.pieceBytes = size;
        owner.own({{"UTF8_STRING", {.bytes = "among many"}}}, targets);
        ASSERT_TRUE(changed());
        EXPECT_EQ(pasteboard().string(), QStringLiteral("among many")) << size;
    }
}

TEST_F(HostileOwner, refusesWhatItHasListed) {
    owner.own({{"UTF8_STRING", Answer::refused()}, {"STRING", {.bytes = "plain"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("plain")) << "what is listed besides is taken";
}

TEST_F(HostileOwner, answersWithAnEmptyPropertyInsteadOfARefusal) {
    owner.own({{"UTF8_STRING", {.bytes = ""}}, {"image/png", {.bytes = ""}}, {"STRING", {.bytes = "plain"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("plain"));
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileOwner, isAskedForNothingThatItDoesNotList) {
    owner.ownText("text");
    ASSERT_TRUE(changed());
    EXPECT_TRUE(settles());
    EXPECT_EQ(owner.requestCount(), 2) << "TARGETS and UTF8_STRING";
}

TEST_F(HostileOwner, hasOnlyEmptyContents) {
    owner.own({{"UTF8_STRING", {.bytes = ""}}});
    expectNoText();
}

TEST_F(HostileOwner, hangsWhenAskedForContents) {
    owner.own({{"UTF8_STRING", Answer::silent()}, {"STRING", {.bytes = "plain"}}});
    expectNoText();
    EXPECT_EQ(owner.requestCount("STRING"), 0) << "who hangs is asked for nothing more";
}

TEST_F(HostileOwner, hangsAfterTheTextAndTheTextStands) {
    owner.own({{"image/png", Answer::silent()}, {"UTF8_STRING", {.bytes = "text"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("text"));
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileOwner, stallsInTheMiddleOfATransfer) {
    Answer answer = piecemeal(QByteArray(10000, 'x'));
    answer.silentAfterPieces = 3;
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
}

TEST_F(HostileOwner, endsInTheMiddleOfATransferAndWhatWasWholeStands) {
    Answer answer = piecemeal(pngOf(coloured(50, 50)));
    answer.pieceBytes = 20;
    answer.endAfterPieces = 2;
    owner.own({{"UTF8_STRING", {.bytes = "whole"}}, {"image/png", answer}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("whole"));
    EXPECT_FALSE(pasteboard().image());
    EXPECT_FALSE(hasType(pasteboardType::png)) << "it stands nowhere any more";
    TestRequestor requestor;
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    EXPECT_EQ(requestor.paste("UTF8_STRING")->bytes, "whole");
    EXPECT_FALSE(changed(300));
}

TEST_F(HostileOwner, endsWhenAskedForItsTargets) {
    owner.own({}, Answer::ended());
    expectOneChangeToNothing();
}

TEST_F(HostileOwner, endsWhenAskedForItsOnlyContents) {
    owner.own({{"UTF8_STRING", Answer::ended()}});
    expectOneChangeToNothing();
}

TEST_F(HostileOwner, promisesLessThanItSends) {
    Answer answer = piecemeal(QByteArray(5000, 'x'));
    answer.announced = 10;
    owner.own({{"UTF8_STRING", answer}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QString(5000, QLatin1Char('x')));
}

TEST_F(HostileOwner, promisesMoreThanItSends) {
    Answer answer = piecemeal(QByteArray(5000, 'x'));
    answer.announced = 500000;
    owner.own({{"UTF8_STRING", answer}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QString(5000, QLatin1Char('x')));
}

TEST_F(HostileOwner, promisesMoreThanIsAllowedAndIsNotWaitedFor) {
    Answer answer = piecemeal(QByteArray(5000, 'x'));
    answer.announced = qint64{400} * 1024 * 1024;
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
    EXPECT_LE(owner.pieceCount(), 1);
}

TEST_F(HostileOwner, sendsWithoutEndFast) {
    Answer answer = piecemeal(QByteArray(64 * 1024, 'x'));
    answer.pieceBytes = 64 * 1024;
    answer.isEndless = true;
    answer.announced = 100;
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
    EXPECT_LE(owner.pieceCount(), 18) << "1 MiB is 16 pieces";
}

TEST_F(HostileOwner, sendsWithoutEndSlowly) {
    Answer answer = piecemeal(QByteArray(1, 'x'));
    answer.isEndless = true;
    answer.announced = 100;
    SelectionLimits limits = shortLimits();
    limits.transferBytes = qsizetype{1} << 40; // so that only time can end it
    limits.changeBytes = qsizetype{1} << 40;
    limits.total = std::chrono::milliseconds(600);
    start(limits);
    QElapsedTimer timer;
    timer.start();
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
    EXPECT_GE(timer.elapsed(), 590);
}

TEST_F(HostileOwner, endsATransferBeforeItBegan) {
    const Answer answer = piecemeal({});
    owner.own({{"UTF8_STRING", answer}, {"STRING", {.bytes = "plain"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("plain"));
}

TEST_F(HostileOwner, sendsPiecesOfDifferentTypes) {
    Answer answer = piecemeal(QByteArray(5000, 'x'));
    answer.laterType = "INTEGER";
    owner.own({{"UTF8_STRING", answer}, {"STRING", {.bytes = "plain"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("plain"));
}

TEST_F(HostileOwner, sendsExactlyAsMuchAsAllowed) {
    owner.own({{"UTF8_STRING", {.bytes = QByteArray(1024 * 1024, 'x')}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QString(1024 * 1024, QLatin1Char('x')));
}

TEST_F(HostileOwner, sendsOneByteMoreThanAllowed) {
    owner.own({{"UTF8_STRING", {.bytes = QByteArray(1024 * 1024 + 1, 'x')}}});
    expectNoText();
}

TEST_F(HostileOwner, sendsPiecesUpToTheLimitAndOneByteBeyondIt) {
    Answer answer = piecemeal(QByteArray(1024 * 1024, 'x'));
    answer.announced = 1;
    answer.pieceBytes = 100000;
    owner.own({{"UTF8_STRING", answer}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QString(1024 * 1024, QLatin1Char('x')));
    answer.bytes.append('x');
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
}

TEST_F(HostileOwner, hasMoreInAllThanIsKept) {
    // 1.5 MiB for all: the second large one does not fit, the small one after it does.
    owner.own({{"UTF8_STRING", {.bytes = "text"}},
               {"x/one", {.bytes = QByteArray(1024 * 1024, '1')}},
               {"x/two", {.bytes = QByteArray(1024 * 1024, '2')}},
               {"x/three", {.bytes = QByteArray(1000, '3')}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(waitUntil([&] { return owner.requestCount("x/three") == 1; }));
    EXPECT_TRUE(settles());
    const TestRequestor other;
    owner.end();
    TestRequestor requestor;
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    const QList<QByteArray> targets = requestor.targets();
    EXPECT_TRUE(targets.contains("x/one"));
    EXPECT_FALSE(targets.contains("x/two"));
    EXPECT_TRUE(targets.contains("x/three"));
}

TEST_F(HostileOwner, sendsFourHundredMegabytes) {
    start({}); // the product's own limits
    Answer answer = piecemeal(QByteArray(1024 * 1024, 'x'));
    answer.pieceBytes = 1024 * 1024;
    answer.isEndless = true; // it is stopped long before
    answer.announced = 1000;
    owner.own({{"UTF8_STRING", answer}});
    expectNoText();
    EXPECT_LE(owner.pieceCount(), 66) << "64 MiB, and not 400";
}

TEST_F(HostileOwner, putsMoreIntoOnePropertyThanAnyoneReads) {
    start({});
    owner.own({{"UTF8_STRING", {.bytes = QByteArray(150 * 1024 * 1024, 'x')}}});
    ASSERT_TRUE(changed(30000));
    EXPECT_TRUE(hasType(pasteboardType::string));
    EXPECT_FALSE(pasteboard().string());
}

TEST_F(HostileOwner, sendsInvalidUtf8) {
    owner.ownText("a\xFF\xFE"
                  "b");
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("a\uFFFD\uFFFDb"));
}

TEST_F(HostileOwner, sendsANulInTheMiddleAndTerminatorsAtTheEnd) {
    owner.ownText(QByteArray("a\0b\0\0", 5));
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QString(QLatin1String("a\0b", 3)));
}

TEST_F(HostileOwner, sendsTextInWords) {
    owner.own({{"UTF8_STRING", {.bytes = "not text", .format = 32}}, {"STRING", {.bytes = "plain"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("plain"));
}

TEST_F(HostileOwner, sendsHalfAPngAndTheNextFormIsTaken) {
    const QByteArray whole = pngOf(coloured(60, 60));
    QByteArray bmp;
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    coloured(60, 60).save(&buffer, "bmp");
    owner.own({{"image/png", {.bytes = whole.first(whole.size() / 2)}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
    owner.own({{"image/png", {.bytes = whole.first(whole.size() / 2)}}, {"image/bmp", {.bytes = bmp}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(60, 60));
}

TEST_F(HostileOwner, sendsAPictureThatUnpacksIntoAllMemory) {
    start({});
    owner.own({{"image/png", {.bytes = pngThatSays(30000, 30000)}}, {"UTF8_STRING", {.bytes = "beside it"}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("beside it"));
}

TEST_F(HostileOwner, sendsAPictureOfExactlyAsManyPixelsAsAllowedAndOneLineMore) {
    owner.own({{"image/png", {.bytes = pngOf(coloured(100, 100))}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(pasteboard().image());
    owner.own({{"image/png", {.bytes = pngOf(coloured(100, 101))}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileOwner, sendsAPictureWithoutSize) {
    owner.own({{"image/png", {.bytes = pngThatSays(0, 0)}}, {"UTF8_STRING", {.bytes = "text"}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("text"));
}

TEST_F(HostileOwner, saysThatAPageIsAPicture) {
    owner.own({{"image/png", {.bytes = "<html>404</html>"}}});
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().image());
}

TEST_F(HostileOwner, claimsAHundredTimesWithoutEverAnswering) {
    for (int i = 0; i < 100; ++i)
        owner.own({}, Answer::silent());
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(nextCopyIsSeen());
    EXPECT_LT(timer.elapsed(), 100 * shortLimits().answer.count() / 4) << "none of them is waited for";
    EXPECT_EQ(pasteboard().changeCount() - m_count, 101);
}

} // namespace
} // namespace tavrine
