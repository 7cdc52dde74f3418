#pragma once

#include "adapters/linux/DesktopThemes.h"
#include "base/MadeOnce.h"
#include "ports/Desktop.h"
#include "ports/Folders.h"

#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

class CastPortal;
class DBusSingleInstance;
class LateAccessibility;
class PlayerProcesses;
template <class Port>
class PluginLoader;
class PowerKeeper;
class DesktopAbilities;
enum class Ability;
struct AbilityReport;
struct StartIdentifiers;

/// What every Linux desktop has, whatever draws its windows. The keepers of the other ports derive from it.
class LinuxDesktop : public Desktop {
public:
    ~LinuxDesktop() override;

    /// What has found out that this is the only one that runs; without it nobody is told of further starts.
    void setInstance(std::unique_ptr<DBusSingleInstance> instance);

    [[nodiscard]] const Folders &folders() final;
    void followStarts(std::function<void(const QString &)> onStartedAgain) final;
    [[nodiscard]] Application &application() override;
    [[nodiscard]] ApplicationCatalog &applicationCatalog() final;
    [[nodiscard]] LoginItem &loginItem() final;
    [[nodiscard]] PackageUpdates &packageUpdates() final;
    [[nodiscard]] UpdateFeed *updateFeed() final;
    [[nodiscard]] Time &time() final;
    [[nodiscard]] Calendar &calendar() final;
    [[nodiscard]] PowerAssertions &powerAssertions() final;
    [[nodiscard]] PowerSource &powerSource() final;
    [[nodiscard]] Appearance &appearance() final;
    [[nodiscard]] DesktopAbilities &desktopAbilities() final;
    [[nodiscard]] Alerts &alerts() final;
    [[nodiscard]] FilePanels &filePanels() final;
    [[nodiscard]] UrlOpener &urlOpener() final;
    [[nodiscard]] UserNotifications &userNotifications() final;
    [[nodiscard]] Keychain &keychain() final;
    [[nodiscard]] InterfaceCounters &interfaceCounters() final;
    [[nodiscard]] PathMonitor &pathMonitor() final;
    [[nodiscard]] ImageCoder &imageCoder() final;
    [[nodiscard]] MovieAsset &movieAsset() final;
    [[nodiscard]] MovieWriters &movieWriters() final;
    [[nodiscard]] MoviePlayers &moviePlayers() final;
    [[nodiscard]] Recognizer &recognizer() final;
    [[nodiscard]] CodeDetector &screenCodeDetector() final;
    [[nodiscard]] CodeDetector &pictureCodeDetector() final;
    [[nodiscard]] ScriptSyntax *scriptSyntax() final;
    [[nodiscard]] FileIcons &fileIcons() final;
    [[nodiscard]] SystemSounds &systemSounds() final;
    [[nodiscard]] AudioPlayers &audioPlayers() final;
    [[nodiscard]] AudioDevices &audioDevices() final;
    [[nodiscard]] MicrophoneSessions &microphoneSessions() final;
    [[nodiscard]] Downloads &downloads() final;
    [[nodiscard]] TaskLauncher &taskLauncher() override;

protected:
    LinuxDesktop();

    /// The program was started again, with a launcher's identifiers of that start.
    virtual void startedAgain(const StartIdentifiers & /*identifiers*/) {}

    /// Where the person's wishes for looks stand when no portal knows them, in the order in which they count.
    [[nodiscard]] virtual std::vector<std::unique_ptr<Appearance>> toolkitSettings();

    /// The icons and sounds that toolkits of this desktop use now.
    [[nodiscard]] virtual DesktopThemes themes();

    /// How far this desktop lets the program do something, by what its ports tell.
    [[nodiscard]] virtual AbilityReport report(Ability ability);

    /// What the person is told of recordings where the ScreenCast portal shows the screen.
    [[nodiscard]] AbilityReport recordingByPortal();
    [[nodiscard]] CastPortal &castPortal();

    /// What keeps the machine awake, all at once.
    [[nodiscard]] virtual std::vector<std::unique_ptr<PowerKeeper>> powerKeepers();

private:
    [[nodiscard]] PlayerProcesses &players();

    MadeOnce<CastPortal> m_castPortal; ///< outlives what asks it
    std::optional<Folders> m_folders;
    std::unique_ptr<DBusSingleInstance> m_instance;
    std::unique_ptr<LateAccessibility> m_accessibility;
    MadeOnce<Time> m_time;
    MadeOnce<Calendar> m_calendar;
    MadeOnce<PowerAssertions> m_powerAssertions;
    MadeOnce<PowerSource> m_powerSource;
    MadeOnce<Application> m_application;
    MadeOnce<ApplicationCatalog> m_applicationCatalog;
    MadeOnce<LoginItem> m_loginItem;
    MadeOnce<PackageUpdates> m_packageUpdates;
    std::unique_ptr<UpdateFeed> m_updateFeed;
    MadeOnce<Appearance> m_appearance;
    MadeOnce<DesktopAbilities> m_abilities;
    MadeOnce<Alerts> m_alerts;
    MadeOnce<FilePanels> m_filePanels;
    MadeOnce<UrlOpener> m_urlOpener;
    MadeOnce<UserNotifications> m_userNotifications;
    MadeOnce<Keychain> m_keychain;
    MadeOnce<InterfaceCounters> m_interfaceCounters;
    MadeOnce<PathMonitor> m_pathMonitor;
    MadeOnce<ImageCoder> m_imageCoder;
    MadeOnce<MovieAsset> m_movieAsset;
    MadeOnce<MovieWriters> m_movieWriters;
    MadeOnce<MoviePlayers> m_moviePlayers;
    MadeOnce<Recognizer> m_recognizer;
    MadeOnce<CodeDetector> m_screenCodeDetector;
    MadeOnce<CodeDetector> m_pictureCodeDetector;
    MadeOnce<PluginLoader<ScriptSyntax>> m_scriptSyntax;
    MadeOnce<FileIcons> m_fileIcons;
    MadeOnce<SystemSounds> m_systemSounds;
    MadeOnce<PlayerProcesses> m_players;
    MadeOnce<PluginLoader<MicrophoneSessions>> m_microphoneSessions;
    MadeOnce<MicrophoneSessions> m_noMicrophoneSessions;
    MadeOnce<Downloads> m_downloads;
    MadeOnce<TaskLauncher> m_taskLauncher;
};

} // namespace tavrine
