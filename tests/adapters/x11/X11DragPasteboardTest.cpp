// Drags by programs that behave badly, or as the toolkits do.

#include "adapters/x11/DragQuestion.h"
#include "adapters/x11/DragWatch.h"
#include "adapters/x11/PressedPointers.h"
#include "adapters/x11/TestOwner.h"
#include "adapters/x11/X11DragPasteboards.h"
#include "support/DragRehearsal.h"
#include "support/Eventually.h"
#include "support/PrivateScreen.h"
#include "support/TestKeyboard.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const QByteArray files = "file:///home/somebody/a.txt\r\n";

class X11DragPasteboardTest : public ::testing::Test {
protected:
    X11DragPasteboardTest() {
        hand.movePointer(5, 5);
        watch();
    }
    ~X11DragPasteboardTest() override { hand.release(1); }
    void watch() {
        pasteboard = X11DragPasteboards().watch();
        EXPECT_TRUE(testing::seesDrags(*pasteboard));
        pasteboard->setOnChange([this] { ++changes; });
    }
    bool isDragging() {
        return eventually([this] { return pasteboard->isDragging(); });
    }
    bool areFiles() {
        return eventually([this] { return pasteboard->holdsFileReference(); });
    }
    bool isOver() {
        return eventually([this] { return !pasteboard->isDragging(); });
    }
    /// The next drag is seen as ever.
    void expectItWorks() {
        TestOwner other("XdndSelection");
        hand.press(1);
        other.own({{"text/uri-list", {.bytes = files}}});
        EXPECT_TRUE(isDragging());
        EXPECT_TRUE(areFiles());
        hand.release(1);
        EXPECT_TRUE(isOver());
    }

    testing::TestKeyboard hand;
    TestOwner owner{"XdndSelection"};
    std::unique_ptr<DragPasteboard> pasteboard;
    int changes = 0;
    int moves = 0;
};

TEST_F(X11DragPasteboardTest, whoTakesTheSelectionWithoutAPressDragsNothing) {
    owner.own({{"text/uri-list", {.bytes = files}}});
    letPass(100ms);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(owner.requestCount(), 0);
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, anOwnerThatNeverAnswersHoldsNothingAndIsAskedOnce) {
    hand.press(1);
    owner.own({}, Answer::silent());
    ASSERT_TRUE(isDragging());
    for (int i = 0; i < 200; ++i)
        hand.movePointer(100 + i, 100);
    letPass(300ms);
    EXPECT_FALSE(pasteboard->holdsFileReference());
    EXPECT_EQ(owner.requestCount(), 1);
    hand.release(1);
    EXPECT_TRUE(isOver());
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, rubbishIsNoFile) {
    const Answer rubbish[] = {
        {.bytes = QByteArray(1'000'000, 'x')},
        {.bytes = QByteArray(4000, '\0'), .type = "ATOM", .format = 32},
        {.bytes = {}, .type = "ATOM", .format = 32},
        {.bytes = "abc", .type = "STRING", .format = 16},
        {.manner = Answer::Manner::piecemeal, .bytes = QByteArray(1000, 'y'), .isEndless = true},
        Answer::refused(),
    };
    for (const Answer &each : rubbish) {
        hand.press(1);
        owner.own({{"text/uri-list", {.bytes = files}}}, each);
        EXPECT_TRUE(isDragging());
        letPass(100ms);
        EXPECT_FALSE(pasteboard->holdsFileReference());
        hand.release(1);
        EXPECT_TRUE(isOver());
    }
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, linksAreNoFiles) {
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = "# a comment: file:///a\r\nhttps://example.org/\r\n"}}});
    ASSERT_TRUE(isDragging());
    ASSERT_TRUE(eventually([this] { return owner.requestCount("text/uri-list") == 1; }));
    letPass(200ms);
    EXPECT_FALSE(pasteboard->holdsFileReference());
}

TEST_F(X11DragPasteboardTest, aFileBehindALinkIsAFile) {
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = "https://example.org/\r\nFILE:///a\n"}}});
    EXPECT_TRUE(areFiles());
}

TEST_F(X11DragPasteboardTest, aListThatIsGivenOnlyAtTheDropCountsByItsName) {
    for (const Answer &answer : {Answer::refused(), Answer::silent()}) {
        hand.press(1);
        owner.own({{"text/uri-list", answer}});
        EXPECT_TRUE(areFiles());
        hand.release(1);
        EXPECT_TRUE(isOver());
    }
}

