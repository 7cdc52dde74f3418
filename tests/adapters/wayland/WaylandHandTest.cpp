// The tests' own hand, on programs that know nothing of it.

#include "support/WaylandHand.h"

#include "adapters/x11/ForeignWindow.h"

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

class WaylandHandTest : public ::testing::TestWithParam<const char *> {
protected:
    WaylandHand hand;
};

TEST_P(WaylandHandTest, whatIsTypedArrives) {
    ASSERT_TRUE(hand.isThere());
    ForeignWindow window(QString::fromUtf8(GetParam()));
    ASSERT_TRUE(window.waitForFocus());
    hand.type("Typed by hand; 42-");
    EXPECT_TRUE(window.waitForText(QStringLiteral("Typed by hand; 42-"))) << window.text().toStdString();
    hand.chord({KEY_LEFTCTRL, KEY_A});
    hand.type("anew");
    EXPECT_TRUE(window.waitForText(QStringLiteral("anew"))) << window.text().toStdString();
}

TEST_P(WaylandHandTest, aDragOverTheTextSelectsIt) {
    ForeignWindow window(QString::fromUtf8(GetParam()));
    ASSERT_TRUE(window.waitForFocus());
    const QRect all = hand.layout();
    const QPoint middle = all.center();
    // A window that has just come may not be where it is going to be.
    EXPECT_TRUE(waitUntil(
        [&] {
            hand.chord({KEY_LEFTCTRL, KEY_A});
            hand.type("wide");
            if (!window.waitForText(QStringLiteral("wide")))
                return false;
            hand.drag(middle + QPoint(100, 0), {all.left() + 1, middle.y()});
            hand.type("x");
            return window.waitForText(QStringLiteral("x"), std::chrono::seconds(2));
        },
        std::chrono::seconds(30)))
        << window.text().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Toolkits, WaylandHandTest, ::testing::Values(TAVRINE_GTK_ENTRY, TAVRINE_QT_LINE_EDIT));

} // namespace
} // namespace tavrine::testing
