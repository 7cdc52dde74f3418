#pragma once

#include "adapters/linux/DesktopThemes.h"
#include "ports/Appearance.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>

namespace tavrine {

/// What a person's settings files of GTK say about dark looks and motion, where no portal and no settings service runs:
/// a bare window manager. The newer version's file counts before the older one's. Lives on the main thread.
class GtkSettingsFiles final : public QObject, public Appearance {
    Q_OBJECT
public:
    /// `configFolder` is $XDG_CONFIG_HOME.
    explicit GtkSettingsFiles(const QString &configFolder);

    [[nodiscard]] DesktopAppearance settings() const override { return m_settings; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

private:
    void watch();
    void read();

    QStringList m_files;
    QFileSystemWatcher m_watcher;
    DesktopAppearance m_settings;
    std::function<void()> m_onChange;
};

/// The themes that these files name, read now.
[[nodiscard]] DesktopThemes gtkThemes(const QString &configFolder);

} // namespace tavrine
