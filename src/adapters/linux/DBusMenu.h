#pragma once

#include "ports/StatusItem.h"

#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace tavrine {

/// A node of the menu as the protocol sends it: the id, what is not as it is by default, and the nodes below.
struct DBusMenuNode {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};
struct DBusMenuProperties {
    int id = 0;
    QVariantMap properties;
};
struct DBusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
};

class DBusMenuAdaptor;

/// The tray item's menu on the bus: com.canonical.dbusmenu, for trays that draw menus themselves. One level of lines
/// below the root, whose id is 0. Lives on the main thread.
///
/// What a client asks for and is not there (another id, another depth, an event of another kind) is answered with
/// nothing, as the protocol's own library does.
class DBusMenu final : public QObject {
    Q_OBJECT

public:
    explicit DBusMenu(StatusItemMenu menu);
    ~DBusMenu() override;

    void exportOn(QDBusConnection bus, const QString &path);
    /// Tells clients to ask again.
    void changed();

private:
    friend class DBusMenuAdaptor;
    [[nodiscard]] DBusMenuNode layout(int parentId, int recursionDepth, const QStringList &names);
    [[nodiscard]] std::vector<DBusMenuProperties> properties(const QList<int> &ids, const QStringList &names);
    /// False when there is no such line.
    bool take(int id, const QString &eventId);

    StatusItemMenu m_menu;
    DBusMenuAdaptor *m_adaptor;
    uint m_revision = 1;
};

/// What clients see.
class DBusMenuAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    explicit DBusMenuAdaptor(DBusMenu *menu);

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const { return QStringLiteral("ltr"); }
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames, tavrine::DBusMenuNode &layout);
    QList<tavrine::DBusMenuProperties> GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
    QDBusVariant GetProperty(int id, const QString &name);
    void Event(int id, const QString &eventId, const QDBusVariant &data, uint timestamp);
    QList<int> EventGroup(const QList<tavrine::DBusMenuEvent> &events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<tavrine::DBusMenuProperties> &updated,
                                const QList<tavrine::DBusMenuProperties> &removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    DBusMenu &m_menu;
};

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuNode &node);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuNode &node);
QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuProperties &properties);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuProperties &properties);
QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &event);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &event);

} // namespace tavrine

Q_DECLARE_METATYPE(tavrine::DBusMenuNode)
Q_DECLARE_METATYPE(tavrine::DBusMenuProperties)
Q_DECLARE_METATYPE(tavrine::DBusMenuEvent)
