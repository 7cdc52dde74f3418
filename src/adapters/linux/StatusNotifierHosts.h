#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace tavrine {

/// Finds out who draws the items of a tray that speaks org.kde.StatusNotifierItem. Lives on the main thread and never
/// waits for the bus.
///
/// The protocol does not say what becomes of a picture that is no square: some hosts keep its shape, others fit it into
/// a square, and sway's own bar shows a red face in its place. So it goes by the programs that are known to keep it,
/// and only where nobody else has a part in the tray: neither as its watcher nor under a host's name.
class StatusNotifierHosts final : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierHosts(const QDBusConnection &bus) : m_bus(bus) {}

    /// Whether all keep a picture's shape, in a later turn; a later question takes the place of an earlier one.
    void ask(std::function<void(bool keepShape)> answered);
    /// No answer is wanted any more.
    void forget() { ++m_number; }

private:
    struct Inquiry {
        std::function<void(bool)> answered;
        qsizetype unanswered = 0;
        bool keepShape = true;
    };
    void askForProcess(const QString &name);
    void take(bool keepsShape);

    QDBusConnection m_bus;
    Inquiry m_inquiry;
    int m_number = 0; ///< counts the inquiries
};

} // namespace tavrine
