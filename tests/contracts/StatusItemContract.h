#pragma once

#include "ports/StatusItem.h"
#include "support/Eventually.h"

#include <QSize>

#include <gtest/gtest.h>

namespace tavrine::test {

/// An image in one colour.
inline StatusImage plainImage(int width, int height, QColor color = Qt::red) {
    return {.draw =
                [width, height, color](const StatusGround &ground) {
                    QImage image(qRound(width * ground.scale), qRound(height * ground.scale),
                                 QImage::Format_ARGB32_Premultiplied);
                    image.fill(color);
                    return image;
                },
            .width = width,
            .height = height,
            .isTemplate = false};
}

/// What every status item keeps. `Desk` is a desktop with an item and a tray that is not running yet:
///   StatusItem &item(); void startTray(); void endTray(); bool isInTray(); QSize sizeInTray(); QString
///   toolTipInTray(); QPoint click() clicks the icon and returns where.
template <class Desk>
class StatusItemContract : public testing::Test {
public:
    StatusItemContract() {
        desk.item().setImage(plainImage(18, 18));
        desk.item().setOnShown([this] { ++shownCalls; });
        desk.item().setOnPress([this](QPoint place, Seconds) { presses.append(place); });
    }

    Desk desk;
    int shownCalls = 0;
    QList<QPoint> presses;
};

TYPED_TEST_SUITE_P(StatusItemContract);

TYPED_TEST_P(StatusItemContract, isInNoTrayBeforeItIsMadeVisible) {
    this->desk.startTray();
    EXPECT_FALSE(this->desk.item().isVisible());
    letPass(std::chrono::milliseconds(200));
    EXPECT_FALSE(this->desk.isInTray());
    EXPECT_EQ(this->shownCalls, 0);
}

TYPED_TEST_P(StatusItemContract, aVisibleItemIsInTheTrayThatRuns) {
    this->desk.startTray();
    this->desk.item().setVisible(true);
    EXPECT_TRUE(this->desk.item().isVisible());
    EXPECT_TRUE(eventually([&] { return this->desk.isInTray(); }));
    EXPECT_TRUE(eventually([&] { return this->shownCalls == 1; }));
}

TYPED_TEST_P(StatusItemContract, appearsInATrayThatStartsLater) {
    this->desk.item().setVisible(true);
    letPass(std::chrono::milliseconds(100));
    EXPECT_EQ(this->shownCalls, 0);
    this->desk.startTray();
    EXPECT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 1; }));
}

TYPED_TEST_P(StatusItemContract, comesBackWithARestartedTray) {
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 1; }));
    this->desk.endTray();
    letPass(std::chrono::milliseconds(100));
    this->desk.startTray();
    EXPECT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 2; }));
}

TYPED_TEST_P(StatusItemContract, aHiddenItemLeavesTheTrayAndComesBackWhenShownAgain) {
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 1; }));
    this->desk.item().setVisible(false);
    EXPECT_FALSE(this->desk.item().isVisible());
    ASSERT_TRUE(eventually([&] { return !this->desk.isInTray(); }));
    this->desk.item().setVisible(true);
    EXPECT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 2; }));
}

TYPED_TEST_P(StatusItemContract, anotherImageIsNoNewAppearance) {
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 1; }));
    this->desk.item().setImage(plainImage(18, 18, Qt::blue));
    letPass(std::chrono::milliseconds(200));
    EXPECT_EQ(this->shownCalls, 1);
}

TYPED_TEST_P(StatusItemContract, aWideImageKeepsItsShape) {
    this->desk.item().setImage(plainImage(70, 22));
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray(); }));
    EXPECT_TRUE(eventually([&] {
        const QSize size = this->desk.sizeInTray();
        return size.height() > 0 && std::abs(double(size.width()) / size.height() - 70.0 / 22.0) < 0.1;
    })) << this->desk.sizeInTray().width()
        << " x " << this->desk.sizeInTray().height();
}

TYPED_TEST_P(StatusItemContract, aPressTellsItsPlace) {
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray() && this->shownCalls == 1; }));
    const QPoint place = this->desk.click();
    ASSERT_TRUE(eventually([&] { return !this->presses.isEmpty(); }));
    EXPECT_EQ(this->presses, QList<QPoint>{place});
}

TYPED_TEST_P(StatusItemContract, theToolTipReachesTheTrayAndFollowsChanges) {
    this->desk.item().setToolTip(QStringLiteral("Tavrine"));
    this->desk.startTray();
    this->desk.item().setVisible(true);
    ASSERT_TRUE(eventually([&] { return this->desk.isInTray(); }));
    EXPECT_TRUE(eventually([&] { return this->desk.toolTipInTray() == QStringLiteral("Tavrine"); }));
    const QString other = QStringLiteral("Tavrine — Keep Awake: Display Awake");
    this->desk.item().setToolTip(other);
    EXPECT_TRUE(eventually([&] { return this->desk.toolTipInTray() == other; }));
}

REGISTER_TYPED_TEST_SUITE_P(StatusItemContract, isInNoTrayBeforeItIsMadeVisible, aVisibleItemIsInTheTrayThatRuns,
                            appearsInATrayThatStartsLater, comesBackWithARestartedTray,
                            aHiddenItemLeavesTheTrayAndComesBackWhenShownAgain, anotherImageIsNoNewAppearance,
                            aWideImageKeepsItsShape, aPressTellsItsPlace, theToolTipReachesTheTrayAndFollowsChanges);

} // namespace tavrine::test