TEST_F(X11DragPasteboardTest, aListThatComesPiecemealIsTakenToItsEnd) {
    QByteArray many;
    for (int i = 0; i < 20'000; ++i)
        many += "file:///home/somebody/" + QByteArray::number(i) + "\r\n";
    hand.press(1);
    owner.own({{"text/uri-list", {.manner = Answer::Manner::piecemeal, .bytes = many}}});
    EXPECT_TRUE(areFiles());
    EXPECT_TRUE(eventually([&] { return owner.pieceCount() >= many.size() / 65536; }));
}

TEST_F(X11DragPasteboardTest, anEndlessListCostsLittle) {
    hand.press(1);
    const Answer endless{.manner = Answer::Manner::piecemeal, .bytes = QByteArray(1'000'000, 'z'), .isEndless = true};
    owner.own({{"text/uri-list", endless}});
    ASSERT_TRUE(isDragging());
    EXPECT_TRUE(eventually([&] { return owner.pieceCount() >= 100; }));
    hand.release(1);
    EXPECT_TRUE(isOver());
    letPass(50ms);
    const int pieces = owner.pieceCount();
    letPass(100ms);
    EXPECT_LE(owner.pieceCount(), pieces + 1);
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, aProgramThatEndsHasEndedItsDrag) {
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = files}}});
    ASSERT_TRUE(areFiles());
    owner.end();
    EXPECT_TRUE(isOver());
    hand.release(1);
}

TEST_F(X11DragPasteboardTest, anOwnerWithoutItsWindowHasEndedItsDrag) {
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = files}}});
    ASSERT_TRUE(areFiles());
    owner.destroyWindow();
    EXPECT_TRUE(isOver());
}

TEST_F(X11DragPasteboardTest, escapeEndsADragWhoeverHoldsTheKeyboard) {
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = files}}});
    ASSERT_TRUE(areFiles());
    ASSERT_TRUE(hand.grabKeyboard());
    hand.tap(testing::key::v);
    letPass(60ms);
    EXPECT_TRUE(pasteboard->isDragging());
    hand.tap(testing::key::escape);
    EXPECT_TRUE(isOver());
    hand.ungrabKeyboard();
}

TEST_F(X11DragPasteboardTest, theWheelAndASecondButtonDoNotEndADrag) {
    ASSERT_TRUE(hand.grabPointer());
    hand.press(1);
    owner.own({{"text/uri-list", {.bytes = files}}});
    ASSERT_TRUE(areFiles());
    for (const int button : {4, 5, 3}) {
        hand.press(button);
        hand.release(button);
    }
    letPass(60ms);
    EXPECT_TRUE(pasteboard->isDragging());
    hand.release(1);
    EXPECT_TRUE(isOver());
    hand.ungrabPointer();
}

/// A second hand on the same screen, with a pointer of its own.
class SecondPointer {
public:
    SecondPointer() {
        static_cast<void>(
            m_link.reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(m_link.connection(), 2, 2)));
        const struct {
            std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER;
            std::uint16_t length = 4;
            std::uint16_t nameLength = 6;
            std::uint8_t sendsCore = 1;
            std::uint8_t isEnabled = 1;
            char name[8] = "second";
        } add;
        xcb_input_xi_change_hierarchy(m_link.connection(), 1,
                                      reinterpret_cast<const xcb_input_hierarchy_change_t *>(&add));
        static_cast<void>(m_link.finish());
        for (const auto pointer : masterPointers(m_link))
            m_master = std::max(m_master, pointer);
        const auto devices = m_link.reply<xcb_input_xi_query_device_reply_t>(
            xcb_input_xi_query_device(m_link.connection(), XCB_INPUT_DEVICE_ALL));
        for (auto each = xcb_input_xi_query_device_infos_iterator(devices.get()); each.rem > 0;
             xcb_input_xi_device_info_next(&each))
            if (each.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER && each.data->attachment == m_master)
                m_device = static_cast<std::uint8_t>(each.data->deviceid);
    }
    ~SecondPointer() {
        const struct {
            std::uint16_t type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_REMOVE_MASTER;
            std::uint16_t length = 3;
            std::uint16_t device;
            std::uint8_t mode = XCB_INPUT_CHANGE_MODE_FLOAT;
            std::uint8_t unused = 0;
            std::uint16_t pointer = 0;
            std::uint16_t keyboard = 0;
        } remove{.device = m_master};
        xcb_input_xi_change_hierarchy(m_link.connection(), 1,
                                      reinterpret_cast<const xcb_input_hierarchy_change_t *>(&remove));
        static_cast<void>(m_link.finish());
    }
    [[nodiscard]] bool isThere() const { return m_device != 0 && masterCount() == 2; }
    void press() { send(XCB_INPUT_DEVICE_BUTTON_PRESS); }
    void release() { send(XCB_INPUT_DEVICE_BUTTON_RELEASE); }

