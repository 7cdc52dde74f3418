#pragma once

#include "base/NotificationCenter.h"
#include "capture/ColorPickerManager.h"
#include "ports/Folders.h"

#include <QObject>
#include <QString>

namespace tavrine {

class FilePanels;
class UserDefaults;

/// What the page of the captures shows and changes. Everything stands in the preferences, and the page follows them
/// whoever changes them. Main thread; lives as long as its page.
class SnipperSettingsModel : public QObject {
    Q_OBJECT

public:
    /// All outlive the model.
    struct Ports {
        UserDefaults &defaults;
        NotificationCenter &center;
        FilePanels &filePanels;
        Folders folders;
    };

    explicit SnipperSettingsModel(Ports ports);

    [[nodiscard]] bool isSoundMuted() const;
    void setSoundMuted(bool isMuted);
    [[nodiscard]] bool savesWithoutAsking() const;
    void setSavesWithoutAsking(bool savesWithoutAsking);

    /// How a picked colour is written.
    [[nodiscard]] ColorFormat colorFormat() const;
    void setColorFormat(ColorFormat format);

    /// The folder as the page tells it.
    [[nodiscard]] QString saveFolder() const;
    [[nodiscard]] bool hasOwnSaveFolder() const { return !storedFolder().isEmpty(); }
    void changeSaveFolder();
    void resetSaveFolder();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QString storedFolder() const;

    Ports m_ports;
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
