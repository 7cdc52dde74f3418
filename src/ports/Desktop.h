#pragma once

#include <functional>

class QString;

namespace tavrine {

class Access;
class Alerts;
class Appearance;
class Application;
class ApplicationCatalog;
class ApplicationActivator;
class AudioDevices;
class AudioPlayers;
class Calendar;
class CodeDetector;
class ColorSamplers;
class DesktopAbilities;
class Downloads;
class DragPasteboards;
class Dragging;
class EdgeWindows;
class EventMonitors;
class EventPoster;
class EventTaps;
class FileIcons;
class FilePanels;
class HotKeys;
class ImageCoder;
class InterfaceCounters;
class Keychain;
class LoginItem;
class MicrophoneSessions;
class MovieAsset;
class MovieWriters;
class MoviePlayers;
class PackageUpdates;
class PanelWindows;
class Pasteboard;
class PowerAssertions;
class PowerSource;
class PathMonitor;
class Recognizer;
class ScreenStreams;
class Screens;
class ScriptSyntax;
class SessionNotices;
class StatusItem;
class SystemSounds;
class TaskLauncher;
class Time;
class UpdateFeed;
class UrlOpener;
class UserNotifications;
class Workspace;
struct Folders;

/// Everything outside of the program, one accessor for each port. There is one for each kind of desktop, and the shell
/// alone sees it: a manager gets the ports that it uses.
///
/// Made before the toolkit starts, and outlived by nothing that holds one of its ports. Main thread. A port is made
/// when it is first asked for, and then it is always the same: what no tool needs yet costs a launch nothing.
class Desktop {
public:
    virtual ~Desktop() = default;

    // Before the toolkit starts.
    [[nodiscard]] virtual const Folders &folders() = 0;

    // The program among others.
    /// Calls `onStartedAgain` whenever the program is started again while it runs, with what that start asks for: a
    /// word out of `startAction`, empty, or one that nobody knows. Asked for once, right after the toolkit has started.
    virtual void followStarts(std::function<void(const QString &action)> onStartedAgain) = 0;
    [[nodiscard]] virtual SessionNotices &sessionNotices() = 0;
    [[nodiscard]] virtual Application &application() = 0;
    [[nodiscard]] virtual Workspace &workspace() = 0;
    [[nodiscard]] virtual ApplicationActivator &applicationActivator() = 0;
    [[nodiscard]] virtual ApplicationCatalog &applicationCatalog() = 0;
    [[nodiscard]] virtual LoginItem &loginItem() = 0;
    [[nodiscard]] virtual PackageUpdates &packageUpdates() = 0;
    [[nodiscard]] virtual UpdateFeed *updateFeed() = 0; ///< null where the build names none
    [[nodiscard]] virtual Time &time() = 0;
    [[nodiscard]] virtual Calendar &calendar() = 0;

    // The machine.
    [[nodiscard]] virtual PowerAssertions &powerAssertions() = 0;
    [[nodiscard]] virtual PowerSource &powerSource() = 0;

    // The screen.
    [[nodiscard]] virtual Appearance &appearance() = 0;
    [[nodiscard]] virtual Screens &screens() = 0;
    [[nodiscard]] virtual PanelWindows &panelWindows() = 0;
    [[nodiscard]] virtual EdgeWindows &edgeWindows() = 0;
    [[nodiscard]] virtual StatusItem &statusItem() = 0;
    [[nodiscard]] virtual ColorSamplers &colorSamplers() = 0;
    [[nodiscard]] virtual ScreenStreams &screenStreams() = 0;
    /// Calls `handler` with whether windows can let others show through: now, and at every change.
    virtual void watchCompositing(std::function<void(bool isComposited)> handler) = 0;

    // The keyboard and the pointer.
    [[nodiscard]] virtual HotKeys &hotKeys() = 0;
    [[nodiscard]] virtual EventMonitors &eventMonitors() = 0;
    [[nodiscard]] virtual EventPoster &eventPoster() = 0;
    [[nodiscard]] virtual EventTaps &eventTaps() = 0;
    [[nodiscard]] virtual DragPasteboards &dragPasteboards() = 0;
    [[nodiscard]] virtual Dragging &dragging() = 0;

    // The person.
    [[nodiscard]] virtual Access &access() = 0;
    [[nodiscard]] virtual DesktopAbilities &desktopAbilities() = 0;
    [[nodiscard]] virtual Alerts &alerts() = 0;
    [[nodiscard]] virtual FilePanels &filePanels() = 0;
    [[nodiscard]] virtual UrlOpener &urlOpener() = 0;
    [[nodiscard]] virtual UserNotifications &userNotifications() = 0;
    [[nodiscard]] virtual Keychain &keychain() = 0;

    // The machine.
    [[nodiscard]] virtual InterfaceCounters &interfaceCounters() = 0;
    [[nodiscard]] virtual PathMonitor &pathMonitor() = 0;

    // Contents.
    [[nodiscard]] virtual Pasteboard &pasteboard() = 0;
    [[nodiscard]] virtual ImageCoder &imageCoder() = 0;
    [[nodiscard]] virtual MovieAsset &movieAsset() = 0;
    [[nodiscard]] virtual MovieWriters &movieWriters() = 0;
    [[nodiscard]] virtual MoviePlayers &moviePlayers() = 0;
    [[nodiscard]] virtual Recognizer &recognizer() = 0;
    [[nodiscard]] virtual CodeDetector &screenCodeDetector() = 0;  ///< for what is found on the screen
    [[nodiscard]] virtual CodeDetector &pictureCodeDetector() = 0; ///< for the editor
    [[nodiscard]] virtual ScriptSyntax *scriptSyntax() = 0;        ///< null where there is no engine
    [[nodiscard]] virtual FileIcons &fileIcons() = 0;
    [[nodiscard]] virtual SystemSounds &systemSounds() = 0;
    [[nodiscard]] virtual AudioPlayers &audioPlayers() = 0;
    [[nodiscard]] virtual AudioDevices &audioDevices() = 0;
    [[nodiscard]] virtual MicrophoneSessions &microphoneSessions() = 0;
    [[nodiscard]] virtual Downloads &downloads() = 0;
    [[nodiscard]] virtual TaskLauncher &taskLauncher() = 0;
};

} // namespace tavrine
