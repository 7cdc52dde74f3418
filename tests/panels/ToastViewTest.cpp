#include "panels/ToastView.h"

#include "adapters/fake/FakePanelWindow.h"
#include "panels/QtToastWindows.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

const QString icon = QStringLiteral("checkmark.circle.fill");

QStringList shownLines(const QString &message) {
    ToastView view(message, icon);
    view.resize(view.sizeHint());
    EXPECT_EQ(view.size(), QSize(250, 60));
    return view.shownLines();
}

TEST(ToastView, aMessageThatFitsIsShownWhole) {
    EXPECT_EQ(shownLines(QStringLiteral("Copied")), QStringList(QStringLiteral("Copied")));
}

TEST(ToastView, aMessageThatNeedsTwoLinesIsShownWhole) {
    for (const char *message :
         {"Enable Accessibility to paste automatically", "Enable Accessibility to insert automatically"}) {
        const QStringList lines = shownLines(QLatin1String(message));
        EXPECT_EQ(lines.size(), 2) << message;
        EXPECT_EQ(lines.join(QLatin1Char(' ')), QLatin1String(message));
    }
}

TEST(ToastView, aLongMessageIsCutAndTheSizeStays) {
    const QStringList lines = shownLines(QStringLiteral("a word ").repeated(60));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(1).endsWith(QChar(0x2026)));
    EXPECT_LT(lines.at(1).size(), 60);
}

TEST(ToastView, aLongWordIsCutOnOneLine) {
    const QStringList lines = shownLines(QString(300, QLatin1Char('m')));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.at(0).endsWith(QChar(0x2026)));
    EXPECT_LT(lines.at(0).size(), 40);
}

TEST(ToastView, anEmptyMessageIsOneEmptyLine) {
    EXPECT_EQ(shownLines(QString()), QStringList(QString()));
}

/// Keeps the description that a toast's panel is asked for.
class NotingPanels final : public PanelWindows {
public:
    [[nodiscard]] std::unique_ptr<PanelWindow> makePanel(const PanelDescription &wanted) override {
        description = wanted;
        auto panel = panels.makePanel(wanted);
        last = panel.get();
        return panel;
    }
    [[nodiscard]] bool isComposited() const override { return true; }

    PanelDescription description;
    PanelWindow *last = nullptr;
    FakePanelWindows panels;
};

TEST(QtToastWindows, aToastTakesNeitherKeysNorClicks) {
    NotingPanels panels;
    QtToastWindows toasts(panels);
    const auto toast = toasts.makeToastWindow({.message = QStringLiteral("Copied"), .icon = icon});
    toast->orderFront();
    EXPECT_FALSE(panels.description.canBecomeKey);
    EXPECT_TRUE(panels.description.ignoresMouseEvents);
    EXPECT_EQ(panels.description.collectionBehavior, 257U);
    EXPECT_EQ(panels.panels.keyWindow(), nullptr);
    EXPECT_TRUE(panels.last->isVisible());
}

TEST(QtToastWindows, anAnimationEndsAtItsPlaceWithTheSizeUnchanged) {
    NotingPanels panels;
    QtToastWindows toasts(panels);
    const auto toast = toasts.makeToastWindow({.message = QString(300, QLatin1Char('m')), .icon = icon});
    toast->setFrameOrigin({100, 120});
    toast->setAlpha(0);
    toast->animate(1, {100, 130}, Seconds(0.3)); // without a look nothing moves: it is there at once
    EXPECT_EQ(panels.last->frame(), QRectF(100, 130, 250, 60));
    EXPECT_EQ(panels.last->alpha(), 1.0);
}

} // namespace
} // namespace tavrine
