#include "clipboard/ClipboardExperienceSettings.h"

#include "ManagerTest.h"

namespace tavrine {
namespace {

class ClipboardExperienceSettingsTest : public testing::Test {
protected:
    [[nodiscard]] ClipboardExperience atStart() { return ClipboardExperienceSettings(defaults).selectedExperience(); }
    void store(const QString &text) { defaults.set(experienceKey, text); }
    void migrate() { defaults.set(migrationKey, true); }

    const QString experienceKey = str("ClipboardExperience");
    const QString migrationKey = str("ClipboardSearchPrimaryMigrationV1");
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(str("defaults.plist")), time, center};
};

TEST_F(ClipboardExperienceSettingsTest, aFirstStartChoosesTheSearchPanelAndSaysSo) {
    EXPECT_EQ(atStart(), ClipboardExperience::search);
    EXPECT_EQ(defaults.get<QString>(experienceKey), str("search"));
    EXPECT_EQ(defaults.get<bool>(migrationKey), true);
}

TEST_F(ClipboardExperienceSettingsTest, theFirstStartOverridesAStoredClassic) {
    store(str("classic"));
    EXPECT_EQ(atStart(), ClipboardExperience::search);
    EXPECT_EQ(defaults.get<QString>(experienceKey), str("search"));
}

TEST_F(ClipboardExperienceSettingsTest, theSwitchHappensOnce) {
    EXPECT_EQ(atStart(), ClipboardExperience::search);
    store(str("classic"));
    EXPECT_EQ(atStart(), ClipboardExperience::classic);
}

TEST_F(ClipboardExperienceSettingsTest, aMigrationKeyThatIsNotTrueCountsAsUnset) {
    store(str("classic"));
    defaults.set(migrationKey, false);
    EXPECT_EQ(atStart(), ClipboardExperience::search);
    store(str("classic"));
    defaults.set(migrationKey, str("true"));
    EXPECT_EQ(atStart(), ClipboardExperience::search);
}

TEST_F(ClipboardExperienceSettingsTest, everyTextButClassicIsTheSearchPanel) {
    migrate();
    EXPECT_EQ(atStart(), ClipboardExperience::search);
    for (const char *text : {"search", "Classic", "", "classic "}) {
        store(str(text));
        EXPECT_EQ(atStart(), ClipboardExperience::search) << text;
        EXPECT_EQ(defaults.get<QString>(experienceKey), str(text)) << "reading writes nothing";
    }
    defaults.set(experienceKey, 1);
    EXPECT_EQ(atStart(), ClipboardExperience::search);
}

TEST_F(ClipboardExperienceSettingsTest, everyChangeIsWrittenAndPublished) {
    ClipboardExperienceSettings settings(defaults);
    int changes = 0;
    QObject::connect(&settings, &ClipboardExperienceSettings::selectedExperiencePublished, [&] { ++changes; });
    settings.setSelectedExperience(ClipboardExperience::classic);
    EXPECT_EQ(settings.selectedExperience(), ClipboardExperience::classic);
    EXPECT_EQ(defaults.get<QString>(experienceKey), str("classic"));
    settings.setSelectedExperience(ClipboardExperience::search);
    EXPECT_EQ(defaults.get<QString>(experienceKey), str("search"));
    EXPECT_EQ(changes, 2);
}

TEST(ClipboardExperienceTexts, leadBackToTheirCase) {
    const auto &table = clipboardExperienceTexts;
    EXPECT_EQ(textOf(table, ClipboardExperience::classic), str("classic"));
    EXPECT_EQ(textOf(table, ClipboardExperience::search), str("search"));
    EXPECT_EQ(choiceOf(table, str("classic")), ClipboardExperience::classic);
    EXPECT_EQ(choiceOf(table, str("search")), ClipboardExperience::search);
    EXPECT_EQ(choiceOf(table, str("other")), std::nullopt);
}

} // namespace
} // namespace tavrine
