#pragma once

#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeAudioPlayers.h"
#include "adapters/fake/FakeCalendar.h"
#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakeColorSampler.h"
#include "adapters/fake/FakeDesktopAbilities.h"
#include "adapters/fake/FakeDownloads.h"
#include "adapters/fake/FakeDragPasteboard.h"
#include "adapters/fake/FakeDragging.h"
#include "adapters/fake/FakeEdgeWindow.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeEventPoster.h"
#include "adapters/fake/FakeEventTap.h"
#include "adapters/fake/FakeFileIcons.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeHotKeys.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakeInterfaceCounters.h"
#include "adapters/fake/FakeKeychain.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMicrophoneSessions.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakeMoviePlayers.h"
#include "adapters/fake/FakeMovieWriter.h"
#include "adapters/fake/FakePackageUpdates.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakePathMonitor.h"
#include "adapters/fake/FakePowerAssertions.h"
#include "adapters/fake/FakePowerSource.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/fake/FakeScreenStreams.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeScriptSyntax.h"
#include "adapters/fake/FakeSessionNotices.h"
#include "adapters/fake/FakeStatusItem.h"
#include "adapters/fake/FakeSystemSounds.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/FakeUpdateFeed.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "ports/Desktop.h"
#include "ports/Folders.h"

namespace tavrine {

/// A desktop of fakes. Each accessor gives the fake itself, so that a test can steer what the program meets.
class FakeDesktop final : public Desktop {
public:
    explicit FakeDesktop(Folders folders) : m_folders(std::move(folders)) {}

    [[nodiscard]] const Folders &folders() override { return m_folders; }
    void followStarts(std::function<void(const QString &)> onStartedAgain) override {
        m_onStartedAgain = std::move(onStartedAgain);
    }
    [[nodiscard]] FakeDesktopAbilities &desktopAbilities() override { return m_abilities; }
    [[nodiscard]] FakeSessionNotices &sessionNotices() override { return m_sessionNotices; }
    [[nodiscard]] FakeApplication &application() override { return m_application; }
    [[nodiscard]] FakeWorkspace &workspace() override { return m_workspace; }
    [[nodiscard]] FakeApplicationActivator &applicationActivator() override { return m_activator; }
    [[nodiscard]] FakeApplicationCatalog &applicationCatalog() override { return m_applicationCatalog; }
    [[nodiscard]] FakeLoginItem &loginItem() override { return m_loginItem; }
    [[nodiscard]] FakePackageUpdates &packageUpdates() override {
        if (m_onPackageUpdates)
            m_onPackageUpdates();
        return m_packageUpdates;
    }
    [[nodiscard]] FakeUpdateFeed *updateFeed() override { return m_hasUpdateFeed ? &m_updateFeed : nullptr; }
    [[nodiscard]] VirtualTime &time() override { return m_time; }
    [[nodiscard]] FakeCalendar &calendar() override { return m_calendar; }
    [[nodiscard]] FakePowerAssertions &powerAssertions() override { return m_powerAssertions; }
    [[nodiscard]] FakePowerSource &powerSource() override { return m_powerSource; }
    [[nodiscard]] FakeAppearance &appearance() override { return m_appearance; }
    [[nodiscard]] FakeScreens &screens() override { return m_screens; }
    [[nodiscard]] FakePanelWindows &panelWindows() override {
        m_hasAskedForPanels = true;
        return m_panelWindows;
    }
    [[nodiscard]] FakeEdgeWindows &edgeWindows() override { return m_edgeWindows; }
    [[nodiscard]] FakeStatusItem &statusItem() override { return m_statusItem; }
    [[nodiscard]] FakeColorSamplers &colorSamplers() override { return m_colorSamplers; }
    [[nodiscard]] FakeScreenStreams &screenStreams() override { return m_screenStreams; }
    void watchCompositing(std::function<void(bool isComposited)> handler) override {
        handler(m_panelWindows.isComposited());
    }
    [[nodiscard]] FakeHotKeys &hotKeys() override { return m_hotKeys; }
    [[nodiscard]] FakeEventMonitors &eventMonitors() override { return m_eventMonitors; }
    [[nodiscard]] FakeEventPoster &eventPoster() override { return m_eventPoster; }
    [[nodiscard]] FakeEventTaps &eventTaps() override { return m_eventTaps; }
    [[nodiscard]] FakeDragPasteboards &dragPasteboards() override { return m_dragPasteboards; }
    [[nodiscard]] FakeDragging &dragging() override { return m_dragging; }
    [[nodiscard]] FakeAccess &access() override { return m_access; }
    [[nodiscard]] FakeAlerts &alerts() override { return m_alerts; }
    [[nodiscard]] FakeFilePanels &filePanels() override { return m_filePanels; }
    [[nodiscard]] FakeUrlOpener &urlOpener() override { return m_urlOpener; }
    [[nodiscard]] FakeUserNotifications &userNotifications() override { return m_userNotifications; }
    [[nodiscard]] FakeKeychain &keychain() override { return m_keychain; }
    [[nodiscard]] FakeInterfaceCounters &interfaceCounters() override { return m_interfaceCounters; }
    [[nodiscard]] FakePathMonitor &pathMonitor() override { return m_pathMonitor; }
    [[nodiscard]] FakePasteboard &pasteboard() override { return m_pasteboard; }
    [[nodiscard]] FakeImageCoder &imageCoder() override { return m_imageCoder; }
    [[nodiscard]] FakeMovieAsset &movieAsset() override { return m_movieAsset; }
    [[nodiscard]] FakeMovieWriters &movieWriters() override { return m_movieWriters; }
    [[nodiscard]] FakeMoviePlayers &moviePlayers() override { return m_moviePlayers; }
    [[nodiscard]] FakeRecognizer &recognizer() override { return m_recognizer; }
    [[nodiscard]] FakeCodeDetector &screenCodeDetector() override { return m_screenCodeDetector; }
    [[nodiscard]] FakeCodeDetector &pictureCodeDetector() override { return m_pictureCodeDetector; }
    [[nodiscard]] FakeScriptSyntax *scriptSyntax() override { return &m_scriptSyntax; }
    [[nodiscard]] FakeFileIcons &fileIcons() override { return m_fileIcons; }
    [[nodiscard]] FakeSystemSounds &systemSounds() override { return m_systemSounds; }
    [[nodiscard]] FakeAudioPlayers &audioPlayers() override { return m_audioPlayers; }
    [[nodiscard]] FakeAudioPlayers &audioDevices() override { return m_audioPlayers; }
    [[nodiscard]] FakeMicrophoneSessions &microphoneSessions() override { return m_microphoneSessions; }
    [[nodiscard]] FakeDownloads &downloads() override { return m_downloads; }
    [[nodiscard]] FakeTaskLauncher &taskLauncher() override { return m_taskLauncher; }

