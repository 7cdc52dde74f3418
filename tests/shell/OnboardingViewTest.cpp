#include "shell/OnboardingView.h"

#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeDesktopAbilities.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "look/Button.h"
#include "look/Indicators.h"
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
