#pragma once

#include "base/Date.h"
#include "base/NotificationCenter.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExperience.h"
#include "clipboard/ExcludedApp.h"
#include "ports/ApplicationCatalog.h"

#include <QObject>

namespace tavrine {

class Alerts;
class ClipboardExperienceSettings;
class ClipboardManager;
class FilePanels;
class Time;
class UserDefaults;
class Workspace;

/// What the page of the clipboard history shows and does, beside its switch and its trigger. Everything that it shows
/// is the manager's, and follows it. Lives as long as its page; main thread.
class ClipboardSettingsModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds exportedTime{2.5};

    /// All outlive the model.
    struct Ports {
        ClipboardManager &manager;
        ClipboardExperienceSettings &experience;
        UserDefaults &defaults;
        NotificationCenter &center;
        Time &time;
        Alerts &alerts;
        FilePanels &filePanels;
        Workspace &workspace;
        ApplicationCatalog &catalog;
    };
    explicit ClipboardSettingsModel(Ports ports, QObject *parent = nullptr);

    struct Figure {
        const char *title;
        int count;
        bool operator==(const Figure &) const = default;
    };
    /// "Total", "Pinned", "Images", "Text".
    [[nodiscard]] std::array<Figure, 4> statistics() const;

    [[nodiscard]] ClipboardExperience experience() const;
    void setExperience(ClipboardExperience experience);
    [[nodiscard]] bool stripsFormatting() const;
    void setStripsFormatting(bool isOn);
    [[nodiscard]] bool clearsOnRestart() const;
    void setClearsOnRestart(bool isOn);

    /// Programs whose copies are not recorded.
    [[nodiscard]] const std::vector<ExcludedApp> &excludedApps() const;
    /// The programs with a window that could be added.
    [[nodiscard]] QList<InstalledApplication> candidates() const;
    void exclude(const InstalledApplication &application);
    /// Asks for a program's file.
    void excludeByFile();
    void include(const QUuid &id);
    [[nodiscard]] QImage icon(const QString &bundleIdentifier, int side) const;

    /// Where recordings go: the person's folder, else the standard one as it is called.
    [[nodiscard]] QString saveFolder() const;
    [[nodiscard]] bool hasOwnSaveFolder() const;
    void changeSaveFolder();
    void resetSaveFolder();

    /// Asks first, with the main loop running meanwhile.
    void clearHistory();
    void exportHistory();
    /// For a while after an export.
    [[nodiscard]] bool exported() const { return m_exported; }

Q_SIGNALS:
    void changed();
    void statisticsChanged();
    void excludedAppsChanged();

private:
    void readCounts();

    Ports m_ports;
    ClipboardDatabase::Counts m_counts;
    bool m_exported = false;
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
