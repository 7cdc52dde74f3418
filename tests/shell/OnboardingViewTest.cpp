#include "shell/OnboardingView.h"

#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeDesktopAbilities.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "support/OtherPlatform.h"

#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Not;

class OnboardingViewTest : public testing::Test {
protected:
    OnboardingViewTest() { window->show(); }

    [[nodiscard]] QStringList words() const {
        QStringList list;
        for (const auto *label : window->findChildren<look::Label *>()) {
            if (label->isVisible())
                list.append(label->text());
        }
        for (const auto *button : window->findChildren<look::Button *>()) {
            if (button->isVisible())
                list.append(button->text());
        }
        return list;
    }
    void press(const char *text) {
        for (auto *button : window->findChildren<look::Button *>()) {
            if (button->isVisible() && button->text() == QLatin1String(text)) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        ADD_FAILURE() << "no button " << text;
    }
    [[nodiscard]] int visibleMarks() const {
        int count = 0;
        for (const auto *widget : window->findChildren<QWidget *>())
            count += widget->isVisible() && widget->accessibleName() == QStringLiteral("Granted") ? 1 : 0;
        return count;
    }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("d.plist")), time, center};
    FakeAccess access;
    FakeUrlOpener urls;
    int closes = 0;
    FakeDesktopAbilities abilities;
    std::unique_ptr<QWidget> window = OnboardingView::makeWindow(
        {.defaults = defaults, .access = access, .time = time, .urlOpener = urls, .abilities = &abilities},
        [this] { ++closes; });
};

TEST_F(OnboardingViewTest, theWindowIsTitledFixedAndHasNoCloseButton) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Welcome to Tavrine"));
    EXPECT_EQ(window->size(), QSize(600, 500));
    EXPECT_FALSE(window->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_TRUE(window->windowFlags() & Qt::FramelessWindowHint); // some window managers draw one into every frame
}

TEST_F(OnboardingViewTest, onALowScreenTheButtonsAreInSightAndTheGreetingIsRead) {
    window->setMinimumSize(1, 1);
    window->resize(512, 276);
    const auto isInSight = [this](const QWidget &widget) {
        for (const QWidget *each = &widget; each != window.get(); each = each->parentWidget())
            if (!each->parentWidget()->rect().contains(each->geometry()))
                return false;
        return true;
    };
    for (const char *button : {"Get Started", "Continue", "Done, Let's Go"}) {
        QCoreApplication::processEvents();
        for (const auto *each : window->findChildren<look::Button *>()) {
            EXPECT_TRUE(!each->isVisible() || each->text() != QLatin1String(button) || isInSight(*each)) << button;
        }
        for (const auto *label : window->findChildren<look::Label *>()) {
            const bool isGreeting = label->isVisible() && label->text() == QStringLiteral("Your computer. Simplified.");
            EXPECT_TRUE(!isGreeting || isInSight(*label));
        }
        press(button);
        time.advance(1s);
    }
    EXPECT_EQ(closes, 1);
}

TEST_F(OnboardingViewTest, theLastPageSaysWhenTheDesktopDoesNotAllowEverything) {
    const auto sentences = [this] { return words().filter(QStringLiteral("on this desktop")); };
    press("Get Started");
    abilities.set(
        {.ability = Ability::tray, .state = AbilityState::missing, .reason = {}, .step = {}, .linesToCopy = {}});
    press("Continue");
    time.advance(1s);
    EXPECT_EQ(sentences(),
              QStringList(QStringLiteral(
                  "One thing works in part or not at all on this desktop: Home says what, and what to do.")));
}

TEST_F(OnboardingViewTest, buttonsLeadThroughThePagesToTheEnd) {
    EXPECT_THAT(words(), Contains(QStringLiteral("Your computer. Simplified.")));
    EXPECT_THAT(words(), Contains(QStringLiteral("The Utility Layer of Your Computer")));
    press("Get Started");
    EXPECT_THAT(words(), Contains(QStringLiteral("Everything inside Tavrine")));
    EXPECT_THAT(words(), Not(Contains(QStringLiteral("Your computer. Simplified."))));
    press("Explore Features");
    EXPECT_EQ(urls.opened().size(), 1);
    press("Continue");
    EXPECT_THAT(words(), Contains(QStringLiteral("A few permissions to get started")));
    EXPECT_THAT(words(), Contains(QStringLiteral("You can change these anytime in Settings.")));
    EXPECT_EQ(closes, 0);
    press("Done, Let's Go");
    EXPECT_EQ(closes, 1);
}

TEST_F(OnboardingViewTest, noPageNamesAnotherPlatform) {
    int seen = 0;
    for (const auto *widget : window->findChildren<QWidget *>()) {
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        for (const QString &text : {widget->accessibleName(), widget->accessibleDescription(), widget->toolTip(),
                                    button ? button->text() : QString()}) {
            seen += text.isEmpty() ? 0 : 1;
            EXPECT_FALSE(namesAnotherPlatform(text)) << text.toStdString();
        }
    }
    EXPECT_GT(seen, 20);
}

TEST_F(OnboardingViewTest, theLastPageNamesTheKeysToTry) {
    QStringList names;
    for (const auto *widget : window->findChildren<QWidget *>())
        names.append(widget->accessibleName());
    EXPECT_THAT(names, Contains(QStringLiteral("Clipboard Super+Shift+V, Emoji Picker Super+Shift+E, "
                                               "Screenshot Super+Shift+2")));
}

