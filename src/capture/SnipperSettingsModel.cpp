#include "capture/SnipperSettingsModel.h"

#include "base/UserDefaults.h"
#include "capture/ScreenSnipper.h"
#include "capture/SnipFlow.h"
#include "ports/FilePanels.h"

#include <QPointer>

namespace tavrine {
namespace {

constexpr QLatin1String muteSoundKey(ScreenSnipper::muteSoundKey);
constexpr QLatin1String useSaveDefaultKey(SnipFlow::useSaveDefaultKey);
constexpr QLatin1String saveDirectoryPathKey(SnipFlow::saveDirectoryPathKey);

} // namespace

SnipperSettingsModel::SnipperSettingsModel(Ports ports) : m_ports(std::move(ports)) {
    m_observer = m_ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                            [this](const Notification &) { Q_EMIT changed(); });
}

bool SnipperSettingsModel::isSoundMuted() const {
    return m_ports.defaults.get<bool>(muteSoundKey, false);
}

void SnipperSettingsModel::setSoundMuted(bool isMuted) {
    m_ports.defaults.set(muteSoundKey, isMuted);
}

bool SnipperSettingsModel::savesWithoutAsking() const {
    return m_ports.defaults.get<bool>(useSaveDefaultKey, false);
}

void SnipperSettingsModel::setSavesWithoutAsking(bool savesWithoutAsking) {
    m_ports.defaults.set(useSaveDefaultKey, savesWithoutAsking);
}

QString SnipperSettingsModel::storedFolder() const {
    return m_ports.defaults.get<QString>(saveDirectoryPathKey, QString());
}

QString SnipperSettingsModel::saveFolder() const {
    const QString stored = storedFolder();
    if (!stored.isEmpty())
        return stored;
    return m_ports.folders.documents.isEmpty() ? QStringLiteral("~/Documents/tavrine")
                                               : m_ports.folders.documents + QStringLiteral("/tavrine");
}

void SnipperSettingsModel::changeSaveFolder() {
    m_ports.filePanels.runOpenPanel({.title = QStringLiteral("Choose Save Folder"),
                                     .prompt = QStringLiteral("Select"),
                                     .directory = storedFolder(),
                                     .filter = {},
                                     .choosesDirectories = true},
                                    [self = QPointer(this)](const std::optional<QString> &path) {
                                        if (self && path && !path->isEmpty())
                                            self->m_ports.defaults.set(saveDirectoryPathKey, *path);
                                    });
}

void SnipperSettingsModel::resetSaveFolder() {
    m_ports.defaults.set(saveDirectoryPathKey, QString());
}

} // namespace tavrine
