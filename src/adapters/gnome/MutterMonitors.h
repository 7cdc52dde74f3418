#pragma once

#include <QDBusMessage>
#include <QPoint>

#include <vector>

namespace tavrine {

/// A monitor as GNOME's compositor lays it out.
struct MutterMonitor {
    QPoint corner;       ///< on the plane that windows lie on, which the X server inside has too
    double fineness = 1; ///< its pixels for one of that plane's: more where the desktop itself enlarges everything
    bool operator==(const MutterMonitor &) const = default;
};

namespace mutterMonitors {

inline constexpr const char *path = "/org/gnome/Mutter/DisplayConfig";
inline constexpr const char *interface = "org.gnome.Mutter.DisplayConfig";
inline constexpr const char *changed = "MonitorsChanged";

/// The question for them, to whoever has that name.
[[nodiscard]] QDBusMessage question(const QString &service);
/// Its answer; empty when it cannot be read.
[[nodiscard]] std::vector<MutterMonitor> read(const QDBusMessage &answer);

} // namespace mutterMonitors
} // namespace tavrine
