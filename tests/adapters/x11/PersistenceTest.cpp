#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::Not;

/// Keeping what others copied when they end.
class Persistence : public X11PasteboardFixture {
protected:
    [[nodiscard]] bool hasType(const char *type) {
        const auto types = pasteboard().types();
        return types && types->contains(QLatin1String(type));
    }
    [[nodiscard]] bool waitForOwnerOtherThan(xcb_window_t window) {
        return waitUntil([&] { return requestor.hasOwnerOtherThan(window); });
    }
    [[nodiscard]] QByteArray pasted(const QByteArray &target) {
        const auto value = requestor.paste(target);
        return value ? value->bytes : QByteArray("refused");
    }
    /// Waits until the owner was asked for the last of its targets, and all that there is has been fetched.
    void waitUntilFetched(const TestOwner &owner, const QByteArray &last) {
        ASSERT_TRUE(waitUntil([&] { return owner.requestCount(last) == 1; }));
        ASSERT_TRUE(settles());
    }

    TestRequestor requestor;
};

TEST_F(Persistence, whatStoodBeforeTheStartIsReadAndIsNoChange) {
    TestOwner owner;
    owner.own({{"UTF8_STRING", {.bytes = "from before"}}, {"text/html", {.bytes = "<b>from before</b>"}}});
    start();
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string().has_value(); }));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("from before"));
    EXPECT_TRUE(hasType(pasteboardType::html));
    EXPECT_EQ(pasteboard().changeCount(), m_count);
    const xcb_window_t before = requestor.owner();
    waitUntilFetched(owner, "text/html");
    owner.end();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_EQ(pasted("text/html"), "<b>from before</b>");
}

TEST_F(Persistence, aServerThatAnotherProgramHoldsDelaysTheStartByTheLimitOnly) {
    xcb_connection_t *const holder = xcb_connect(nullptr, nullptr);
    xcb_grab_server(holder);
    std::free(xcb_get_input_focus_reply(holder, xcb_get_input_focus(holder), nullptr)); // it holds by now
    std::promise<void> started;
    std::thread releaser([&] {
        started.get_future().wait_for(std::chrono::seconds(20));
        xcb_disconnect(holder);
    });
    QElapsedTimer timer;
    timer.start();
    start();
    EXPECT_LT(timer.elapsed(), 10'000);
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("written meanwhile"));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("written meanwhile"));
    started.set_value();
    releaser.join();
    ASSERT_TRUE(waitUntil([&] { return pasted("UTF8_STRING") == "written meanwhile"; }));
    EXPECT_TRUE(nextCopyIsSeen());
}

TEST_F(Persistence, aCopyRightAfterTheStartIsAChangeEvenIfAnotherOwnerStoodBefore) {
    TestOwner old;
    old.own({{"UTF8_STRING", Answer::silent()}});
    start();
    TestOwner owner;
    owner.ownText("new");
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1) << "what stood before does not count, read or unread";
    EXPECT_EQ(pasteboard().string(), QStringLiteral("new"));
}

