#include "utilities/meter/NetworkSettingsModel.h"

#include "adapters/fake/VirtualTime.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

class NetworkSettingsModelTest : public testing::Test {
public:
    void store(const char *key, const char *text) { defaults.set(QString::fromLatin1(key), QString::fromUtf8(text)); }
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(QStringLiteral("preferences.plist")), time, center};
    NetworkSettingsModel model{defaults, center};
};

TEST_F(NetworkSettingsModelTest, aFreshInstallShowsNoSpeedAndOnlyTheDownloadInTheGlassTheme) {
    EXPECT_FALSE(model.showsInternetSpeed());
    EXPECT_EQ(model.displayMode(), SpeedDisplayMode::downloadOnly);
    EXPECT_EQ(model.theme(), SpeedTheme::glassEffect);
}

TEST_F(NetworkSettingsModelTest, eachChoiceIsStoredAsItsTextAndReadBack) {
    model.setShowsInternetSpeed(true);
    EXPECT_EQ(defaults.get<bool>(QStringLiteral("showInternetSpeed")), true);
    const std::pair<SpeedDisplayMode, const char *> modes[] = {{SpeedDisplayMode::both, "Both"},
                                                               {SpeedDisplayMode::downloadOnly, "Download Only"},
                                                               {SpeedDisplayMode::uploadOnly, "Upload Only"}};
    for (const auto &[mode, text] : modes) {
        model.setDisplayMode(mode);
        EXPECT_EQ(defaults.get<QString>(QStringLiteral("speedDisplayMode")), QLatin1String(text));
        EXPECT_EQ(model.displayMode(), mode);
    }
    const std::pair<SpeedTheme, const char *> themes[] = {{SpeedTheme::glassEffect, "Glass Effect"},
                                                          {SpeedTheme::white, "White BG / Black Text"},
                                                          {SpeedTheme::black, "Black BG / White Text"}};
    for (const auto &[theme, text] : themes) {
        model.setTheme(theme);
        EXPECT_EQ(defaults.get<QString>(QStringLiteral("speedTheme")), QLatin1String(text));
        EXPECT_EQ(model.theme(), theme);
    }
}

TEST_F(NetworkSettingsModelTest, anUnknownTextBehavesAsDownloadOnlyAndAsGlassEffect) {
    store("speedDisplayMode", "Upload");
    store("speedTheme", "Dark"); // a picker's label is no stored text
    EXPECT_EQ(model.displayMode(), SpeedDisplayMode::downloadOnly);
    EXPECT_EQ(model.theme(), SpeedTheme::glassEffect);
    EXPECT_EQ(defaults.get<QString>(QStringLiteral("speedTheme")), QStringLiteral("Dark"));
}

TEST_F(NetworkSettingsModelTest, thePickersListTheChoicesInTheirOrder) {
    EXPECT_EQ(NetworkSettingsModel::displayModeLabels(),
              QStringList({QStringLiteral("Both"), QStringLiteral("Download Only"), QStringLiteral("Upload Only")}));
    EXPECT_EQ(NetworkSettingsModel::themeLabels(),
              QStringList({QStringLiteral("Glass Effect"), QStringLiteral("Light"), QStringLiteral("Dark")}));
}

TEST_F(NetworkSettingsModelTest, aChangeFromElsewhereIsTold) {
    int changes = 0;
    QObject::connect(&model, &NetworkSettingsModel::changed, &model, [&] { ++changes; });
    store("speedTheme", "Glass Effect");
    EXPECT_EQ(changes, 1);
}

TEST(SpeedThemes, standInTheOrderOfTheChoicesWithTheirGreys) {
    for (std::size_t i = 0; i < speedThemes.size(); ++i) {
        EXPECT_EQ(speedThemes[i].theme, speedThemeTexts[i].choice);
        EXPECT_EQ(&traitsOf(speedThemes[i].theme), &speedThemes[i]);
    }
    EXPECT_EQ(white(0), QColor(Qt::black));
    EXPECT_EQ(white(1), QColor(Qt::white));
    EXPECT_EQ(traitsOf(SpeedTheme::glassEffect).arrows, QColor(184, 184, 184));
    EXPECT_FALSE(traitsOf(SpeedTheme::glassEffect).text.isValid());
    EXPECT_FALSE(traitsOf(SpeedTheme::glassEffect).background.isValid());
    EXPECT_EQ(traitsOf(SpeedTheme::white).text, QColor(26, 26, 26));
    EXPECT_EQ(traitsOf(SpeedTheme::white).background, QColor(237, 237, 237));
    EXPECT_EQ(traitsOf(SpeedTheme::white).arrows, QColor(85, 85, 85));
    EXPECT_EQ(traitsOf(SpeedTheme::black).text, QColor(235, 235, 235));
    EXPECT_EQ(traitsOf(SpeedTheme::black).background, QColor(31, 31, 31));
    EXPECT_EQ(traitsOf(SpeedTheme::black).arrows, QColor(184, 184, 184));
}

} // namespace
} // namespace tavrine
