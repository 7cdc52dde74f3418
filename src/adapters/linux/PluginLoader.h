#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace tavrine {

/// The root object of the plugin `name` (its file's name without ".so"), loaded now; null when there is no such plugin
/// or it cannot be loaded. It is looked for relative to the program's own folder and nowhere else.
[[nodiscard]] QObject *loadPlugin(const QString &name);

/// One port's adapter that lives in a plugin, so that its libraries are loaded when the port is first used and not
/// before. Main thread. What was loaded stays until the process ends.
///
/// `Port` is declared with Q_DECLARE_INTERFACE; the plugin's root object implements it.
template <class Port>
class PluginLoader {
public:
    explicit PluginLoader(QString name) : m_name(std::move(name)) {}

    /// Null when the plugin is missing or is something else; it is asked for once only.
    [[nodiscard]] Port *port() {
        if (!m_port)
            m_port = qobject_cast<Port *>(loadPlugin(m_name));
        return *m_port;
    }

private:
    QString m_name;
    std::optional<Port *> m_port;
};

} // namespace tavrine
