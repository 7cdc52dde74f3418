#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace tavrine {

/// What a launcher gives a start, so that the desktop lets its window come forward; empty for none.
struct StartIdentifiers {
    QByteArray startupId;       ///< as X11 has it
    QByteArray activationToken; ///< as Wayland has it
};

/// The program on the session bus, as launchers, later starts and shortcuts of the desktop call it. Lives on the main
/// thread, as long as the process.
///
///  1. org.freedesktop.Application: Activate and Open bring the program forward, since it opens no files;
///  ActivateAction
///     runs a word out of `startAction`, and an unknown one is answered with an error and does nothing.
///  2. An interface of its own for desktops that can only call a method without arguments: AltTap.
///  3. Whoever calls is answered before anything is opened. Arguments of other types are refused by the bus's rules,
///  and
///     identifiers longer than 1 KB count as none.
///  4. Where the bus has started the program for a call, a plain Activate is that start and no more, and an AltTap ends
///     the program again: a person who has quit it is not given it back by a tap of Alt.
class ApplicationObject final : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    using OnCalled = std::function<void(const StartIdentifiers &identifiers, const QString &action)>;

    /// The names of the two objects and of the interface that is our own.
    [[nodiscard]] static QString path();
    [[nodiscard]] static QString triggersPath();
    [[nodiscard]] static QString triggersInterface();

    /// `isByBus` tells of a start for a call that is still to come.
    ApplicationObject(OnCalled onCalled, bool isByBus);

    void registerOn(QDBusConnection bus);

    /// What a call asks for, in a later turn: the caller waits for the answer, and opening a window takes its time.
    void called(const QVariantMap &platformData, const QString &action = {});
    /// The answer to the present call.
    void refuse(const QString &action);
    void altTapped();

private:
    const OnCalled m_onCalled;
    QObject *const m_triggers;
    std::optional<QDeadlineTimer> m_untilStart; ///< until then a call may be the one that the bus started this for
};

} // namespace tavrine
