#include "shell/settings/ClipboardSettingsModel.h"

#include "base/Time.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardPreferences.h"
#include "ports/Alerts.h"
#include "ports/FilePanels.h"
#include "ports/Workspace.h"

#include <QPointer>
#include <QUrl>

#include <algorithm>

namespace tavrine {

ClipboardSettingsModel::ClipboardSettingsModel(Ports ports, QObject *parent) : QObject(parent), m_ports(ports) {
    m_observer = ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                          [this](const Notification &) { Q_EMIT changed(); });
    ClipboardManager &manager = ports.manager;
    connect(&manager, &ClipboardManager::historyChanged, this, [this] {
        readCounts();
        Q_EMIT statisticsChanged();
    });
    connect(&manager, &ClipboardManager::stripRichTextChanged, this, &ClipboardSettingsModel::changed);
    connect(&manager, &ClipboardManager::autoClearOnRestartChanged, this, &ClipboardSettingsModel::changed);
    connect(&manager, &ClipboardManager::excludedAppsChanged, this, &ClipboardSettingsModel::excludedAppsChanged);
    connect(&ports.experience, &ClipboardExperienceSettings::selectedExperiencePublished, this,
            &ClipboardSettingsModel::changed);
    readCounts();
}

void ClipboardSettingsModel::readCounts() {
    m_counts = m_ports.manager.database().counts();
}

std::array<ClipboardSettingsModel::Figure, 4> ClipboardSettingsModel::statistics() const {
    return {Figure{"Total", m_counts.total}, Figure{"Pinned", m_counts.pinned}, Figure{"Images", m_counts.images},
            Figure{"Text", m_counts.total - m_counts.images}};
}

ClipboardExperience ClipboardSettingsModel::experience() const {
    return m_ports.experience.selectedExperience();
}

void ClipboardSettingsModel::setExperience(ClipboardExperience experience) {
    m_ports.experience.setSelectedExperience(experience);
}

bool ClipboardSettingsModel::stripsFormatting() const {
    return m_ports.manager.stripRichText();
}

void ClipboardSettingsModel::setStripsFormatting(bool isOn) {
    if (isOn == stripsFormatting())
        return;
    m_ports.manager.setStripRichText(isOn);
    m_ports.manager.saveSettings();
}

bool ClipboardSettingsModel::clearsOnRestart() const {
    return m_ports.manager.autoClearOnRestart();
}

void ClipboardSettingsModel::setClearsOnRestart(bool isOn) {
    if (isOn == clearsOnRestart())
        return;
    m_ports.manager.setAutoClearOnRestart(isOn);
    m_ports.manager.saveSettings();
}

const std::vector<ExcludedApp> &ClipboardSettingsModel::excludedApps() const {
    return m_ports.manager.excludedApps();
}

QList<InstalledApplication> ClipboardSettingsModel::candidates() const {
    QList<InstalledApplication> found;
    for (const RunningApplication &running : m_ports.workspace.runningApplications()) {
        if (!m_ports.manager.isExcluded(running))
            found.append({running.bundleIdentifier, running.localizedName});
    }
    return found;
}

void ClipboardSettingsModel::exclude(const InstalledApplication &application) {
    if (application.bundleIdentifier.isEmpty())
        return; // every identifier begins with it
    m_ports.manager.addExcludedApp({.id = QUuid::createUuid(),
                                    .bundleID = application.bundleIdentifier,
                                    .displayName = application.localizedName});
}

void ClipboardSettingsModel::excludeByFile() {
    m_ports.filePanels.runOpenPanel({.title = QStringLiteral("Choose Application"),
                                     .prompt = QStringLiteral("Exclude"),
                                     .directory = m_ports.catalog.folder(),
                                     .filter = m_ports.catalog.fileFilter()},
                                    [self = QPointer(this)](const std::optional<QString> &path) {
                                        if (!self || !path)
                                            return;
                                        if (const auto application = self->m_ports.catalog.applicationIn(*path))
                                            self->exclude(*application);
                                    });
}

void ClipboardSettingsModel::include(const QUuid &id) {
    std::vector<ExcludedApp> apps = excludedApps();
    std::erase_if(apps, [&id](const ExcludedApp &app) { return app.id == id; });
    m_ports.manager.setExcludedApps(std::move(apps));
    m_ports.manager.saveSettings();
}

QImage ClipboardSettingsModel::icon(const QString &bundleIdentifier, int side) const {
    return m_ports.catalog.icon(bundleIdentifier, side);
}

QString ClipboardSettingsModel::saveFolder() const {
    const QString chosen = preference::customSaveDirectoryPath.get(m_ports.defaults);
    return chosen.isEmpty() ? QStringLiteral("~/Documents/") + QLatin1String(MediaStore::quickShotsName) : chosen;
}

bool ClipboardSettingsModel::hasOwnSaveFolder() const {
    return !preference::customSaveDirectoryPath.get(m_ports.defaults).isEmpty();
}

void ClipboardSettingsModel::changeSaveFolder() {
    m_ports.filePanels.runOpenPanel({.title = QStringLiteral("Choose Save Folder"),
                                     .prompt = QStringLiteral("Select"),
                                     .directory = preference::customSaveDirectoryPath.get(m_ports.defaults),
                                     .filter = {},
                                     .choosesDirectories = true},
                                    [self = QPointer(this)](const std::optional<QString> &path) {
                                        if (self && path && !path->isEmpty())
                                            preference::customSaveDirectoryPath.set(self->m_ports.defaults, *path);
                                    });
}

void ClipboardSettingsModel::resetSaveFolder() {
    preference::customSaveDirectoryPath.remove(m_ports.defaults);
}

void ClipboardSettingsModel::clearHistory() {
    const QPointer self(this);
    const bool isWanted =
        m_ports.alerts.runModal({.message = QStringLiteral("Clear clipboard history?"),
                                 .information = QStringLiteral("This cannot be undone."),
                                 .buttons = {QStringLiteral("Clear All (keep pinned)"), QStringLiteral("Cancel")}});
    if (isWanted && self)
        m_ports.manager.clearHistory();
}

void ClipboardSettingsModel::exportHistory() {
    const std::optional<QString> path = m_ports.manager.exportHistory();
    if (!path)
        return;
    m_ports.workspace.activateFileViewerSelecting({QUrl::fromLocalFile(*path)});
    m_exported = true;
    Q_EMIT changed();
    m_ports.time.asyncAfter(exportedTime, this, [this] {
        m_exported = false;
        Q_EMIT changed();
    });
}

} // namespace tavrine
