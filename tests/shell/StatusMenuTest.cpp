#include "ShellTest.h"
#include "shell/StatusIcon.h"

namespace tavrine {
namespace {

class StatusMenuTest : public ShellTest {
protected:
    void SetUp() override {
        construct();
        menu = std::make_unique<StatusMenu>(
            defaults, delegate->shell().flags(), experience(),
            StatusMenu::Actions{[this] { done += text("clipboard "); }, [this] { done += text("emoji "); },
                                [this] { done += text("colour "); }, [this] { done += text("updates "); },
                                [this] { done += text("quit "); }});
    }

    ClipboardExperienceSettings &experience() { return delegate->shell().experienceSettings(); }

    std::unique_ptr<StatusMenu> menu;
    QString done;
};

TEST_F(StatusMenuTest, theEntriesStandInTheirOrder) {
    std::vector<StatusMenuItem> items;
    for (const StatusMenuEntry &each : menu->entries())
        items.push_back(each.item);
    using enum StatusMenuItem;
    EXPECT_THAT(items, ElementsAre(separator, clipboard, emojiPicker, colorPicker, separator, checkForUpdates,
                                   separator, quit));
    EXPECT_EQ(menu->entry(emojiPicker).title, text("Emoji Picker"));
    EXPECT_EQ(menu->entry(checkForUpdates).title, text("Check for Updates…"));
    EXPECT_EQ(menu->entry(colorPicker).title, text("Colour Picker"));
    EXPECT_EQ(menu->entry(quit).title, text("Quit"));
    EXPECT_EQ(label(menu->entry(quit).keyEquivalent), text("⌘Q"));
    EXPECT_EQ(label(menu->entry(checkForUpdates).keyEquivalent), QString());
}

TEST_F(StatusMenuTest, theClipboardEntryIsNamedAfterTheChosenPanel) {
    EXPECT_EQ(menu->entry(StatusMenuItem::clipboard).title, text("Clipboard Search"));
    experience().setSelectedExperience(ClipboardExperience::classic);
    menu->refreshClipboardMenuItem();
    EXPECT_EQ(menu->entry(StatusMenuItem::clipboard).title, text("Classic Clipboard"));
}

TEST_F(StatusMenuTest, theKeysAreTheStoredOnesInUpperCase) {
    EXPECT_EQ(label(menu->entry(StatusMenuItem::clipboard).keyEquivalent), text("⌘⇧V"));
    EXPECT_EQ(label(menu->entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧E"));
    for (const auto &[stored, shown] : {std::pair{"k", "⌘⇧K"}, {"", "⌘⇧V"}, {"7", "⌘⇧7"}, {"xyz", "⌘⇧X"}}) {
        defaults.set(text("HotkeyCharacter"), text(stored));
        menu->refreshClipboardMenuItem();
        EXPECT_EQ(label(menu->entry(StatusMenuItem::clipboard).keyEquivalent), text(shown)) << stored;
    }
    defaults.set(text("emojiHotkeyKey"), text(""));
    menu->refreshEmojiMenuItem();
    EXPECT_EQ(label(menu->entry(StatusMenuItem::emojiPicker).keyEquivalent), text("⌘⇧E"));
}

TEST_F(StatusMenuTest, anotherModeThanCommandShiftHasNoKey) {
    for (const char *mode : {"doubleOption", "nonsense"}) {
        defaults.set(text("clipboardHotkeyMode"), text(mode));
        defaults.set(text("emojiHotkeyMode"), text(mode));
        menu->refreshClipboardMenuItem();
        menu->refreshEmojiMenuItem();
        EXPECT_EQ(menu->entry(StatusMenuItem::clipboard).keyEquivalent, KeyEquivalent{});
        EXPECT_EQ(menu->entry(StatusMenuItem::emojiPicker).keyEquivalent, KeyEquivalent{});
    }
}

TEST_F(StatusMenuTest, entriesAreEnabledByTheirFlags) {
    set(Feature::clipboardHistory, false);
    menu->refreshClipboardMenuItem();
    menu->refreshEmojiMenuItem();
    EXPECT_FALSE(menu->entry(StatusMenuItem::clipboard).isEnabled);
    EXPECT_TRUE(menu->entry(StatusMenuItem::emojiPicker).isEnabled);
    set(Feature::emojiPicker, false);
    menu->refreshEmojiMenuItem();
    EXPECT_FALSE(menu->entry(StatusMenuItem::emojiPicker).isEnabled);
}

TEST_F(StatusMenuTest, theIconIsColouredOnlyWhileAwakeAndWanted) {
    EXPECT_TRUE(statusIcon(true, defaults).isTemplate);
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    EXPECT_TRUE(statusIcon(false, defaults).isTemplate);
    const StatusImage pill = statusIcon(true, defaults);
    EXPECT_FALSE(pill.isTemplate);
    EXPECT_EQ(QSize(pill.width, pill.height), QSize(28, 22));
    EXPECT_EQ(pill.draw({.scale = 2.0}).size(), QSize(56, 44));
    EXPECT_EQ(pill.draw({.scale = 1.0}).pixelColor(3, 11), QColor(0x00, 0x7a, 0xff));
    EXPECT_EQ(pill.draw({.scale = 1.0}).pixelColor(0, 0).alpha(), 0);
}

TEST_F(StatusMenuTest, aColourThatDoesNotParseIsTheSystemBlue) {
    defaults.set(text("keepAwakeShowBgIndicator"), true);
    const auto color = [&](const char *stored) {
        defaults.set(text("keepAwakeBgColor"), text(stored));
        return statusIcon(true, defaults).draw({.scale = 1.0}).pixelColor(3, 11);
    };
    EXPECT_EQ(color("#FF8000"), QColor(0xff, 0x80, 0x00));
    EXPECT_EQ(color("#ff8000"), QColor(0xff, 0x80, 0x00));
    for (const char *bad : {"", "red", "#FFF", "FF8000", "#FF800", "#FF80000", "#GG8000"})
        EXPECT_EQ(color(bad), QColor(0x00, 0x7a, 0xff)) << bad;
}

TEST_F(StatusMenuTest, theTemplateIsBlackOnClearInEachScale) {
    const StatusImage icon = statusIcon(false, defaults);
    for (const double scale : {1.0, 1.5, 2.0}) {
        const QImage image = icon.draw({.scale = scale});
        EXPECT_EQ(image.width(), static_cast<int>(18 * scale));
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                EXPECT_TRUE(pixel.alpha() == 0 || (pixel.red() == 0 && pixel.green() == 0 && pixel.blue() == 0));
                opaque += pixel.alpha() > 127 ? 1 : 0;
            }
        }
        EXPECT_GT(opaque, image.width() * image.height() / 10);
    }
}

TEST_F(StatusMenuTest, theFirstStartChoosesTheSearchPanelWhateverWasStored) {
    defaults.remove(text("ClipboardSearchPrimaryMigrationV1"));
    defaults.set(text("ClipboardExperience"), text("classic"));
    EXPECT_EQ(ClipboardExperienceSettings(defaults).selectedExperience(), ClipboardExperience::search);
    EXPECT_EQ(defaults.get<QString>(text("ClipboardExperience")), text("search"));
    EXPECT_EQ(defaults.get<bool>(text("ClipboardSearchPrimaryMigrationV1")), true);
}

TEST_F(StatusMenuTest, afterThatTheStoredPanelStands) {
    for (const auto &[stored, expected] : {std::pair{"classic", ClipboardExperience::classic},
                                           {"search", ClipboardExperience::search},
                                           {"nonsense", ClipboardExperience::search}}) {
        defaults.set(text("ClipboardExperience"), text(stored));
        EXPECT_EQ(ClipboardExperienceSettings(defaults).selectedExperience(), expected) << stored;
    }
    experience().setSelectedExperience(ClipboardExperience::classic);
    EXPECT_EQ(defaults.get<QString>(text("ClipboardExperience")), text("classic"));
}

} // namespace
} // namespace tavrine
