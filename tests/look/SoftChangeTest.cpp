#include "look/SoftChange.h"

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/VirtualTime.h"
#include "look/Button.h"
#include "look/Look.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

using namespace std::chrono_literals;

class SoftChangeTest : public testing::Test {
protected:
    SoftChangeTest() {
        button.setGeometry(10, 10, 140, 30);
        window.resize(160, 50);
        window.show();
    }
    [[nodiscard]] QImage seen() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window.grab().toImage();
    }

    VirtualTime time;
    FakeAppearance appearance;
    Look look{time, &appearance};
    QWidget window;
    Button button{QStringLiteral("Copy"), ButtonStyle::plain, &window};
};

TEST_F(SoftChangeTest, whatChangesIsFadedInto) {
    const QImage before = seen();
    changeSoftly(button);
    button.setText(QStringLiteral("Copied"));
    EXPECT_EQ(seen(), before);
    time.advance(80ms);
    const QImage between = seen();
    time.advance(80ms);
    const QImage after = seen();
    EXPECT_TRUE(button.children().isEmpty());
    button.repaint();
    EXPECT_EQ(seen(), after);
    EXPECT_NE(after, before);
    EXPECT_NE(between, before);
    EXPECT_NE(between, after);
}

TEST_F(SoftChangeTest, aSecondChangeGoesOnFromWhatIsSeen) {
    changeSoftly(button);
    button.setText(QStringLiteral("Copied"));
    time.advance(80ms);
    const QImage between = seen();
    changeSoftly(button);
    button.setText(QStringLiteral("Copy"));
    EXPECT_EQ(seen(), between);
    EXPECT_EQ(button.children().size(), 1) << "one fade at a time";
}

TEST_F(SoftChangeTest, clicksGoThroughIt) {
    changeSoftly(button);
    EXPECT_EQ(window.childAt(button.geometry().center()), &button);
}

TEST_F(SoftChangeTest, whereNothingMayMoveTheChangeIsThereAtOnce) {
    appearance.set({.reducesMotion = true});
    changeSoftly(button);
    EXPECT_TRUE(button.children().isEmpty());
}

TEST_F(SoftChangeTest, whatIsNotShownChangesAtOnce) {
    button.hide();
    changeSoftly(button);
    EXPECT_TRUE(button.children().isEmpty());
}

} // namespace
} // namespace tavrine::look
