#include "capture/SnipperSettingsModel.h"

#include "capture/SnipPreferences.h"
#include "ports/FilePanels.h"

#include <QPointer>

namespace tavrine {

SnipperSettingsModel::SnipperSettingsModel(Ports ports) : m_ports(std::move(ports)) {
    m_observer = m_ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                            [this](const Notification &) { Q_EMIT changed(); });
}

bool SnipperSettingsModel::isSoundMuted() const {
    return preference::snipMuteSound.get(m_ports.defaults);
}

void SnipperSettingsModel::setSoundMuted(bool isMuted) {
    if (isMuted != isSoundMuted())
        preference::snipMuteSound.set(m_ports.defaults, isMuted);
}

bool SnipperSettingsModel::savesWithoutAsking() const {
    return preference::snipUseSaveDefault.get(m_ports.defaults);
}

void SnipperSettingsModel::setSavesWithoutAsking(bool savesWithoutAsking) {
    if (savesWithoutAsking != this->savesWithoutAsking())
        preference::snipUseSaveDefault.set(m_ports.defaults, savesWithoutAsking);
}

ColorFormat SnipperSettingsModel::colorFormat() const {
    return preference::colorPickerFormat.get(m_ports.defaults);
}

void SnipperSettingsModel::setColorFormat(ColorFormat format) {
    preference::colorPickerFormat.set(m_ports.defaults, format);
}

QString SnipperSettingsModel::storedFolder() const {
    return preference::snipSaveDirectoryPath.get(m_ports.defaults);
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
                                            preference::snipSaveDirectoryPath.set(self->m_ports.defaults, *path);
                                    });
}

void SnipperSettingsModel::resetSaveFolder() {
    preference::snipSaveDirectoryPath.set(m_ports.defaults, QString());
}

} // namespace tavrine
