#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class QDBusServiceWatcher;
class QDBusVariant;

namespace tavrine {

/// Has the toolkit show everything as much larger as the person wants text. On X11 it does so by itself, with all that
/// is shown, by the dots an inch that the desktop tells; here nobody tells it but Plasma's start, which goes before all
/// else. Lives on the main thread, from before the first window.
///
///  1. From the first window on what the files say holds; they take no time and need nobody to run.
///  2. A portal that answers goes before the file of GNOME's settings, and tells changes at once. One that does not run
///     is not started; one that goes takes back nothing.
class ToolkitScale final : public QObject {
    Q_OBJECT
public:
    /// `onChange` is called after each change: windows that are shown are as large as before until they are shown anew.
    explicit ToolkitScale(std::function<void()> onChange);
    ~ToolkitScale() override;

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void follow(const QDBusConnection &bus);
    void ask(const QDBusConnection &bus);
    void take(const QVariant &value);
    void show(double scale);

    const std::function<void()> m_onChange;
    const double m_own; ///< what the person has set for the toolkit, which it has heeded by itself
    double m_shown = 1;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
};

} // namespace tavrine
