#include "shell/settings/KeepAwakeSettingsModel.h"

#include "adapters/fake/VirtualTime.h"
#include "base/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

class KeepAwakeSettings : public testing::Test {
protected:
    [[nodiscard]] QString storedColor() const {
        return defaults.get<QString>(QStringLiteral("keepAwakeBgColor"), QStringLiteral("nothing"));
    }

    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(QStringLiteral("preferences.plist")), time, center};
    KeepAwakeSettingsModel model{defaults, center};
};

TEST_F(KeepAwakeSettings, theIndicatorIsOffAtFirstAndIsStored) {
    EXPECT_FALSE(model.showsIndicator());
    model.setShowsIndicator(true);
    EXPECT_TRUE(model.showsIndicator());
    EXPECT_EQ(defaults.get<bool>(QStringLiteral("keepAwakeShowBgIndicator")), true);
}

TEST_F(KeepAwakeSettings, aChosenColourIsStoredInSixUpperCaseDigits) {
    EXPECT_EQ(model.indicatorColor(), QColor(0x00, 0x7A, 0xFF));
    model.setIndicatorColor(QColor(0xAB, 0x05, 0xCD, 0x80));
    EXPECT_EQ(storedColor(), QStringLiteral("#AB05CD"));
    EXPECT_EQ(model.indicatorColor(), QColor(0xAB, 0x05, 0xCD));
    model.setIndicatorColor(QColor::fromHsv(120, 255, 255));
    EXPECT_EQ(storedColor(), QStringLiteral("#00FF00"));
}

TEST_F(KeepAwakeSettings, noColourChangesNothing) {
    model.setIndicatorColor(QColor());
    EXPECT_EQ(storedColor(), QStringLiteral("nothing"));
}

TEST_F(KeepAwakeSettings, resettingWritesTheDefault) {
    model.setIndicatorColor(Qt::red);
    model.resetIndicatorColor();
    EXPECT_EQ(storedColor(), QStringLiteral("#007AFF"));
}

TEST_F(KeepAwakeSettings, aStoredColourThatCannotBeReadIsTheSystemsBlue) {
    defaults.set(QStringLiteral("keepAwakeBgColor"), QStringLiteral("blue"));
    EXPECT_EQ(model.indicatorColor(), QColor(0, 122, 255));
}

TEST_F(KeepAwakeSettings, thePageFollowsThePreferencesWhoeverChangesThem) {
    int changes = 0;
    QObject::connect(&model, &KeepAwakeSettingsModel::changed, &model, [&] { ++changes; });
    defaults.set(QStringLiteral("keepAwakeShowBgIndicator"), true);
    EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace tavrine