/// The window where things move.
class MovingOnboardingView : public testing::Test {
protected:
    MovingOnboardingView() { window->show(); }

    void goOn() { QTest::keyClick(window.get(), Qt::Key_Return); }
    void pass(int frames) { time.advance(look::MotionClock::frame * frames); }
    [[nodiscard]] QImage picture() const { return window->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    /// The dots from the left: where each begins and ends in the row through their middles.
    [[nodiscard]] std::vector<std::pair<int, int>> dots() const {
        const QImage image = picture();
        const int row = image.height() - 22;
        std::vector<std::pair<int, int>> found;
        for (int x = 200; x < 400; ++x) {
            if (image.pixel(x, row) == ground)
                continue;
            if (found.empty() || found.back().second != x)
                found.emplace_back(x, x);
            found.back().second = x + 1;
        }
        return found;
    }
    [[nodiscard]] QRgb colourOf(std::size_t dot) const {
        const auto [begin, end] = dots().at(dot);
        return picture().pixel((begin + end) / 2, int(window->height()) - 22);
    }
    static void expectLike(QRgb colour, QRgb expected) {
        EXPECT_NEAR(qRed(colour), qRed(expected), 3);
        EXPECT_NEAR(qGreen(colour), qGreen(expected), 3);
        EXPECT_NEAR(qBlue(colour), qBlue(expected), 3);
    }

    static constexpr QRgb ground = qRgb(0x1C, 0x1C, 0x1E);  // 0.11, 0.11, 0.118
    static constexpr QRgb accent = qRgb(0xFF, 0x95, 0x00);  // 1.0, 0.584, 0.0
    static constexpr QRgb resting = qRgb(0x4E, 0x4E, 0x50); // white at 0.22 on the ground
    QTemporaryDir folder;
    VirtualTime time;
    look::Look look{time};
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("d.plist")), time, center};
    FakeAccess access;
    FakeUrlOpener urls;
    std::unique_ptr<QWidget> window =
        OnboardingView::makeWindow({.defaults = defaults, .access = access, .time = time, .urlOpener = urls}, [] {});
};

TEST_F(MovingOnboardingView, aCapsuleInTheAccentStandsForThePageAndADotForEachOther) {
    ASSERT_EQ(picture().pixel(20, 480), ground);
    const auto widthOf = [](const std::pair<int, int> &dot) { return dot.second - dot.first; };
    for (std::size_t page = 0; page < 3; ++page) {
        const auto all = dots();
        ASSERT_EQ(all.size(), 3U);
        for (std::size_t dot = 0; dot < 3; ++dot) {
            EXPECT_NEAR(widthOf(all[dot]), dot == page ? 20 : 7, 1) << dot << " on " << page;
            expectLike(colourOf(dot), dot == page ? accent : resting);
        }
        goOn();
        pass(120);
    }
}

TEST_F(MovingOnboardingView, theDotsAreSevenHigh) {
    const QImage image = picture();
    const auto [begin, end] = dots().front();
    int high = 0;
    for (int y = image.height() - 44; y < image.height() - 2; ++y)
        high += image.pixel((begin + end) / 2, y) == ground ? 0 : 1;
    EXPECT_NEAR(high, 7, 1);
}

TEST_F(MovingOnboardingView, theCapsuleChangesItsPlaceInASpring) {
    goOn();
    const look::Spring spring = look::Spring::responding(0.35, 0.7);
    for (int frame = 4; frame <= 16; frame += 4) {
        pass(4);
        const auto all = dots();
        ASSERT_EQ(all.size(), 3U);
        const double part = spring.at(look::MotionClock::frame * frame);
        EXPECT_NEAR(all[1].second - all[1].first, 7 + 13 * part, 1.6) << frame;
        EXPECT_NEAR(all[0].second - all[0].first, 20 - 13 * part, 1.6) << frame;
    }
}

TEST_F(MovingOnboardingView, goingForwardThePageLeavesToTheLeft) {
    const QImage before = picture();
    goOn();
    pass(7); // a third of the way
    const QImage after = picture();
    const auto differenceAt = [&](int shift) {
        qint64 sum = 0;
        for (int y = 60; y < 400; y += 2)
            for (int x = 150; x < 450; x += 2)
                sum += std::abs(qRed(before.pixel(x - shift, y)) - qRed(after.pixel(x, y)));
        return sum;
    };
    int best = 0;
    for (int shift = -140; shift <= 140; ++shift)
        if (differenceAt(shift) < differenceAt(best))
            best = shift;
    const double part = look::easeInOut.at(look::MotionClock::frame * 7 / Seconds(0.35));
    EXPECT_NEAR(best, -0.35 * 598 * part, 2);
}

TEST_F(OnboardingViewTest, returnGoesOn) {
    for (int page = 0; page < 3; ++page)
        QTest::keyClick(window.get(), Qt::Key_Return);
    EXPECT_EQ(closes, 1);
}

TEST_F(OnboardingViewTest, aGrantShowsOnItsRowWithinTwoSeconds) {
    access.setAccessibilityTrusted(false);
    access.setScreenCaptureGranted(false);
    press("Get Started");
    press("Continue");
    time.advance(2s);
    EXPECT_EQ(words().count(QStringLiteral("Allow")), 2);
    EXPECT_EQ(visibleMarks(), 0);
    access.setAccessibilityTrusted(true);
    time.advance(2s);
    EXPECT_EQ(words().count(QStringLiteral("Allow")), 1);
    EXPECT_EQ(visibleMarks(), 1);
}

} // namespace
} // namespace tavrine
