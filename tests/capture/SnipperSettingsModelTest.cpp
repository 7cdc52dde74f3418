#include "capture/SnipperSettingsModel.h"

#include "SnipTest.h"

namespace tavrine {
namespace {

class SnipperSettingsModelTest : public SnipTest {
protected:
    SnipperSettingsModel model{{defaults, center, panels, folders}};
};

TEST_F(SnipperSettingsModelTest, everythingIsOffAtFirst) {
    EXPECT_FALSE(model.isSoundMuted());
    EXPECT_FALSE(model.savesWithoutAsking());
    EXPECT_EQ(model.saveFolder(), documents());
}

TEST_F(SnipperSettingsModelTest, theSwitchesAreThePreferences) {
    model.setSoundMuted(true);
    EXPECT_EQ(defaults.get<bool>(text("snipMuteSound")), true);
    model.setSavesWithoutAsking(true);
    EXPECT_EQ(defaults.get<bool>(text("snipUseSaveDefault")), true);
    model.setSoundMuted(false);
    EXPECT_EQ(defaults.get<bool>(text("snipMuteSound")), false);
}

TEST_F(SnipperSettingsModelTest, theColourFormatIsStoredAsItsLabelAndAnUnknownOneShowsAsHex) {
    model.setColorFormat(ColorFormat::rgb);
    EXPECT_EQ(defaults.get<QString>(text("colorPickerFormat")), text("RGB (255, 255, 255)"));
    defaults.set(text("colorPickerFormat"), text("nonsense"));
    EXPECT_EQ(model.colorFormat(), ColorFormat::hex);
}

TEST_F(SnipperSettingsModelTest, thePageFollowsWhoeverChangesThePreferences) {
    int changes = 0;
    QObject::connect(&model, &SnipperSettingsModel::changed, &model, [&] { ++changes; });
    defaults.set(text("snipSaveDirectoryPath"), text("/elsewhere"));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(model.saveFolder(), text("/elsewhere"));
}

TEST_F(SnipperSettingsModelTest, withoutDocumentsTheFolderIsToldToTheLetter) {
    folders.documents.clear();
    EXPECT_EQ(SnipperSettingsModel({defaults, center, panels, folders}).saveFolder(), text("~/Documents/tavrine"));
}

TEST_F(SnipperSettingsModelTest, aFolderIsChosenInAPanel) {
    model.changeSaveFolder();
    panels.choose(text("/chosen"));
    time.runPending();
    EXPECT_EQ(model.saveFolder(), text("/chosen"));
    model.changeSaveFolder();
    EXPECT_THAT(panels.openPanels(), ElementsAre(OpenPanel{.title = text("Choose Save Folder"),
                                                           .prompt = text("Select"),
                                                           .directory = {},
                                                           .filter = {},
                                                           .choosesDirectories = true},
                                                 OpenPanel{.title = text("Choose Save Folder"),
                                                           .prompt = text("Select"),
                                                           .directory = text("/chosen"),
                                                           .filter = {},
                                                           .choosesDirectories = true}));
}

TEST_F(SnipperSettingsModelTest, aCancelledPanelKeepsTheFolder) {
    defaults.set(text("snipSaveDirectoryPath"), text("/mine"));
    model.changeSaveFolder();
    panels.cancel();
    time.runPending();
    EXPECT_EQ(model.saveFolder(), text("/mine"));
}

TEST_F(SnipperSettingsModelTest, aPageThatGoesWhileItsPanelIsOpenChangesNothing) {
    {
        SnipperSettingsModel other({defaults, center, panels, folders});
        other.changeSaveFolder();
    }
    panels.choose(text("/chosen"));
    time.runPending();
    EXPECT_FALSE(defaults.contains(text("snipSaveDirectoryPath")));
}

TEST_F(SnipperSettingsModelTest, resetEmptiesTheFolder) {
    defaults.set(text("snipSaveDirectoryPath"), text("/mine"));
    model.resetSaveFolder();
    EXPECT_EQ(defaults.get<QString>(text("snipSaveDirectoryPath")), QString());
    EXPECT_EQ(model.saveFolder(), documents());
}

} // namespace
} // namespace tavrine
