#include "adapters/desktops/LinuxDesktop.h"

#include "adapters/desktops/TriedAbilities.h"
#include "adapters/linux/AppcastFeed.h"
#include "adapters/linux/CastPortal.h"
#include "adapters/linux/CastTokens.h"
#include "adapters/linux/DBusSingleInstance.h"
#include "adapters/linux/DesktopEntries.h"
#include "adapters/linux/DesktopLooks.h"
#include "adapters/linux/DesktopNotifications.h"
#include "adapters/linux/DesktopUrlOpener.h"
#include "adapters/linux/DownloaderProcess.h"
#include "adapters/linux/GtkSettingsFiles.h"
#include "adapters/linux/InhibitingServices.h"
#include "adapters/linux/LateAccessibility.h"
#include "adapters/linux/LinuxPowerAssertions.h"
#include "adapters/linux/MovieAssetProcess.h"
#include "adapters/linux/MoviePlayerProcess.h"
#include "adapters/linux/NetlinkCounters.h"
#include "adapters/linux/NetlinkPathMonitor.h"
#include "adapters/linux/NoMicrophoneSessions.h"
#include "adapters/linux/PackageKitUpdates.h"
#include "adapters/linux/PlasmaSettingsFile.h"
#include "adapters/linux/PlayerProcess.h"
#include "adapters/linux/PluginKeychain.h"
#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/PosixTaskLauncher.h"
#include "adapters/linux/QtApplication.h"
#include "adapters/linux/QtFilePanels.h"
#include "adapters/linux/QtTime.h"
#include "adapters/linux/ReaderProcess.h"
#include "adapters/linux/RecorderProcess.h"
#include "adapters/linux/SystemCalendar.h"
#include "adapters/linux/ThemeFileIcons.h"
#include "adapters/linux/ThemeSounds.h"
#include "adapters/linux/TurboImageCoder.h"
#include "adapters/linux/UPowerSource.h"
#include "adapters/linux/XdgAutostart.h"
#include "adapters/linux/XdgFolders.h"
#include "look/FittingWindow.h"
#include "look/ModalAlerts.h"
#include "ports/Access.h"
#include "ports/ScriptSyntax.h"
#include "ports/StatusItem.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace tavrine {
namespace {

/// The person has shown each screen to the portal, which gave a token for the next time.
bool isEveryScreenRemembered() {
    const CastTokens tokens(CastTokens::usualPath());
    const auto screens = QGuiApplication::screens();
    return std::ranges::none_of(screens, [&](const QScreen *each) { return tokens.of(each->name()).isEmpty(); });
}

} // namespace

LinuxDesktop::LinuxDesktop() = default;
LinuxDesktop::~LinuxDesktop() = default;

const Folders &LinuxDesktop::folders() {
    if (!m_folders)
        m_folders = xdgFolders();
    return *m_folders;
}

void LinuxDesktop::setInstance(std::unique_ptr<DBusSingleInstance> instance) {
    m_instance = std::move(instance);
}

void LinuxDesktop::followStarts(std::function<void(const QString &)> onStartedAgain) {
    // Before the first widget, at which the toolkit would ask for screen readers itself and wait, and before a bus.
    m_accessibility = std::make_unique<LateAccessibility>();
    if (m_instance)
        m_instance->listen([this, onStartedAgain = std::move(onStartedAgain)](const StartIdentifiers &identifiers,
                                                                              const QString &action) {
            startedAgain(identifiers);
            onStartedAgain(action);
        });
}

Application &LinuxDesktop::application() {
    return m_application.get([] { return std::make_unique<QtApplication>(); });
}

ApplicationCatalog &LinuxDesktop::applicationCatalog() {
    return m_applicationCatalog.get([] { return std::make_unique<DesktopEntries>(DesktopEntries::standardFolders()); });
}

