#include "utilities/lofi/LofiPlayerModel.h"

#include "base/DesktopWords.h"
#include "base/NotificationCenter.h"
#include "ports/UrlOpener.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/lofi/LofiTracks.h"

#include <cmath>

namespace tavrine {
namespace {

/// Those that are there, and 29 of 100 are 29: a product of fractions falls short of a whole number by a trace.
int wholePercents(double fraction) {
    constexpr double hundred = 100;
    constexpr double trace = 1e-9;
    return static_cast<int>(std::floor(fraction * hundred + trace));
}

} // namespace

LofiPlayerModel::LofiPlayerModel(Ports ports) : m_ports(std::move(ports)) {
    connect(&m_ports.manager, &LofiManager::changed, this, &LofiPlayerModel::changed);
}

QString LofiPlayerModel::title() const {
    return m_ports.manager.customTrackName().value_or(inDesktopWords(QStringLiteral("Lo-Fi Vibe")));
}

QString LofiPlayerModel::statusLine() const {
    if (isDownloading())
        return QStringLiteral("Downloading... %1%").arg(wholePercents(downloadProgress()));
    return isOn() ? QStringLiteral("Now Playing") : QStringLiteral("Tap to play");
}

/// It follows the hand: a press is a play before it is heard.
bool LofiPlayerModel::isOn() const {
    return m_ports.manager.isPlaying() || m_ports.manager.isStarting();
}

bool LofiPlayerModel::isGlowing() const {
    return m_ports.manager.isPlaying();
}

QString LofiPlayerModel::icon() const {
    return isOn() ? QStringLiteral("pause.fill") : QStringLiteral("play.fill");
}

QString LofiPlayerModel::playActionName() const {
    return isOn() ? QStringLiteral("Pause") : QStringLiteral("Play");
}

bool LofiPlayerModel::isDownloading() const {
    return m_ports.manager.isDownloading();
}

double LofiPlayerModel::downloadProgress() const {
    return m_ports.manager.downloadProgress();
}

void LofiPlayerModel::expectToggle() {
    m_ports.manager.expectPlay();
}

void LofiPlayerModel::toggle() {
    if (isOn())
        m_ports.manager.pause();
    else
        m_ports.manager.play();
}

QString LofiPlayerModel::activeTrackTitle() const {
    return m_ports.manager.customTrackName().value_or(inDesktopWords(QStringLiteral("Default Lo-Fi Track")));
}

QString LofiPlayerModel::activeTrackNote() const {
    return hasCustomTrack() ? QStringLiteral("Using custom audio file from your Mac")
                            : QStringLiteral("Using built-in Lo-Fi streaming tracks");
}

bool LofiPlayerModel::hasCustomTrack() const {
    return m_ports.manager.customTrackName().has_value();
}

QList<LofiPlayerModel::Command> LofiPlayerModel::commands() const {
    QList<Command> commands{Command::openSettings, Command::browseInternet, Command::chooseLocalFile};
    if (hasCustomTrack())
        commands.append(Command::resetToDefault);
    return commands;
}

QString LofiPlayerModel::titleOf(Command command) {
    switch (command) {
    case Command::openSettings:
        return QStringLiteral("Lo-Fi Vibe Settings…");
    case Command::browseInternet:
        return QStringLiteral("Download Lo-Fi Music from Internet…");
    case Command::chooseLocalFile:
        return QStringLiteral("Choose Local Audio File…");
    case Command::resetToDefault:
        break;
    }
    return QStringLiteral("Reset to Default Lo-Fi Track");
}

QString LofiPlayerModel::symbolOf(Command command) {
    switch (command) {
    case Command::openSettings:
        return QStringLiteral("gearshape");
    case Command::browseInternet:
        return QStringLiteral("globe");
    case Command::chooseLocalFile:
        return QStringLiteral("folder");
    case Command::resetToDefault:
        break;
    }
    return QStringLiteral("arrow.counterclockwise");
}

void LofiPlayerModel::perform(Command command) {
    if (m_ports.beforeLeaving && command != Command::resetToDefault)
        m_ports.beforeLeaving();
    switch (command) {
    case Command::openSettings:
        m_ports.center.post(QStringLiteral("openLofiSettingsRequested"));
        break;
    case Command::browseInternet:
        m_ports.urlOpener.openUrl(lofiTracks::browsingPage());
        break;
    case Command::chooseLocalFile:
        m_ports.manager.chooseCustomTrack();
        break;
    case Command::resetToDefault:
        m_ports.manager.resetToDefaultTrack();
        break;
    }
}

} // namespace tavrine
