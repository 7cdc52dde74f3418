#include "adapters/x11/XcbClient.h"

#include "support/Wait.h"

#include <gtest/gtest.h>
#include <xcb/xinput.h>

namespace tavrine {
namespace {

using testing::waitUntil;

/// A client that hears of properties of the root window, and one that sets them.
class XcbClientTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(client.isConnected());
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(client.connection(), client.root(), XCB_CW_EVENT_MASK, &events);
        ASSERT_TRUE(client.link().finish());
        ASSERT_NE(property = other.atom("_TAVRINE_TEST"), static_cast<xcb_atom_t>(XCB_ATOM_NONE));
        settle();
        count = 0;
    }
    /// The next answer that the client reads has a notice before it.
    void sendNotice() {
        xcb_change_property(other.connection(), XCB_PROP_MODE_REPLACE, other.root(), property, XCB_ATOM_CARDINAL, 32, 1,
                            &property);
        ASSERT_TRUE(other.link().finish());
    }
    void settle() {
        (void)waitUntil([] { return false; }, std::chrono::milliseconds(50));
    }
    [[nodiscard]] bool isHandedOver() {
        return waitUntil([this] { return count == 1; });
    }

    int count = 0;
    xcb_atom_t property = XCB_ATOM_NONE;
    XcbClient client{[this](const xcb_generic_event_t &event) {
        const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if ((event.response_type & 0x7f) == XCB_PROPERTY_NOTIFY && notice.atom == property)
            ++count;
    }};
    XcbClient other{[](const xcb_generic_event_t &) {}};
};

TEST_F(XcbClientTest, anEventThatIsReadOnTheWayToAnAnswerIsHandedOver) {
    sendNotice();
    const auto answer = client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(client.connection()));
    EXPECT_NE(answer, nullptr);
    EXPECT_EQ(count, 0); // not within the question
    EXPECT_TRUE(isHandedOver());
}

TEST_F(XcbClientTest, anEventThatIsReadWhileTheEndOfAllRequestsIsAwaitedIsHandedOver) {
    sendNotice();
    EXPECT_TRUE(client.link().finish());
    EXPECT_TRUE(isHandedOver());
}

TEST_F(XcbClientTest, anEventThatIsReadWhileARefusalIsAwaitedIsHandedOver) {
    sendNotice();
    const auto request = xcb_grab_key_checked(client.connection(), 0, client.root(), XCB_MOD_MASK_ANY, 248,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    EXPECT_EQ(client.link().isRefused(request), false);
    EXPECT_TRUE(isHandedOver());
}

TEST_F(XcbClientTest, anEventThatIsReadAlongWithAnExtensionIsHandedOver) {
    sendNotice();
    EXPECT_NE(client.link().extension(xcb_input_id), nullptr);
    EXPECT_TRUE(isHandedOver());
}

} // namespace
} // namespace tavrine
