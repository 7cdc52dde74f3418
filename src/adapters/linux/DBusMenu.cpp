#include "adapters/linux/DBusMenu.h"

#include <QDBusMetaType>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int rootId = 0;
constexpr int firstSeparatorId = 10'000; // above all lines; separators have ids of their own on the bus
constexpr qsizetype mostAtOnce = 1000;   // ids or events of one call: a menu has a few dozen lines

/// An underscore before a letter would underline it.
QString escaped(QString label) {
    return label.replace(u'_', QStringLiteral("__"));
}

QVariantMap propertiesOf(const StatusMenuLine &line, const QStringList &names) {
    QVariantMap all;
    if (line.isSeparator()) {
        all.insert(QStringLiteral("type"), QStringLiteral("separator"));
    } else {
        all.insert(QStringLiteral("label"), escaped(line.label));
        if (!line.isEnabled)
            all.insert(QStringLiteral("enabled"), false);
        if (line.isOn) {
            all.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
            all.insert(QStringLiteral("toggle-state"), *line.isOn ? 1 : 0);
        }
        if (!line.keys.isEmpty())
            all.insert(QStringLiteral("shortcut"), QVariant::fromValue(QList<QStringList>{line.keys}));
    }
    if (names.isEmpty())
        return all;
    QVariantMap wanted;
    for (const QString &name : names) {
        if (const auto found = all.constFind(name); found != all.constEnd())
            wanted.insert(name, *found);
    }
    return wanted;
}

QVariantMap rootProperties() {
    return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
}

/// The lines with the ids that they have on the bus.
std::vector<std::pair<int, StatusMenuLine>> numbered(const StatusItemMenu &menu) {
    std::vector<std::pair<int, StatusMenuLine>> lines;
    int separator = firstSeparatorId;
    for (const StatusMenuLine &line : menu.lines())
        lines.emplace_back(line.isSeparator() ? separator++ : line.id, line);
    return lines;
}

} // namespace

DBusMenu::DBusMenu(StatusItemMenu menu) : m_menu(std::move(menu)), m_adaptor(new DBusMenuAdaptor(this)) {}

DBusMenu::~DBusMenu() = default;

void DBusMenu::exportOn(QDBusConnection bus, const QString &path) {
    bus.registerObject(path, this, QDBusConnection::ExportAdaptors);
}

void DBusMenu::changed() {
    Q_EMIT m_adaptor->LayoutUpdated(++m_revision, rootId);
}

DBusMenuNode DBusMenu::layout(int parentId, int recursionDepth, const QStringList &names) {
    const auto lines = numbered(m_menu);
    if (parentId != rootId) {
        const auto found = std::ranges::find(lines, parentId, &std::pair<int, StatusMenuLine>::first);
        return found == lines.end() ? DBusMenuNode{} : DBusMenuNode{parentId, propertiesOf(found->second, names), {}};
    }
    DBusMenuNode root{rootId, rootProperties(), {}};
    if (recursionDepth != 0) {
        for (const auto &[id, line] : lines)
            root.children.append(QDBusVariant(QVariant::fromValue(DBusMenuNode{id, propertiesOf(line, names), {}})));
    }
    return root;
}

std::vector<DBusMenuProperties> DBusMenu::properties(const QList<int> &ids, const QStringList &names) {
    std::vector<DBusMenuProperties> found;
    if (ids.size() > mostAtOnce)
        return found;
    if (ids.isEmpty() || ids.contains(rootId))
        found.push_back({rootId, rootProperties()});
    for (const auto &[id, line] : numbered(m_menu)) {
        if (ids.isEmpty() || ids.contains(id))
            found.push_back({id, propertiesOf(line, names)});
    }
    return found;
}

bool DBusMenu::take(int id, const QString &eventId) {
    if (id == rootId)
        return true;
    const auto lines = m_menu.lines();
    const auto found = std::ranges::find(lines, id, &StatusMenuLine::id);
    if (found == lines.end())
        return false;
    if (eventId == QLatin1String("clicked") && found->isEnabled)
        m_menu.onChosen(id);
    return true;
}

DBusMenuAdaptor::DBusMenuAdaptor(DBusMenu *menu) : QDBusAbstractAdaptor(menu), m_menu(*menu) {
    qDBusRegisterMetaType<DBusMenuNode>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
    setAutoRelaySignals(true);
}

uint DBusMenuAdaptor::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                DBusMenuNode &layout) {
    layout = m_menu.layout(parentId, recursionDepth, propertyNames);
    return m_menu.m_revision;
}

QList<DBusMenuProperties> DBusMenuAdaptor::GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames) {
    const auto found = m_menu.properties(ids, propertyNames);
    return {found.begin(), found.end()};
}

QDBusVariant DBusMenuAdaptor::GetProperty(int id, const QString &name) {
    const auto found = m_menu.properties({id}, {});
    const QVariant value = found.empty() ? QVariant() : found.front().properties.value(name);
    return QDBusVariant(value.isValid() ? value : QVariant(QString()));
}

void DBusMenuAdaptor::Event(int id, const QString &eventId, const QDBusVariant & /*data*/, uint /*timestamp*/) {
    m_menu.take(id, eventId);
}

QList<int> DBusMenuAdaptor::EventGroup(const QList<DBusMenuEvent> &events) {
    QList<int> errors;
    for (const DBusMenuEvent &event : events.first(std::min(events.size(), mostAtOnce))) {
        if (!m_menu.take(event.id, event.eventId))
            errors.append(event.id);
    }
    return errors;
}

/// Lines are told anew whenever they are asked for, so there is nothing to fetch first.
bool DBusMenuAdaptor::AboutToShow(int /*id*/) {
    return true;
}

QList<int> DBusMenuAdaptor::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors) {
    idErrors.clear();
    return ids.contains(rootId) ? QList<int>{rootId} : QList<int>{};
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuNode &node) {
    argument.beginStructure();
    argument << node.id << node.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const QDBusVariant &child : node.children)
        argument << child;
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuNode &node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.beginArray();
    node.children.clear();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        node.children.append(child);
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuProperties &properties) {
    argument.beginStructure();
    argument << properties.id << properties.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuProperties &properties) {
    argument.beginStructure();
    argument >> properties.id >> properties.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &event) {
    argument.beginStructure();
    argument << event.id << event.eventId << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &event) {
    argument.beginStructure();
    argument >> event.id >> event.eventId >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

} // namespace tavrine
