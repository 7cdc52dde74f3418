// What the pages of the settings know and do, without their views.

#include "clipboard/DatabaseFixture.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "shell/ShellTest.h"
#include "shell/settings/AbilitiesView.h"
#include "shell/settings/ClearAndDisable.h"
#include "shell/settings/ClipboardSettingsModel.h"
#include "shell/settings/FeatureRowModel.h"
#include "shell/settings/GeneralSettingsModel.h"
#include "shell/settings/HomeDashboardView.h"
#include "shell/settings/PrivacySettingsModel.h"

#include <QFile>

namespace tavrine {
namespace {

class SettingsModels : public ShellTest {
protected:
    void SetUp() override { launch(); }

    GeneralSettingsModel general() { return GeneralSettingsModel({defaults, center, desktop.loginItem(), manager()}); }
    HomeDashboardModel home() { return HomeDashboardModel(homePorts()); }
    HomeDashboardModel::Ports homePorts() {
        return {defaults,
                desktop.access(),
                time,
                desktop.urlOpener(),
                text("/share"),
                desktop.desktopAbilities(),
                [this]() -> Pasteboard & { return desktop.pasteboard(); }};
    }
    ClipboardSettingsModel clipboard() {
        return ClipboardSettingsModel({manager(), delegate->shell().experienceSettings(), defaults, center, time,
                                       desktop.alerts(), desktop.filePanels(), desktop.workspace(),
                                       desktop.applicationCatalog()});
    }
    void add(const char *content, bool isPinned = false, const std::optional<QString> &image = std::nullopt) {
        database.save({.id = QUuid::createUuid(),
                       .content = text(content),
                       .date = time.now(),
                       .isPinned = isPinned,
                       .isSaved = false,
                       .imageFileName = image});
        manager().reloadHistory();
    }
};

// General.

TEST_F(SettingsModels, launchAtLoginIsTheDesktopsItem) {
    desktop.loginItem().setEnabledOutside(true);
    GeneralSettingsModel model = general();
    EXPECT_TRUE(model.launchAtLogin());
    model.setLaunchAtLogin(false);
    EXPECT_FALSE(desktop.loginItem().isEnabled());
    EXPECT_FALSE(manager().launchAtLogin());
    model.setLaunchAtLogin(true);
    EXPECT_TRUE(desktop.loginItem().isEnabled());
    EXPECT_TRUE(manager().launchAtLogin());
}

TEST_F(SettingsModels, aLoginItemThatTheDesktopRefusesGoesBack) {
    GeneralSettingsModel model = general();
    desktop.loginItem().failNext();
    int changes = 0;
    QObject::connect(&model, &GeneralSettingsModel::changed, &model, [&] { ++changes; });
    model.setLaunchAtLogin(true);
    EXPECT_FALSE(model.launchAtLogin());
    EXPECT_EQ(changes, 1) << "the switch is told to go back";
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
}

TEST_F(SettingsModels, aLoginItemThatTheDesktopDoesNotTakeAwayStaysOn) {
    desktop.loginItem().setEnabledOutside(true);
    GeneralSettingsModel model = general();
    desktop.loginItem().failNext();
    int changes = 0;
    QObject::connect(&model, &GeneralSettingsModel::changed, &model, [&] { ++changes; });
    model.setLaunchAtLogin(false);
    EXPECT_TRUE(model.launchAtLogin());
    EXPECT_EQ(changes, 1) << "the switch is told to go back";
    EXPECT_THAT(desktop.alerts().shown(), IsEmpty());
}

TEST_F(SettingsModels, hidingTheTrayItemTakesEffectAtOnceAndLeavesTheWindowOpen) {
    delegate->openSettings();
    GeneralSettingsModel model = general();
    EXPECT_TRUE(desktop.statusItem().isVisible());
    model.setShowInMenuBar(false);
    time.advance(0s);
    EXPECT_FALSE(desktop.statusItem().isVisible());
    EXPECT_TRUE(window(LargeWindows::Kind::settings)->isVisible());
    model.setShowInMenuBar(true);
    time.advance(0s);
    EXPECT_TRUE(desktop.statusItem().isVisible());
}

TEST_F(SettingsModels, aPreferenceOfAnotherTypeCountsAsItsDefaultOnAnOpenPage) {
    GeneralSettingsModel model = general();
    defaults.set(text("showInMenuBar"), text("no"));
    EXPECT_TRUE(model.showInMenuBar());
}

// Features.

TEST_F(SettingsModels, aFeatureThatIsSwitchedOnSaysThatItIsStartingForTwoAndAHalfSeconds) {
    FeatureRowModel row(Feature::loFi, delegate->shell().flags(), time);
    row.setOn(false);
    EXPECT_FALSE(row.isStarting());
    row.setOn(true);
    EXPECT_TRUE(delegate->shell().flags().isOn(Feature::loFi)) << "at once";
    time.advance(2499ms);
    EXPECT_TRUE(row.isStarting());
    time.advance(1ms);
    EXPECT_FALSE(row.isStarting());
}

TEST_F(SettingsModels, aFeatureThatIsSwitchedOffSaysNothing) {
    FeatureRowModel row(Feature::loFi, delegate->shell().flags(), time);
    row.setOn(false);
    row.setOn(true);
    row.setOn(false);
    EXPECT_FALSE(row.isStarting());
}

TEST_F(SettingsModels, aFeatureThatIsStartedAnewIsStartingForItsWholeTime) {
    FeatureRowModel row(Feature::loFi, delegate->shell().flags(), time);
    row.setOn(false);
    row.setOn(true);
    time.advance(2s);
    row.setOn(false);
    row.setOn(true);
    time.advance(2499ms);
    EXPECT_TRUE(row.isStarting());
    time.advance(1ms);
    EXPECT_FALSE(row.isStarting());
}

TEST_F(SettingsModels, aFeatureThatIsSwitchedOffElsewhereIsNotStartingAnyMore) {
    FeatureRowModel row(Feature::loFi, delegate->shell().flags(), time);
    row.setOn(false);
    row.setOn(true);
    set(Feature::loFi, false);
    EXPECT_FALSE(row.isStarting());
}

// Clearing.

TEST_F(SettingsModels, clearAndDisableAsksClearsTellsAndSwitchesTheHistoryOff) {
    add("one");
    add("kept", true);
    ClearAndDisable flow({desktop.alerts(), manager(), delegate->shell().flags(), time});
    desktop.alerts().setWhileShown([&] { EXPECT_TRUE(flow.showClipboardClearConfirm()); });
    desktop.alerts().answerNextWithFirstButton();
    flow.ask();
    EXPECT_THAT(desktop.alerts().shown(),
                ElementsAre(Alert{text("Clear Clipboard Memory?"),
                                  text("All saved texts and images currently stored in Tavrine will be permanently "
                                       "deleted. This cannot be undone."),
                                  {text("Clear & Disable"), text("Cancel")}}));
    EXPECT_EQ(database.counts().total, 1) << "what is pinned stays";
    EXPECT_FALSE(delegate->shell().flags().isOn(Feature::clipboardHistory));
    EXPECT_TRUE(flow.showMemoryCleaningOverlay());
    time.advance(2399ms);
    EXPECT_TRUE(flow.showMemoryCleaningOverlay());
    time.advance(1ms);
    EXPECT_FALSE(flow.showMemoryCleaningOverlay());
    EXPECT_FALSE(FeatureRowModel(Feature::clipboardHistory, delegate->shell().flags(), time).isOn());
}

TEST_F(SettingsModels, clearAndDisableTellsOfTheClearingBeforeItSwitchesTheHistoryOff) {
    add("one");
    ClearAndDisable flow({desktop.alerts(), manager(), delegate->shell().flags(), time});
    std::vector<std::string> steps;
    QObject::connect(&flow, &ClearAndDisable::changed, &flow, [&] {
        if (flow.showMemoryCleaningOverlay())
            steps.push_back(database.counts().total == 0 ? "told, cleared" : "told");
    });
    QObject::connect(&delegate->shell().flags(), &FeatureFlags::published, &flow, [&](Feature feature, bool) {
        steps.push_back(feature == Feature::clipboardHistory ? "off" : "?");
    });
    desktop.alerts().answerNextWithFirstButton();
    flow.ask();
    EXPECT_THAT(steps, ElementsAre("told, cleared", "off"));
}

TEST_F(SettingsModels, aSecondClearingIsToldOfAsLongAsTheFirst) {
    ClearAndDisable flow({desktop.alerts(), manager(), delegate->shell().flags(), time});
    desktop.alerts().answerNextWithFirstButton();
    flow.ask();
    time.advance(2s);
    set(Feature::clipboardHistory, true);
    desktop.alerts().answerNextWithFirstButton();
    flow.ask();
    time.advance(2399ms);
    EXPECT_TRUE(flow.showMemoryCleaningOverlay());
    time.advance(1ms);
    EXPECT_FALSE(flow.showMemoryCleaningOverlay());
}

TEST_F(SettingsModels, clearAndDisableThatIsCancelledChangesNothing) {
    add("one");
    ClearAndDisable flow({desktop.alerts(), manager(), delegate->shell().flags(), time});
    flow.ask();
    EXPECT_FALSE(flow.showClipboardClearConfirm());
    EXPECT_FALSE(flow.showMemoryCleaningOverlay());
    EXPECT_EQ(database.counts().total, 1);
    EXPECT_TRUE(delegate->shell().flags().isOn(Feature::clipboardHistory));
}

TEST_F(SettingsModels, clearAllDataSaysClearedForThreeSeconds) {
    add("one");
    PrivacySettingsModel model({desktop.alerts(), manager(), time, desktop.urlOpener(), text("/share")});
    model.clearAll();
    EXPECT_FALSE(model.cleared()) << "cancelled";
    EXPECT_EQ(database.counts().total, 1);
    desktop.alerts().answerNextWithFirstButton();
    model.clearAll();
    EXPECT_EQ(desktop.alerts().shown().back(),
              (Alert{text("Clear All Data?"),
                     text("This permanently deletes your clipboard history and cannot be undone."),
                     {text("Clear All Data"), text("Cancel")}}));
    EXPECT_EQ(database.counts().total, 0);
    EXPECT_THAT(manager().history(), IsEmpty());
    time.advance(2999ms);
    EXPECT_TRUE(model.cleared());
    time.advance(1ms);
    EXPECT_FALSE(model.cleared());
}

TEST_F(SettingsModels, aClearingThatAnotherProgramHoldsUpIsToldWhenItIsDone) {
    add("one");
    Outside other(ShellTest::home.filePath(text("data/Tavrine/clipboard.db")));
    ASSERT_TRUE(other.run("BEGIN IMMEDIATE"));
    PrivacySettingsModel model({desktop.alerts(), manager(), time, desktop.urlOpener(), text("/share")});
    ClearAndDisable flow({desktop.alerts(), manager(), delegate->shell().flags(), time});
    desktop.alerts().answerNextWithFirstButton();
    model.clearAll();
    desktop.alerts().answerNextWithFirstButton();
    flow.ask();
    EXPECT_THAT(manager().history(), IsEmpty());
    EXPECT_FALSE(delegate->shell().flags().isOn(Feature::clipboardHistory));
    time.advance(7s);
    EXPECT_FALSE(model.cleared()) << "its rows would come back with the next start";
    EXPECT_FALSE(flow.showMemoryCleaningOverlay());
    ASSERT_TRUE(other.run("COMMIT"));
    time.advance(0.5s); // the fourth look
    EXPECT_TRUE(model.cleared());
    EXPECT_TRUE(flow.showMemoryCleaningOverlay());
    EXPECT_EQ(database.counts().total, 0);
    time.advance(3s);
    EXPECT_FALSE(model.cleared());
    EXPECT_FALSE(flow.showMemoryCleaningOverlay());
}

TEST_F(SettingsModels, aPageThatIsGoneHearsOfNoClearing) {
    add("one");
    Outside other(ShellTest::home.filePath(text("data/Tavrine/clipboard.db")));
    ASSERT_TRUE(other.run("BEGIN IMMEDIATE"));
    {
        PrivacySettingsModel model({desktop.alerts(), manager(), time, desktop.urlOpener(), text("/share")});
        desktop.alerts().answerNextWithFirstButton();
        model.clearAll();
    }
    ASSERT_TRUE(other.run("COMMIT"));
    time.advance(5s);
    EXPECT_EQ(database.counts().total, 0);
}

TEST_F(SettingsModels, theHistoryIsClearedWhileAPanelShowsIt) {
    add("one");
    delegate->onHotKeyPressed();
    time.advance(10ms);
    PrivacySettingsModel model({desktop.alerts(), manager(), time, desktop.urlOpener(), text("/share")});
    desktop.alerts().answerNextWithFirstButton();
    model.clearAll();
    time.advance(1s);
    EXPECT_THAT(manager().history(), IsEmpty());
}

// Home.

TEST_F(SettingsModels, aPermissionIsReadAgainOnceASecondAfterAllow) {
    desktop.access().setAccessibilityTrusted(false);
    HomeDashboardModel model = home();
    EXPECT_TRUE(model.needsPermissions());
    model.allow(HomeDashboardModel::permissionRows[0]);
    EXPECT_EQ(desktop.urlOpener().opened().back(),
              QUrl(text("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility")));
    time.advance(999ms);
    desktop.access().setAccessibilityTrusted(true);
    EXPECT_FALSE(model.isTrusted());
    time.advance(1ms);
    EXPECT_TRUE(model.isTrusted());
}

TEST_F(SettingsModels, aGrantAfterTheSecondReadIsSeenByANewPageOnly) {
    desktop.access().setScreenCaptureGranted(false);
    HomeDashboardModel model = home();
    model.allow(HomeDashboardModel::permissionRows[1]);
    time.advance(1s);
    desktop.access().setScreenCaptureGranted(true);
    time.advance(60s);
    EXPECT_FALSE(model.screenRecordingGranted());
    EXPECT_TRUE(home().screenRecordingGranted());
}

/// The heading of what is missing, as far as it shows, and what each button that shows there is for.
QStringList missingIn(const HomeDashboardView &view) {
    QStringList words;
    for (const auto *label : view.findChildren<look::Label *>())
        if (label->text() == text("Permissions needed") && label->isVisibleTo(&view))
            words << label->text();
    for (const auto *button : view.findChildren<QAbstractButton *>())
        if (button->text() == text("Allow") && button->isVisibleTo(&view))
            words << button->accessibleDescription();
    return words;
}

TEST_F(SettingsModels, eachPermissionThatIsMissingHasItsRowAndTheHeadingStandsOnlyOverRows) {
    const QString heading = text("Permissions needed");
    const auto missing = [this](bool isTrusted, bool isGranted) {
        desktop.access().setAccessibilityTrusted(isTrusted);
        desktop.access().setScreenCaptureGranted(isGranted);
        return missingIn(HomeDashboardView(homePorts(), text("2.3.1")));
    };
    EXPECT_THAT(missing(false, false), ElementsAre(heading, text("Accessibility"), text("Screen Recording")));
    EXPECT_THAT(missing(false, true), ElementsAre(heading, text("Accessibility")));
    EXPECT_THAT(missing(true, false), ElementsAre(heading, text("Screen Recording")));
    EXPECT_THAT(missing(true, true), IsEmpty());
}

TEST_F(SettingsModels, aPermissionThatIsGivenTakesItsRowWithItASecondAfterAllow) {
    desktop.access().setAccessibilityTrusted(false);
    desktop.access().setScreenCaptureGranted(false);
    HomeDashboardView view(homePorts(), text("2.3.1"));
    desktop.access().setAccessibilityTrusted(true);
    time.advance(60s); // the page does not look by itself
    EXPECT_EQ(missingIn(view).size(), 3);
    for (auto *button : view.findChildren<QAbstractButton *>())
        if (button->text() == text("Allow") && button->accessibleDescription() == text("Accessibility"))
            button->click();
    time.advance(1s);
    EXPECT_THAT(missingIn(view), ElementsAre(text("Permissions needed"), text("Screen Recording")));
}

// What this desktop allows.

QStringList wordsOf(const QWidget &view) {
    QStringList words;
    for (const auto *label : view.findChildren<look::Label *>())
        words << label->text();
    for (const auto *row : view.findChildren<look::SettingsRow *>())
        if (!row->isHidden())
            words << row->note();
    return words;
}

const AbilityReport noHotKeys{.ability = Ability::hotKeys,
                              .state = AbilityState::missing,
                              .reason = QStringLiteral("No keys here."),
                              .step = QStringLiteral("Copy these lines."),
                              .linesToCopy = QStringLiteral("bindsym x\nbindsym y\n")};

TEST_F(SettingsModels, aDesktopThatAllowsEverythingHasOneRowForIt) {
    HomeDashboardModel model = home();
    const AbilitiesView view(model);
    EXPECT_THAT(wordsOf(view), ElementsAre(text("All that Tavrine does works on this desktop")));
}

TEST_F(SettingsModels, whatTheDesktopDoesNotAllowIsShownWithItsReasonAndItsStep) {
    desktop.desktopAbilities().set(noHotKeys);
    desktop.desktopAbilities().set({.ability = Ability::tray,
                                    .state = AbilityState::limited,
                                    .reason = text("Squares only."),
                                    .step = {},
                                    .linesToCopy = {}});
    HomeDashboardModel model = home();
    const AbilitiesView view(model);
    const QStringList words = wordsOf(view);
    EXPECT_EQ(words.count(text("There")), 6);
    EXPECT_EQ(words.count(text("Missing")), 1);
    EXPECT_EQ(words.count(text("Limited")), 1);
    EXPECT_THAT(words, Contains(text("No keys here. Copy these lines.")));
    EXPECT_THAT(words, Contains(text("Squares only.")));
}

TEST_F(SettingsModels, theLinesOfAStepAreCopiedWhole) {
    desktop.desktopAbilities().set(noHotKeys);
    HomeDashboardModel model = home();
    const AbilitiesView view(model);
    const auto buttons = view.findChildren<look::Button *>();
    ASSERT_EQ(buttons.size(), 1);
    buttons.first()->click();
    EXPECT_EQ(desktop.pasteboard().string(), noHotKeys.linesToCopy);
    EXPECT_EQ(buttons.first()->text(), text("Copied"));
}

TEST_F(SettingsModels, whatTheDesktopAllowsIsReadAnewWhenTheModelChanges) {
    HomeDashboardModel model = home();
    const AbilitiesView view(model);
    desktop.desktopAbilities().set(noHotKeys);
    Q_EMIT model.changed();
    EXPECT_THAT(wordsOf(view), Contains(text("No keys here. Copy these lines.")));
}

// The banner.

TEST_F(SettingsModels, aDismissedBannerStaysAway) {
    HomeDashboardModel model = home();
    EXPECT_TRUE(model.showsBanner());
    model.dismissBanner();
    EXPECT_FALSE(model.showsBanner());
    EXPECT_FALSE(home().showsBanner());
    EXPECT_EQ(defaults.get<bool>(text("discordBannerDismissed")), true);
}

TEST_F(SettingsModels, aLinkWithoutAnAddressLeadsToAPageOfThePackage) {
    home().openChangelog();
    EXPECT_EQ(desktop.urlOpener().opened().back(), QUrl(text("file:///share/pages/changelog.html")));
    home().openCommunity();
    EXPECT_EQ(desktop.urlOpener().opened().back(), QUrl(text("file:///share/pages/support.html#others")));
}

// Clipboard.

TEST_F(SettingsModels, theStatisticsFollowTheHistory) {
    ClipboardSettingsModel model = clipboard();
    const auto counts = [&model] {
        std::vector<int> numbers;
        for (const auto &figure : model.statistics())
            numbers.push_back(figure.count);
        return numbers;
    };
    EXPECT_THAT(counts(), ElementsAre(0, 0, 0, 0));
    add("one");
    add("two", true);
    add("Copied Image", false, text("A.jpg"));
    EXPECT_THAT(counts(), ElementsAre(3, 1, 1, 2)) << "total, pinned, images, text";
}

TEST_F(SettingsModels, switchesOfThePageAreStoredAtOnce) {
    ClipboardSettingsModel model = clipboard();
    model.setStripsFormatting(true);
    model.setClearsOnRestart(true);
    EXPECT_EQ(defaults.get<bool>(text("StripRichTextFormatting")), true);
    EXPECT_EQ(defaults.get<bool>(text("AutoClearOnRestart")), true);
    EXPECT_TRUE(manager().stripRichText());
    model.setExperience(ClipboardExperience::classic);
    EXPECT_EQ(defaults.get<QString>(text("ClipboardExperience")), text("classic"));
}

TEST_F(SettingsModels, runningProgramsCanBeExcludedOnceAndTakenBack) {
    desktop.workspace().setRunning({{.bundleIdentifier = text("org.gimp.GIMP"), .localizedName = text("GIMP")},
                                    {.bundleIdentifier = text("org.keepassxc.keepassxc"), .localizedName = text("K")},
                                    {.bundleIdentifier = text("firefox"), .localizedName = text("Firefox")}});
    ClipboardSettingsModel model = clipboard();
    const InstalledApplication gimp{text("org.gimp.GIMP"), text("GIMP")};
    const InstalledApplication firefox{text("firefox"), text("Firefox")};
    EXPECT_THAT(model.candidates(), ElementsAre(gimp, firefox)) << "a password manager is excluded already";
    model.exclude(gimp);
    model.exclude(gimp);
    ASSERT_EQ(model.excludedApps().size(), 1U);
    EXPECT_THAT(model.candidates(), ElementsAre(firefox));
    EXPECT_TRUE(defaults.get<QByteArray>(text("ExcludedAppsV2")).value_or(QByteArray()).contains("org.gimp.GIMP"));
    model.include(model.excludedApps().front().id);
    EXPECT_TRUE(model.excludedApps().empty());
    EXPECT_EQ(defaults.get<QByteArray>(text("ExcludedAppsV2")), QByteArray("[]"));
}

TEST_F(SettingsModels, aProgramThatIsExcludedUnderAnotherNameIsNotOfferedAgain) {
    desktop.workspace().setRunning(
        {{.bundleIdentifier = text("Thunar"), .localizedName = text("Thunar"), .names = {text("Thunar")}},
         {.bundleIdentifier = text("Xterm"), .localizedName = text("Xterm")}});
    ClipboardSettingsModel model = clipboard();
    model.exclude({text("thunar"), text("Files")});
    EXPECT_THAT(model.candidates(), ElementsAre(InstalledApplication{text("Xterm"), text("Xterm")}));
}

TEST_F(SettingsModels, aProgramWithoutAnIdentifierIsNotExcluded) {
    ClipboardSettingsModel model = clipboard();
    model.exclude({QString(), text("Everything")});
    EXPECT_TRUE(model.excludedApps().empty()) << "every identifier begins with an empty one";
}

TEST_F(SettingsModels, aProgramsFileExcludesItAndAnotherFileNothing) {
    desktop.applicationCatalog().install(text("/applications/a.desktop"), {text("a"), text("A")});
    ClipboardSettingsModel model = clipboard();
    for (const char *path : {"/applications/none.desktop", "/applications/a.desktop"}) {
        model.excludeByFile();
        desktop.filePanels().choose(text(path));
        time.advance(10ms);
    }
    ASSERT_EQ(model.excludedApps().size(), 1U);
    EXPECT_EQ(model.excludedApps().front().displayName, text("A"));
}

TEST_F(SettingsModels, anExportIsShownAndSaysSoForTwoAndAHalfSeconds) {
    ClipboardSettingsModel model = clipboard();
    model.exportHistory();
    ASSERT_EQ(desktop.workspace().shownFiles().size(), 1);
    EXPECT_TRUE(QFile::exists(desktop.workspace().shownFiles().front().front().toLocalFile()));
    time.advance(2499ms);
    EXPECT_TRUE(model.exported());
    time.advance(1ms);
    EXPECT_FALSE(model.exported());
}

TEST_F(SettingsModels, clearHistoryAsksInItsOwnWords) {
    add("one");
    ClipboardSettingsModel model = clipboard();
    model.clearHistory();
    EXPECT_EQ(database.counts().total, 1);
    desktop.alerts().answerNextWithFirstButton();
    model.clearHistory();
    EXPECT_EQ(desktop.alerts().shown().back(), (Alert{text("Clear clipboard history?"),
                                                      text("This cannot be undone."),
                                                      {text("Clear All (keep pinned)"), text("Cancel")}}));
    EXPECT_EQ(database.counts().total, 0);
}

TEST_F(SettingsModels, theFolderOfRecordingsIsChosenAndGivenBack) {
    ClipboardSettingsModel model = clipboard();
    EXPECT_EQ(model.saveFolder(), text("~/Documents/Tavrine QuickShots"));
    EXPECT_FALSE(model.hasOwnSaveFolder());
    model.changeSaveFolder();
    desktop.filePanels().choose(text("/somewhere"));
    time.advance(10ms);
    EXPECT_EQ(model.saveFolder(), text("/somewhere"));
    model.resetSaveFolder();
    EXPECT_FALSE(model.hasOwnSaveFolder());
}

} // namespace
} // namespace tavrine