    /// The program is started a second time.
    void reopen(const QString &action = {}) {
        if (m_onStartedAgain)
            m_onStartedAgain(action);
    }
    /// The build names a feed, or none.
    void setUpdateFeed(bool isNamed) { m_hasUpdateFeed = isNamed; }
    /// `asked` is called when the program reaches for the system's packages.
    void setOnPackageUpdates(std::function<void()> asked) { m_onPackageUpdates = std::move(asked); }
    /// Whether the program has asked for the maker of panels.
    [[nodiscard]] bool hasAskedForPanels() const { return m_hasAskedForPanels; }

private:
    Folders m_folders;
    VirtualTime m_time;
    FakeCalendar m_calendar;
    FakePowerAssertions m_powerAssertions{m_time};
    FakePowerSource m_powerSource;
    FakeApplication m_application;
    FakeWorkspace m_workspace;
    FakeApplicationActivator m_activator{m_workspace};
    FakeApplicationCatalog m_applicationCatalog;
    FakeLoginItem m_loginItem;
    FakePackageUpdates m_packageUpdates{m_time};
    FakeUpdateFeed m_updateFeed{m_time};
    FakeAppearance m_appearance;
    FakeScreens m_screens;
    FakePanelWindows m_panelWindows;
    FakeDesktopAbilities m_abilities;
    FakeSessionNotices m_sessionNotices{m_time};
    FakeEdgeWindows m_edgeWindows;
    FakeStatusItem m_statusItem;
    FakeColorSamplers m_colorSamplers{m_time};
    FakeScreenStreams m_screenStreams{m_time};
    FakeHotKeys m_hotKeys;
    FakeEventMonitors m_eventMonitors;
    FakeEventPoster m_eventPoster;
    FakeEventTaps m_eventTaps{m_time};
    FakeDragPasteboards m_dragPasteboards{m_time};
    FakeDragging m_dragging{m_time};
    FakeAccess m_access;
    FakeAlerts m_alerts;
    FakeFilePanels m_filePanels{m_time};
    FakeUrlOpener m_urlOpener;
    FakeUserNotifications m_userNotifications{m_time};
    FakeKeychain m_keychain;
    FakeInterfaceCounters m_interfaceCounters;
    FakePathMonitor m_pathMonitor{m_time};
    FakePasteboard m_pasteboard;
    FakeImageCoder m_imageCoder;
    FakeMovieAsset m_movieAsset;
    FakeMoviePlayers m_moviePlayers{m_time};
    FakeRecognizer m_recognizer;
    FakeCodeDetector m_screenCodeDetector;
    FakeCodeDetector m_pictureCodeDetector;
    FakeScriptSyntax m_scriptSyntax;
    FakeFileIcons m_fileIcons{m_time};
    FakeSystemSounds m_systemSounds;
    FakeAudioPlayers m_audioPlayers{m_time};
    FakeMicrophoneSessions m_microphoneSessions{m_time};
    FakeDownloads m_downloads{m_time};
    FakeMovieWriters m_movieWriters{m_time};
    FakeTaskLauncher m_taskLauncher;
    std::function<void(const QString &)> m_onStartedAgain;
    std::function<void()> m_onPackageUpdates;
    bool m_hasUpdateFeed = false;
    bool m_hasAskedForPanels = false;
};

} // namespace tavrine
