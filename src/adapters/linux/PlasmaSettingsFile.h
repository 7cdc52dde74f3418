#pragma once

#include "ports/Appearance.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

namespace tavrine {

/// Whether Plasma's programs move nothing, by the settings file that all of them read. Plasma's portal tells the same;
/// the file is for where none runs. A file that is not there at the start is not waited for. Lives on the main thread.
class PlasmaSettingsFile final : public QObject, public Appearance {
    Q_OBJECT
public:
    /// `configFolder` is $XDG_CONFIG_HOME.
    explicit PlasmaSettingsFile(const QString &configFolder);

    [[nodiscard]] DesktopAppearance settings() const override { return m_settings; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

private:
    void read();

    QString m_file;
    std::optional<QFileSystemWatcher> m_watcher;
    DesktopAppearance m_settings;
    std::function<void()> m_onChange;
};

/// Whether Plasma's factor for the length of animations, a number or its text, leaves none of them.
[[nodiscard]] bool isNoDuration(const QVariant &factor);

} // namespace tavrine
