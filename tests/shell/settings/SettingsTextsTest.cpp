// The words and marks that the pages of the settings show.

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/OutcomeView.h"
#include "look/Toggle.h"
#include "shell/settings/SettingsWindowTest.h"
#include "support/PaintedWords.h"

#include <QSet>

namespace tavrine {
namespace {

class SettingsTexts : public SettingsWindowTest {
protected:
    ~SettingsTexts() override { setTranslation(nullptr); }

    /// All that the page asks to have in the person's language while it is made and painted.
    [[nodiscard]] QSet<QString> asked(SidebarItem item) {
        QSet<QString> texts;
        setTranslation([&texts](const QString &words) {
            texts.insert(words);
            return words;
        });
        go(SidebarItem::about);
        texts.clear();
        go(item);
        (void)painted(*view().page());
        setTranslation(nullptr);
        return texts;
    }
    static std::vector<test::PaintedWord> painted(QWidget &widget) {
        test::WordsDevice device(widget.size());
        widget.render(&device, {}, {}, QWidget::DrawChildren);
        return device.painted();
    }
    void expectTexts(SidebarItem item, const QStringList &texts) {
        QStringList wanted;
        for (const QString &each : texts)
            wanted.append(inDesktopWords(each));
        const QSet<QString> shown = asked(item);
        for (const QString &each : std::as_const(wanted))
            EXPECT_TRUE(shown.contains(each)) << textOf(item).text << ": " << each.toStdString();
    }
    look::Control *subRow() {
        for (auto *row : sidebar().findChildren<look::Control *>())
            if (row->text() == text("Upload"))
                return row;
        return nullptr;
    }
};

TEST_F(SettingsTexts, ofGeneral) {
    expectTexts(SidebarItem::general,
                {text("General"), text("Launch at Login"), text("Start Tavrine automatically when you log in"),
                 text("Show in Menu Bar"), text("Hide or show the Tavrine menu bar icon")});
}

TEST_F(SettingsTexts, ofTheFeatures) {
    QStringList texts{text("Features"), text("Enable only what you use. Disabled features stop consuming memory.")};
    for (const char *each : {"Notch Shelf",         "Drop files under the notch for quick access",
                             "Snipping Tool + OCR", "Capture screen regions and extract text with OCR",
                             "Screen Recorder",     "Record screen regions with mic/system audio",
                             "Tavrine Editor",      "Standalone photo & screenshot editor window",
                             "Clipboard History",   "Track and access your clipboard history",
                             "Network Speed Meter", "Live upload and download speeds in the menu bar",
                             "Keep Awake",          "Prevent your Mac from sleeping on demand",
                             "Cleaning Mode",       "Lock the keyboard while cleaning your Mac",
                             "Lo-Fi Vibe Mode",     "Background lo-fi music to help you focus",
                             "Emoji Picker",        "Keyboard-first emoji search with a configurable shortcut"})
        texts.append(text(each));
    expectTexts(SidebarItem::features, texts);
}

TEST_F(SettingsTexts, ofTheRecorder) {
    expectTexts(SidebarItem::screenRecord,
                {text("Screen Record"), text("Record any region of your screen with a single shortcut."),
                 text("Enable or disable the global screen recorder"), text("Shortcut Type"),
                 text("Choose how you want to start recording"), text("Global Shortcut"), text("Double Option"),
                 text("Default is ⌘⇧6")});
    defaults.set(text("screenRecordHotkeyMode"), text("doubleOption"));
    expectTexts(SidebarItem::screenRecord, {text("Tap Option twice quickly to start recording")});
}

TEST_F(SettingsTexts, ofTheEmojiPicker) {
    expectTexts(SidebarItem::emoji, {text("Emoji Picker"), text("Search and copy emojis quickly from anywhere."),
                                     text("Enable or disable the global emoji picker"),
                                     text("Choose how you want to open the picker"), text("Default is ⌘⇧E")});
    defaults.set(text("emojiHotkeyMode"), text("doubleOption"));
    expectTexts(SidebarItem::emoji, {text("Tap Option twice quickly to open the picker")});
}

TEST_F(SettingsTexts, ofKeepAwake) {
    expectTexts(SidebarItem::keepAwake,
                {text("Keep Awake"), text("Menu bar indicator settings"), text("Menu Bar Indicator"),
                 text("Show active indicator"), text("Colour the menu bar icon when Keep Awake is on"),
                 text("Indicator colour"), text("Background colour applied to the menu bar icon"), text("Reset"),
                 text("Reset to default")});
}

TEST_F(SettingsTexts, ofPrivacy) {
    expectTexts(SidebarItem::privacy,
                {text("Privacy"), text("Your data stays on your Mac. Nothing is ever uploaded."),
                 text("All data is stored locally"),
                 text("Clipboard history, screenshots, and settings are stored only on this Mac and are never sent to "
                      "any server."),
                 text("Data Management"), text("Clear All Data"),
                 text("Permanently delete clipboard history and cached files"), text("Clear All"),
                 text("Privacy Policy")});
}

TEST_F(SettingsTexts, ofHome) {
    expectTexts(SidebarItem::home, {text("What's New"), text("View full changelog"), text("Join the Community"),
                                    text("Chat with other Tavrine users on Discord")});
}

TEST_F(SettingsTexts, ofTheClipboard) {
    expectTexts(SidebarItem::clipboard,
                {text("Choose how you want to open the clipboard"), text("Default is ⌘⇧V"), text("History Limit"),
                 text("Text-based clipboard history does not expire"), text("Max Items"),
                 text("Text-based clipboard items have no count limit"), text("Image Retention"),
                 text("Storage Location"),
                 text("Clipboard history is stored on disk, not in memory, allowing long-term search without "
                      "increasing RAM usage."),
                 text("Clear History"), text("Pinned and My Saved items will not be removed"), text("Export History"),
                 text("Save a plain-text copy of your clipboard"), text("Clear on Mac Restart"),
                 text("Wipe history when your Mac reboots")});
    const QString retention = text("%1 Days (max %2 images)")
                                  .arg(int(ClipboardManager::imageRetentionInterval / Seconds(24h)))
                                  .arg(ClipboardManager::maxImages);
    EXPECT_EQ(retention, text("7 Days (max 50 images)"));
    expectTexts(SidebarItem::clipboard, {retention});
}

TEST_F(SettingsTexts, withoutASelectionAFeatureIsAskedFor) {
    view().setSelection(std::nullopt);
    QStringList words;
    for (const test::PaintedWord &each : painted(*view().page()))
        words.append(each.text);
    EXPECT_TRUE(words.contains(text("Select a feature"))) << words.join(u'|').toStdString();
}

// What was done stands where its button was.

TEST_F(SettingsTexts, anExportIsToldOfInTheButtonsPlaceForTwoAndAHalfSeconds) {
    go(SidebarItem::clipboard);
    auto *button = find<look::Button>("Export");
    ASSERT_TRUE(button);
    const auto *outcome = qobject_cast<look::OutcomeView *>(button->parentWidget());
    ASSERT_TRUE(outcome);
    button->click();
    EXPECT_EQ(outcome->accessibleName(), text("Exported"));
    EXPECT_FALSE(button->isVisibleTo(view().page()));
    quietly([this] { time.advance(2499ms); });
    EXPECT_EQ(outcome->accessibleName(), text("Exported"));
    quietly([this] { time.advance(1ms); });
    EXPECT_EQ(outcome->accessibleName(), QString());
    EXPECT_TRUE(button->isVisibleTo(view().page()));
}

TEST_F(SettingsTexts, aClearingIsToldOfInTheButtonsPlaceForThreeSeconds) {
    EXPECT_STREQ(look::OutcomeView::doneSymbol, "checkmark.circle.fill");
    go(SidebarItem::privacy);
    auto *button = find<look::Button>("Clear All");
    ASSERT_TRUE(button);
    const auto *outcome = qobject_cast<look::OutcomeView *>(button->parentWidget());
    ASSERT_TRUE(outcome);
    desktop.alerts().answerNextWithFirstButton();
    button->click();
    EXPECT_EQ(outcome->accessibleName(), text("Cleared"));
    EXPECT_FALSE(button->isVisibleTo(view().page()));
    quietly([this] { time.advance(2999ms); });
    EXPECT_EQ(outcome->accessibleName(), text("Cleared"));
    quietly([this] { time.advance(1ms); });
    EXPECT_EQ(outcome->accessibleName(), QString());
}

TEST_F(SettingsTexts, aLoginItemThatTheDesktopDoesNotTakeAwayLeavesItsSwitchOn) {
    desktop.loginItem().setEnabledOutside(true);
    go(SidebarItem::general);
    auto *toggle = find<look::Toggle>("Launch at Login");
    ASSERT_TRUE(toggle && toggle->isChecked());
    desktop.loginItem().failNext();
    toggle->click();
    EXPECT_TRUE(toggle->isChecked());
    toggle->click();
    EXPECT_FALSE(toggle->isChecked());
    desktop.loginItem().failNext();
    toggle->click();
    EXPECT_FALSE(toggle->isChecked());
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
}

// The side bar.

TEST(SidebarTexts, eachPageHasItsTitleAndItsSymbol) {
    const std::vector<std::pair<std::string, std::string>> expected{{"Home", "house.fill"},
                                                                    {"General", "gearshape.fill"},
                                                                    {"Modular", "slider.horizontal.3"},
                                                                    {"Layout", "square.grid.2x2.fill"},
                                                                    {"Clipboard", "doc.on.clipboard"},
                                                                    {"Emoji Picker", "face.smiling"},
                                                                    {"Network Speed", "network"},
                                                                    {"Keep Awake", "eye.fill"},
                                                                    {"Lo-Fi Vibe", "headphones"},
                                                                    {"Screenshot", "viewfinder.circle.fill"},
                                                                    {"Screen Record", "record.circle.fill"},
                                                                    {"Cloud Upload", "icloud.and.arrow.up.fill"},
                                                                    {"Privacy", "lock.shield.fill"},
                                                                    {"About", "info.circle.fill"}};
    std::vector<std::pair<std::string, std::string>> found;
    for (const SidebarItemText &each : sidebarItemTexts)
        found.emplace_back(each.text, each.symbol);
    EXPECT_EQ(found, expected);
}

TEST(SidebarTexts, theGroupsEndWhereTheirHeadingsSay) {
    using enum SidebarItem;
    const auto itemsOf = [](std::size_t group) {
        return std::vector<SidebarItem>(sidebarGroups[group].items.begin(), sidebarGroups[group].items.end());
    };
    EXPECT_THAT(itemsOf(0), ElementsAre(home, general, features, layout));
    EXPECT_THAT(itemsOf(1), ElementsAre(snipper, cloudUpload, screenRecord, clipboard, emoji, network,
                                        SidebarItem::keepAwake, lofi));
    EXPECT_THAT(itemsOf(2), ElementsAre(privacy, about));
}

TEST_F(SettingsTexts, theSubRowIsADotASmallerTitleAndABoldBadgeSixPointsApart) {
    look::Control *row = subRow();
    ASSERT_TRUE(row);
    const auto words = painted(*row);
    ASSERT_EQ(words.size(), 2U);
    EXPECT_EQ(words[0].text, text("Upload"));
    EXPECT_DOUBLE_EQ(words[0].pixels, 12.5);
    EXPECT_EQ(words[1].text, text("NEW"));
    EXPECT_DOUBLE_EQ(words[1].pixels, 8);
    EXPECT_EQ(words[1].font.weight(), QFont::Bold);

    const QImage image = row->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QRgb ground = image.pixel(20, row->height() / 2);
    QRect dot;
    for (int x = 0; x < int(words[0].place.left()) - 1; ++x)
        for (int y = 0; y < image.height(); ++y)
            if (image.pixel(x, y) != ground)
                dot |= QRect(x, y, 1, 1);
    EXPECT_EQ(dot.size(), QSize(4, 4));
    EXPECT_DOUBLE_EQ(words[0].place.left() - (dot.left() + dot.width()), 6);
    int plate = int(words[0].place.right()) + 2;
    while (plate < image.width() && image.pixel(plate, row->height() / 2) == ground)
        ++plate;
    EXPECT_NEAR(plate - words[0].place.right(), 6, 1);
}

} // namespace
} // namespace tavrine
