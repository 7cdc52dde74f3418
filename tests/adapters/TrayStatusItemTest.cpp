#include "adapters/linux/TrayStatusItem.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using Offer = TrayIcon::Offer;

struct PlainTray final : TrayIcon {
    explicit PlainTray(bool isForWide) : m_keepsShape(isForWide) {}
    void setHandlers(Handlers handlers) override { m_handlers = std::move(handlers); }
    [[nodiscard]] Offer offer() const override { return m_offer; }
    [[nodiscard]] bool keepsShape() const override { return m_keepsShape; }
    void setWanted(bool isWanted) override { m_isWanted = isWanted; }
    void setImage(const StatusImage &) override {
        m_gotImageWhileWanted = m_isWanted;
        ++m_images;
    }
    void setToolTip(const QString &) override {}

    void offers(Offer offer) {
        m_offer = offer;
        m_handlers.onOfferChanged();
    }
    Handlers m_handlers;
    Offer m_offer = Offer::unknown;
    bool m_keepsShape;
    bool m_isWanted = false;
    bool m_gotImageWhileWanted = false; // at the last image
    int m_images = 0;
};

class TrayStatusItemTest : public testing::Test {
public:
    TrayStatusItemTest() {
        item.setOnShown([this] { ++shownCalls; });
        item.setVisible(true);
    }
    std::vector<std::unique_ptr<TrayIcon>> trays() {
        std::vector<std::unique_ptr<TrayIcon>> list;
        list.emplace_back(newer);
        list.emplace_back(older);
        return list;
    }
    static StatusImage imageOf(int width, int height) {
        return {.draw = {}, .width = width, .height = height, .isTemplate = false};
    }
    PlainTray *newer = new PlainTray(false);
    PlainTray *older = new PlainTray(true);
    TrayStatusItem item{trays()};
    int shownCalls = 0;
};

TEST_F(TrayStatusItemTest, aLesserTrayIsNotEnteredWhileABetterOneIsUnknown) {
    older->offers(Offer::yes);
    EXPECT_FALSE(older->m_isWanted);
    newer->offers(Offer::no);
    EXPECT_TRUE(older->m_isWanted);
}

TEST_F(TrayStatusItemTest, theBetterTrayIsPreferredAndLeavesTheOther) {
    newer->offers(Offer::no);
    older->offers(Offer::yes);
    newer->offers(Offer::yes);
    EXPECT_TRUE(newer->m_isWanted);
    EXPECT_FALSE(older->m_isWanted);
    newer->offers(Offer::no);
    EXPECT_FALSE(newer->m_isWanted);
    EXPECT_TRUE(older->m_isWanted);
}

TEST_F(TrayStatusItemTest, aMoveBetweenTraysIsNoNewAppearanceButAGapIs) {
    newer->offers(Offer::no);
    older->offers(Offer::yes);
    older->m_handlers.onShown();
    EXPECT_EQ(shownCalls, 1);
    newer->offers(Offer::yes);
    newer->m_handlers.onShown();
    EXPECT_EQ(shownCalls, 1);
    older->offers(Offer::no);
    newer->offers(Offer::no);
    newer->offers(Offer::yes);
    newer->m_handlers.onShown();
    EXPECT_EQ(shownCalls, 2);
}

TEST_F(TrayStatusItemTest, aLateWordOfATrayThatWasLeftIsNoAppearance) {
    newer->offers(Offer::yes);
    older->offers(Offer::yes);
    older->m_handlers.onShown();
    EXPECT_EQ(shownCalls, 0);
}

TEST_F(TrayStatusItemTest, anImageOfThreeToTwoStaysAndAWiderOneGoesWhereItsShapeIsKept) {
    newer->offers(Offer::yes);
    older->offers(Offer::yes);
    item.setImage(imageOf(33, 22));
    EXPECT_TRUE(newer->m_isWanted);
    item.setImage(imageOf(34, 22));
    EXPECT_FALSE(newer->m_isWanted);
    EXPECT_TRUE(older->m_isWanted);
    item.setImage(imageOf(33, 22));
    EXPECT_TRUE(newer->m_isWanted);
    EXPECT_FALSE(older->m_isWanted);
}

TEST_F(TrayStatusItemTest, aWideImageStaysWhereNoOtherTrayIsOffered) {
    newer->offers(Offer::yes);
    older->offers(Offer::no);
    item.setImage(imageOf(70, 22));
    EXPECT_TRUE(newer->m_isWanted);
}

TEST_F(TrayStatusItemTest, aTrayThatIsLeftForAnImageIsLeftBeforeItHearsOfTheImage) {
    newer->offers(Offer::yes);
    older->offers(Offer::yes);
    item.setImage(imageOf(18, 18));
    EXPECT_TRUE(newer->m_gotImageWhileWanted);
    item.setImage(imageOf(70, 22));
    EXPECT_FALSE(newer->m_gotImageWhileWanted);
}

TEST_F(TrayStatusItemTest, anImageOfTheSameIdentityIsNotHandedOnAndOneWithoutAlwaysIs) {
    StatusImage image = imageOf(18, 18);
    item.setImage(image);
    item.setImage(image);
    EXPECT_EQ(newer->m_images, 2);
    image.identity = QStringLiteral("one");
    item.setImage(image);
    item.setImage(image);
    EXPECT_EQ(newer->m_images, 3);
    image.identity = QStringLiteral("another");
    item.setImage(image);
    EXPECT_EQ(newer->m_images, 4);
    image.identity.clear();
    item.setImage(image);
    EXPECT_EQ(newer->m_images, 5);
}

TEST_F(TrayStatusItemTest, aHiddenItemIsInNoTray) {
    newer->offers(Offer::yes);
    item.setVisible(false);
    EXPECT_FALSE(newer->m_isWanted);
}

TEST_F(TrayStatusItemTest, withoutPlacingAPressIsToldAtOnceWhereTheTraySaysItWas) {
    QList<QPoint> presses;
    item.setOnPress([&presses](QPoint place, Seconds ago) {
        presses.append(place);
        EXPECT_EQ(ago.count(), 0);
    });
    newer->m_handlers.onPress({3, 4});
    newer->m_handlers.onSecondaryPress({5, 6}); // nobody asked for these
    EXPECT_EQ(presses, QList<QPoint>{QPoint(3, 4)});
}

TEST_F(TrayStatusItemTest, aPressIsToldOnceItsPlaceIsFoundAndHowLongAgoItWas) {
    std::vector<std::function<void(QPoint)>> asked;
    std::vector<std::unique_ptr<TrayIcon>> trays;
    auto *const tray = new PlainTray(false);
    trays.emplace_back(tray);
    TrayStatusItem placed(std::move(trays),
                          [&asked](std::function<void(QPoint)> found) { asked.push_back(std::move(found)); });
    QList<QPoint> presses;
    Seconds told{};
    placed.setOnPress([&](QPoint place, Seconds ago) {
        presses.append(place);
        told = ago;
    });
    tray->m_handlers.onPress({3, 4});
    const auto before = std::chrono::steady_clock::now();
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_TRUE(presses.isEmpty());
    while (std::chrono::steady_clock::now() - before < std::chrono::milliseconds(2)) {
    }
    asked.front()({70, 8});
    EXPECT_EQ(presses, QList<QPoint>{QPoint(70, 8)});
    EXPECT_GE(told, std::chrono::milliseconds(2));
    placed.setOnPress({});
    tray->m_handlers.onPress({3, 4});
    asked.back()({70, 8});
    EXPECT_EQ(presses.size(), 1);
}

} // namespace
} // namespace tavrine