LoginItem &LinuxDesktop::loginItem() {
    return m_loginItem.get([] {
        auto item = std::make_unique<XdgAutostart>(XdgAutostart::userFolder(), QCoreApplication::applicationFilePath());
        item->followProgram();
        return item;
    });
}

PackageUpdates &LinuxDesktop::packageUpdates() {
    return m_packageUpdates.get([] { return std::make_unique<PackageKitUpdates>(QStringLiteral(TAVRINE_PACKAGE)); });
}

UpdateFeed *LinuxDesktop::updateFeed() {
    const auto address = QStringLiteral(TAVRINE_UPDATE_FEED);
    if (!m_updateFeed && !address.isEmpty())
        m_updateFeed =
            std::make_unique<AppcastFeed>(AppcastFeed::Parts{.downloads = downloads(),
                                                             .temporary = folders().temporary,
                                                             .programs = folders().programs,
                                                             .address = QUrl(address),
                                                             .keys = QStringLiteral(TAVRINE_UPDATE_KEYS).split(u',')});
    return m_updateFeed.get();
}

Time &LinuxDesktop::time() {
    return m_time.get([] { return std::make_unique<QtTime>(); });
}

Calendar &LinuxDesktop::calendar() {
    return m_calendar.get([] { return std::make_unique<SystemCalendar>(); });
}

PowerAssertions &LinuxDesktop::powerAssertions() {
    return m_powerAssertions.get(
        [this] { return std::make_unique<LinuxPowerAssertions>(powerKeepers(), makeLastResorts()); });
}

std::vector<std::unique_ptr<PowerKeeper>> LinuxDesktop::powerKeepers() {
    return makeInhibitingServices();
}

PowerSource &LinuxDesktop::powerSource() {
    return m_powerSource.get([] { return std::make_unique<UPowerSource>(); });
}

Appearance &LinuxDesktop::appearance() {
    return m_appearance.get([this] { return std::make_unique<DesktopLooks>(toolkitSettings()); });
}

std::vector<std::unique_ptr<Appearance>> LinuxDesktop::toolkitSettings() {
    std::vector<std::unique_ptr<Appearance>> settings;
    settings.push_back(std::make_unique<GtkSettingsFiles>(folders().preferences));
    settings.push_back(std::make_unique<PlasmaSettingsFile>(folders().preferences));
    return settings;
}

DesktopThemes LinuxDesktop::themes() {
    return gtkThemes(folders().preferences);
}

DesktopAbilities &LinuxDesktop::desktopAbilities() {
    return m_abilities.get(
        [this] { return std::make_unique<TriedAbilities>([this](Ability ability) { return report(ability); }); });
}

AbilityReport LinuxDesktop::report(Ability ability) {
    bool isThere = true;
    switch (ability) {
    case Ability::paste:
        isThere = access().isAccessibilityTrusted();
        break;
    case Ability::capture:
    case Ability::recording:
        isThere = access().isScreenCaptureGranted();
        break;
    case Ability::tray:
        isThere = !statusItem().isVisible() || statusItem().isInTray(); // who hides it wants none
        break;
    case Ability::history:
    case Ability::hotKeys:
    case Ability::doubleTap:
    case Ability::shelf:
        break;
    }
    return isThere ? abilityReport::there(ability) : abilityReport::missing(ability);
}

AbilityReport LinuxDesktop::recordingByPortal() {
    return abilityReport::recording(castPortal().answer(), isEveryScreenRemembered());
}

CastPortal &LinuxDesktop::castPortal() {
    return m_castPortal.get([] { return std::make_unique<CastPortal>(); });
}

Alerts &LinuxDesktop::alerts() {
    return m_alerts.get([] { return std::make_unique<look::ModalAlerts>(); });
}

FilePanels &LinuxDesktop::filePanels() {
    return m_filePanels.get([] { return std::make_unique<QtFilePanels>(fitToScreen); });
}

UrlOpener &LinuxDesktop::urlOpener() {
    return m_urlOpener.get([] { return std::make_unique<DesktopUrlOpener>(); });
}