private:
    [[nodiscard]] size_t masterCount() const {
        XcbLink link(XcbLink::forEver);
        static_cast<void>(
            link.reply<xcb_input_xi_query_version_reply_t>(xcb_input_xi_query_version(link.connection(), 2, 2)));
        return masterPointers(link).size();
    }
    void send(int type) {
        const auto *input = m_link.extension(xcb_input_id);
        xcb_test_fake_input(m_link.connection(), static_cast<std::uint8_t>(input->first_event + type), 1,
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, m_device);
        static_cast<void>(m_link.finish());
    }

    XcbLink m_link{XcbLink::forEver};
    std::uint16_t m_master = 0;
    std::uint8_t m_device = 0;
};

TEST_F(X11DragPasteboardTest, aDragWithASecondPointerIsADragAndTheOthersReleaseIsNotItsEnd) {
    SecondPointer second;
    ASSERT_TRUE(second.isThere());
    second.press();
    owner.own({{"text/uri-list", {.bytes = files}}});
    EXPECT_TRUE(isDragging());
    EXPECT_TRUE(areFiles());
    hand.press(1);
    hand.release(1);
    letPass(60ms);
    EXPECT_TRUE(pasteboard->isDragging());
    second.release();
    EXPECT_TRUE(isOver());
}

TEST_F(X11DragPasteboardTest, aClientThatTakesTheSelectionOverAndOverIsFollowedAFewTimes) {
    const int before = pasteboard->changeCount();
    hand.press(1);
    owner.ownAndEndRepeatedly(1000);
    letPass(100ms);
    EXPECT_LE(pasteboard->changeCount() - before, DragWatch::mostNotices);
    hand.release(1);
    letPass(60ms);
    EXPECT_FALSE(pasteboard->isDragging());
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, withoutAPressSuchAClientIsNoDrag) {
    owner.ownAndEndRepeatedly(1000);
    letPass(100ms);
    EXPECT_EQ(changes, 0);
    expectItWorks();
}

TEST_F(X11DragPasteboardTest, whatIsNamedLikeQtIsAskedAtMotionsFortyTimesAtMost) {
    owner.own({});
    XcbLink link(XcbLink::forEver);
    const QByteArray name = "Qt Selection Owner for somebody";
    xcb_change_property(link.connection(), XCB_PROP_MODE_REPLACE, link.selectionOwner(link.atom("XdndSelection")),
                        XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, static_cast<quint32>(name.size()), name.constData());
    ASSERT_TRUE(link.finish());
    hand.press(1);
    owner.own({{"text/uri-list", Answer::refused()}}, Answer::refused());
    ASSERT_TRUE(isDragging());
    EXPECT_TRUE(eventually([&] {
        hand.movePointer(100 + ++moves % 500, 100);
        return owner.requestCount() >= DragQuestion::mostTries;
    }));
    for (int i = 0; i < 100; ++i)
        hand.movePointer(100 + i, 100);
    letPass(200ms);
    // The claim that only made the window may be heard of when the button is down, and be asked about once.
    EXPECT_LE(owner.requestCount("text/uri-list"), DragQuestion::mostTries + 1);
    EXPECT_EQ(owner.requestCount("TARGETS"), 0);
}

TEST_F(X11DragPasteboardTest, anotherConnectionIsMadeWhenTheServerWasLost) {
    pasteboard.reset();
    auto first = std::make_unique<testing::PrivateScreen>();
    watch();
    {
        testing::TestKeyboard there;
        there.movePointer(5, 5);
        TestOwner ownerThere("XdndSelection");
        there.press(1);
        ownerThere.own({{"text/uri-list", {.bytes = files}}});
        ASSERT_TRUE(areFiles());
        first->end();
        EXPECT_TRUE(isOver());
        // The server ends the connection of the one who drags before ours, or after it.
        EXPECT_TRUE(eventually([this] { return !pasteboard->holdsFileReference(); }));
    }
    const testing::PrivateScreen second;
    letPass(1100ms);
    testing::TestKeyboard there;
    TestOwner ownerThere("XdndSelection");
    EXPECT_TRUE(eventually([&] { // it tries after a while
        there.release(1);
        letPass(20ms);
        there.press(1);
        ownerThere.own({{"text/uri-list", {.bytes = files}}});
        letPass(100ms);
        return pasteboard->isDragging();
    }));
    pasteboard.reset();
}

} // namespace
} // namespace tavrine::test