TEST_F(Persistence, everyTargetIsGivenAsItCameWhenTheOwnerIsGone) {
    start();
    TestOwner owner;
    const QByteArray numbers = QByteArray::fromHex("0100000002000000ffffffff");
    const TestOwner::Contents contents{
        {"UTF8_STRING", {.bytes = "text"}},
        {"text/html", {.bytes = "<b>text</b>"}},
        {"application/rtf", {.bytes = "{\\rtf1 text}"}},
        {"image/png", {.bytes = pngOf(coloured(40, 30))}},
        {"image/svg+xml", {.bytes = "not asked for before the image was read"}},
        {"x/numbers", {.bytes = numbers, .type = "INTEGER", .format = 32}},
        {"x/halves", {.bytes = numbers, .type = "x/other-type", .format = 16}},
        {"x/large", {.manner = Answer::Manner::piecemeal, .bytes = QByteArray(700'001, 'L')}},
        {"x/refused", Answer::refused()},
        {"x/last", {.bytes = "last"}},
    };
    owner.own(contents);
    ASSERT_TRUE(changed());
    waitUntilFetched(owner, "x/last");
    const xcb_window_t before = requestor.owner();
    owner.end();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_FALSE(changed(200)) << "keeping alive is no change";
    for (const auto &[target, answer] : contents) {
        const auto value = requestor.paste(target);
        if (target == "x/refused") {
            EXPECT_FALSE(value);
            continue;
        }
        ASSERT_TRUE(value) << target.constData();
        EXPECT_TRUE(value->bytes == answer.bytes) << target.constData();
        EXPECT_EQ(value->type, answer.type.isEmpty() ? target : answer.type) << target.constData();
        EXPECT_EQ(value->format, answer.format) << target.constData();
    }
    EXPECT_THAT(requestor.targets(), Not(Contains(QByteArray("x/refused"))));
}

TEST_F(Persistence, aDestroyedWindowIsAnEndOfTheOwnerToo) {
    start();
    TestOwner owner;
    owner.ownText("kept");
    ASSERT_TRUE(changed());
    const xcb_window_t before = requestor.owner();
    owner.destroyWindow();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_EQ(pasted("UTF8_STRING"), "kept");
    EXPECT_FALSE(changed(200));
}

TEST_F(Persistence, keptContentsAreReplacedByTheNextCopyAndKeptAgain) {
    start();
    for (const QByteArray text : {"one", "two", "three"}) {
        TestOwner owner;
        owner.ownText(text);
        ASSERT_TRUE(changed());
        EXPECT_EQ(steps(), 1);
        const xcb_window_t before = requestor.owner();
        owner.end();
        ASSERT_TRUE(waitForOwnerOtherThan(before));
        EXPECT_EQ(pasted("UTF8_STRING"), text);
    }
}

TEST_F(Persistence, aPersonsActionFromBeforeTheKeepingStillWins) {
    start();
    TestOwner owner;
    owner.ownText("kept");
    ASSERT_TRUE(changed());
    const auto time = requestor.paste("TIMESTAMP"); // the owner does not know; ours will
    EXPECT_FALSE(time);
    TestOwner next; // gets the server's time now, claims later
    const xcb_window_t before = requestor.owner();
    next.rememberTime();
    static_cast<void>(changed(20)); // the server counts in milliseconds
    owner.end();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    next.ownAsOfRememberedTime({{"UTF8_STRING", {.bytes = "copied by a slow program"}}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("copied by a slow program"));
    EXPECT_EQ(pasted("UTF8_STRING"), "copied by a slow program");
}

TEST_F(Persistence, contentsClearedOnPurposeStayCleared) {
    start();
    TestOwner owner;
    owner.ownText("text");
    ASSERT_TRUE(changed());
    owner.clear();
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 300));
    owner.end();
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 300));
}

TEST_F(Persistence, ourOwnContentsClearedByAnotherProgramAreGone) {
    start();
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("mine"));
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    m_count = pasteboard().changeCount();
    TestOwner other;
    other.clear();
    ASSERT_TRUE(changed());
    EXPECT_FALSE(pasteboard().string());
    EXPECT_EQ(requestor.owner(), 0u);
}

TEST_F(Persistence, aLivingOwnerIsNeverReplaced) {
    start();
    TestOwner owner;
    owner.ownText("first");
    ASSERT_TRUE(changed());
    // The hardest case: the new claim is as old as the contents that are to be kept, and comes in the same moment.
    for (int i = 0; i < 300; ++i) {
        const QByteArray text = QByteArray::number(i);
        owner.moveToAnotherWindow(std::chrono::microseconds(i % 100 * 4), {{"UTF8_STRING", {.bytes = text}}});
        ASSERT_TRUE(waitUntil([&] { return pasteboard().string() == QString::fromLatin1(text); })) << i;
        ASSERT_TRUE(owner.isOwner()) << i;
        ASSERT_EQ(pasted("UTF8_STRING"), text) << i;
    }
}

TEST_F(Persistence, autoGeneratedContentsAreNamedAndKept) {
    start();
    TestOwner owner;
    owner.own({{"UTF8_STRING", {.bytes = "generated"}}, {"org.nspasteboard.AutoGeneratedType", {.bytes = "1"}}});
    ASSERT_TRUE(changed());
    EXPECT_TRUE(hasType(pasteboardType::autoGenerated));
    waitUntilFetched(owner, "org.nspasteboard.AutoGeneratedType");
    const xcb_window_t before = requestor.owner();
    owner.end();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_EQ(pasted("UTF8_STRING"), "generated");
}