UserNotifications &LinuxDesktop::userNotifications() {
    return m_userNotifications.get([] { return std::make_unique<DesktopNotifications>(); });
}

Keychain &LinuxDesktop::keychain() {
    return m_keychain.get([] {
        return std::make_unique<PluginKeychain>(
            [] { return qobject_cast<Keychain *>(loadPlugin(QStringLiteral("keychain"))); });
    });
}

InterfaceCounters &LinuxDesktop::interfaceCounters() {
    return m_interfaceCounters.get([] { return std::make_unique<NetlinkCounters>(); });
}

PathMonitor &LinuxDesktop::pathMonitor() {
    return m_pathMonitor.get([] { return std::make_unique<NetlinkPathMonitor>(); });
}

ImageCoder &LinuxDesktop::imageCoder() {
    return m_imageCoder.get([] { return std::make_unique<TurboImageCoder>(); });
}

MovieAsset &LinuxDesktop::movieAsset() {
    return m_movieAsset.get([this] { return std::make_unique<ProcessMovieAsset>(folders().programs); });
}

MovieWriters &LinuxDesktop::movieWriters() {
    return m_movieWriters.get([this] { return std::make_unique<RecorderProcesses>(folders().programs); });
}

MoviePlayers &LinuxDesktop::moviePlayers() {
    return m_moviePlayers.get([this] { return std::make_unique<MoviePlayerProcesses>(folders().programs); });
}

Recognizer &LinuxDesktop::recognizer() {
    return m_recognizer.get([this] { return std::make_unique<ProcessRecognizer>(folders().programs); });
}

CodeDetector &LinuxDesktop::screenCodeDetector() {
    return m_screenCodeDetector.get([this] {
        return std::make_unique<ProcessCodeDetector>(folders().programs, ProcessCodeDetector::screenPlugin);
    });
}

CodeDetector &LinuxDesktop::pictureCodeDetector() {
    return m_pictureCodeDetector.get([this] {
        return std::make_unique<ProcessCodeDetector>(folders().programs, ProcessCodeDetector::picturePlugin);
    });
}

ScriptSyntax *LinuxDesktop::scriptSyntax() {
    return m_scriptSyntax
        .get([] { return std::make_unique<PluginLoader<ScriptSyntax>>(QStringLiteral("script_syntax")); })
        .port();
}

FileIcons &LinuxDesktop::fileIcons() {
    return m_fileIcons.get([this] { return std::make_unique<ThemeFileIcons>([this] { return themes(); }); });
}

SystemSounds &LinuxDesktop::systemSounds() {
    return m_systemSounds.get(
        [this] { return std::make_unique<ThemeSounds>(folders().programs, [this] { return themes(); }); });
}

PlayerProcesses &LinuxDesktop::players() {
    return m_players.get([this] { return std::make_unique<PlayerProcesses>(folders().programs); });
}

AudioPlayers &LinuxDesktop::audioPlayers() {
    return players();
}

AudioDevices &LinuxDesktop::audioDevices() {
    return players();
}

MicrophoneSessions &LinuxDesktop::microphoneSessions() {
    MicrophoneSessions *const sessions =
        m_microphoneSessions
            .get([] {
                return std::make_unique<PluginLoader<MicrophoneSessions>>(QStringLiteral("microphone_sessions"));
            })
            .port();
    return sessions ? *sessions : m_noMicrophoneSessions.get([] { return std::make_unique<NoMicrophoneSessions>(); });
}

Downloads &LinuxDesktop::downloads() {
    return m_downloads.get([this] { return std::make_unique<DownloaderProcesses>(folders().programs); });
}

TaskLauncher &LinuxDesktop::taskLauncher() {
    return m_taskLauncher.get([this] { return std::make_unique<PosixTaskLauncher>(folders().programs); });
}

} // namespace tavrine
