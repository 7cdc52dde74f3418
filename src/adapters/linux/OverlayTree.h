#pragma once

#include "adapters/linux/NarrationProtocol.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QRect>
#include <QVariantMap>

#include <optional>

namespace tavrine {

/// An object of the accessibility bus: whose it is, and its path there.
struct AccessibleReference {
    QString owner;
    QDBusObjectPath path;
};
QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleReference &reference);
const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleReference &reference);

/// How an object belongs to others.
struct AccessibleRelation {
    quint32 kind = 0;
    QList<AccessibleReference> targets;
};
QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleRelation &relation);
const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleRelation &relation);

/// What a screen reader finds of a capture: an application with one window, and in it the area, which has the keyboard
/// and whose description is where the person has come to. Each new one is told, as the description of the control that
/// has the keyboard is in every window.
///
/// Owned by the narrator; its one thread. Speaks the protocol of the accessibility bus by itself: the toolkit's bridge
/// is only there with the toolkit's windows, and the overlay is none of those.
class OverlayTree final : public QDBusVirtualObject {
    Q_OBJECT

public:
    explicit OverlayTree(const QDBusConnection &bus, QObject *parent = nullptr);

    /// Comes before the screen readers: `desktop` is what the registry has given in return.
    void enter(AccessibleReference desktop);
    /// Goes away from them.
    void leave();
    /// The latest counts when it enters.
    void tell(const NarratedPlace &place);

    [[nodiscard]] AccessibleReference root() const;
    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

    static constexpr auto folder = "/org/a11y/atspi";

private:
    enum class Node { application, window, area };

    [[nodiscard]] static std::optional<Node> nodeAt(const QString &path);
    [[nodiscard]] AccessibleReference referenceTo(Node node) const;
    [[nodiscard]] AccessibleReference parentOf(Node node) const;
    [[nodiscard]] QList<AccessibleReference> childrenOf(Node node) const;
    [[nodiscard]] QString nameOf(Node node) const;
    [[nodiscard]] QString descriptionOf(Node node) const;
    [[nodiscard]] QStringList interfacesOf(Node node) const;
    [[nodiscard]] QRect placeOf(Node node) const;
    [[nodiscard]] QList<quint32> statesOf(Node node) const;
    [[nodiscard]] QVariantMap propertiesOf(Node node, const QString &interface) const;

    [[nodiscard]] std::optional<QVariantList> answer(Node node, const QDBusMessage &call) const;
    [[nodiscard]] std::optional<QVariantList> answerOfProperties(Node node, const QDBusMessage &call) const;
    [[nodiscard]] std::optional<QVariantList> answerOfAccessible(Node node, const QDBusMessage &call) const;
    [[nodiscard]] std::optional<QVariantList> answerOfPlace(Node node, const QString &member) const;
    void signal(Node node, const QString &kind, const QString &member, const QString &detail, int value,
                const QVariant &data);

    QDBusConnection m_bus;
    AccessibleReference m_desktop;
    bool m_isIn = false;
    bool m_hasMoved = false; ///< what the keys do has been heard
    QRect m_screen;
    QRect m_area;
    QString m_words;
};

} // namespace tavrine

Q_DECLARE_METATYPE(tavrine::AccessibleReference)
Q_DECLARE_METATYPE(tavrine::AccessibleRelation)