TEST_F(Persistence, aProgramThatEndsWhileItsOtherTargetsAreFetchedLeavesThoseThatWereWhole) {
    start();
    Answer broken{.manner = Answer::Manner::piecemeal, .bytes = QByteArray(5000, 'b'), .pieceBytes = 1000};
    broken.endAfterPieces = 2;
    TestOwner owner;
    owner.own({{"UTF8_STRING", {.bytes = "text"}}, {"x/one", {.bytes = "one"}}, {"x/broken", broken}, {"x/two", {}}});
    const xcb_window_t before = requestor.owner();
    ASSERT_TRUE(changed());
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_EQ(pasted("UTF8_STRING"), "text");
    EXPECT_EQ(pasted("x/one"), "one");
    EXPECT_EQ(requestor.paste("x/broken"), std::nullopt);
    EXPECT_FALSE(changed(200));
}

TEST_F(Persistence, whatHangsInTheBackgroundIsGivenUpAndTheRestIsKept) {
    start();
    TestOwner owner;
    owner.own({{"UTF8_STRING", {.bytes = "text"}}, {"x/hung", Answer::silent()}});
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("text"));
    EXPECT_TRUE(settles());
    const xcb_window_t before = requestor.owner();
    owner.end();
    ASSERT_TRUE(waitForOwnerOtherThan(before));
    EXPECT_EQ(pasted("UTF8_STRING"), "text");
}

TEST_F(Persistence, programsThatFightOverTheClipboardAreLeftAloneUntilASecondOfCalm) {
    start();
    TestOwner owner;
    owner.ownText("peace");
    ASSERT_TRUE(changed());
    TestOwner wild;
    wild.ownAndEndRepeatedly(12);
    owner.ownText("kept after the war");
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string() == QStringLiteral("kept after the war"); }));
    QElapsedTimer calm;
    calm.start();
    owner.end();
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 700)) << "the brake holds";
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    EXPECT_GE(calm.elapsed(), 900);
    EXPECT_EQ(pasted("UTF8_STRING"), "kept after the war");
}

TEST_F(Persistence, whoeverClaimsDuringTheCalmKeepsTheClipboard) {
    start();
    TestOwner wild;
    wild.ownAndEndRepeatedly(12);
    TestOwner owner;
    owner.ownText("gone");
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string() == QStringLiteral("gone"); }));
    owner.end();
    TestOwner next;
    next.ownText("next");
    ASSERT_TRUE(waitUntil([this] { return pasteboard().string() == QStringLiteral("next"); }));
    EXPECT_FALSE(waitUntil([&] { return !next.isOwner(); }, 1300));
}

TEST_F(Persistence, twoKeepersDoNotFightForEver) {
    start();
    X11Pasteboard other(shortLimits());
    {
        TestOwner owner;
        owner.ownText("text");
        ASSERT_TRUE(changed());
        ASSERT_TRUE(waitUntil([&] { return other.string() == QStringLiteral("text"); }));
        owner.end();
    }
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    EXPECT_EQ(pasted("UTF8_STRING"), "text");
    const xcb_window_t keeper = requestor.owner();
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != keeper; }, 400));
}

TEST_F(Persistence, atRestNothingWakesUp) {
    start();
    TestOwner owner;
    owner.ownText("text");
    ASSERT_TRUE(changed());
    ASSERT_TRUE(settles());
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
    // What the copy has set off may still be under way on a busy machine: the owner's last words, the server's to who
    // asked. A thread that woke by itself would do so in each of these.
    long fewest = 2;
    for (int tries = 0; tries < 10 && fewest > 1; ++tries) {
        const long before = switches();
        ASSERT_GE(before, 0);
        ASSERT_FALSE(changed(2000));
        fewest = std::min(fewest, switches() - before);
    }
    EXPECT_LE(fewest, 1);
}

} // namespace
} // namespace tavrine
