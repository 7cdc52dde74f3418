#include "adapters/linux/OverlayTree.h"

#include "adapters/linux/NarratedWords.h"
#include "base/DesktopWords.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QLocale>

#include <utility>

namespace tavrine {
namespace {

// Roles and states as the protocol numbers them.
constexpr quint32 canvasRole = 6;
constexpr quint32 windowRole = 69;
constexpr quint32 applicationRole = 75;
constexpr int activeState = 1;
constexpr int enabledState = 8;
constexpr int focusableState = 11;
constexpr int focusedState = 12;
constexpr int sensitiveState = 24;
constexpr int showingState = 25;
constexpr int visibleState = 30;
constexpr quint32 overlayLayer = 7;

const auto atspi = QStringLiteral("org.a11y.atspi.");
const auto accessible = atspi + QStringLiteral("Accessible");
const auto application = atspi + QStringLiteral("Application");
const auto component = atspi + QStringLiteral("Component");
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");

struct NodeRow {
    const char *path;
    quint32 role;
    const char *roleName;
};
constexpr NodeRow nodes[] = {
    {"/org/a11y/atspi/accessible/root", applicationRole, "application"},
    {"/org/a11y/atspi/accessible/window", windowRole, "window"},
    {"/org/a11y/atspi/accessible/area", canvasRole, "canvas"},
};

QRect rectOf(const std::array<int, 4> &area) {
    return {area[0], area[1], area[2], area[3]};
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleReference &reference) {
    argument.beginStructure();
    argument << reference.owner << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleReference &reference) {
    argument.beginStructure();
    argument >> reference.owner >> reference.path;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const AccessibleRelation &relation) {
    argument.beginStructure();
    argument << relation.kind << relation.targets;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AccessibleRelation &relation) {
    argument.beginStructure();
    argument >> relation.kind >> relation.targets;
    argument.endStructure();
    return argument;
}

OverlayTree::OverlayTree(const QDBusConnection &bus, QObject *parent) : QDBusVirtualObject(parent), m_bus(bus) {
    qDBusRegisterMetaType<AccessibleReference>();
    qDBusRegisterMetaType<QList<AccessibleReference>>();
    qDBusRegisterMetaType<AccessibleRelation>();
    qDBusRegisterMetaType<QList<AccessibleRelation>>();
    qDBusRegisterMetaType<QMap<QString, QString>>();
}

void OverlayTree::enter(AccessibleReference desktop) {
    m_desktop = std::move(desktop);
    m_isIn = true;
    signal(Node::window, QStringLiteral("Window"), QStringLiteral("Activate"), {}, 0, nameOf(Node::window));
    signal(Node::area, QStringLiteral("Object"), QStringLiteral("StateChanged"), QStringLiteral("focused"), 1, 0);
}

void OverlayTree::leave() {
    if (!std::exchange(m_isIn, false))
        return;
    signal(Node::area, QStringLiteral("Object"), QStringLiteral("StateChanged"), QStringLiteral("focused"), 0, 0);
    signal(Node::window, QStringLiteral("Window"), QStringLiteral("Deactivate"), {}, 0, nameOf(Node::window));
}

void OverlayTree::tell(const NarratedPlace &place) {
    if (place.kind == NarratedPlace::Kind::screen) {
        m_screen = rectOf(place.area);
        return;
    }
    m_area = rectOf(place.area);
    const QString words = narratedWords(place);
    const bool isFirst = m_words.isEmpty();
    if (std::exchange(m_words, words) == words)
        return;
    m_hasMoved = m_hasMoved || (m_isIn && !isFirst);
    if (m_isIn)
        signal(Node::area, QStringLiteral("Object"), QStringLiteral("PropertyChange"),
               QStringLiteral("accessible-description"), 0, descriptionOf(Node::area));
}

QString OverlayTree::introspect(const QString &) const {
    return {}; // whoever asks here knows the protocol
}

bool OverlayTree::handleMessage(const QDBusMessage &message, const QDBusConnection &connection) {
    const std::optional<Node> node = nodeAt(message.path());
    const std::optional<QVariantList> values = node ? answer(*node, message) : std::nullopt;
    if (values)
        return connection.send(message.createReply(*values));
    return false; // QtDBus says that there is none of that
}

std::optional<OverlayTree::Node> OverlayTree::nodeAt(const QString &path) {
    for (size_t i = 0; i < std::size(nodes); ++i) {
        if (path == QLatin1String(nodes[i].path))
            return Node(i);
    }
    return std::nullopt;
}

AccessibleReference OverlayTree::root() const {
    return referenceTo(Node::application);
}

AccessibleReference OverlayTree::referenceTo(Node node) const {
    return {m_bus.baseService(), QDBusObjectPath(QLatin1String(nodes[size_t(node)].path))};
}

AccessibleReference OverlayTree::parentOf(Node node) const {
    return node == Node::application ? m_desktop : referenceTo(Node(int(node) - 1));
}

QList<AccessibleReference> OverlayTree::childrenOf(Node node) const {
    return node == Node::area ? QList<AccessibleReference>() : QList{referenceTo(Node(int(node) + 1))};
}

QString OverlayTree::nameOf(Node node) const {
    switch (node) {
    case Node::application:
        return QStringLiteral("screencapture");
    case Node::window:
        return inDesktopWords(QStringLiteral("Capture of the screen"));
    case Node::area:
        return inDesktopWords(QStringLiteral("Area to capture"));
    }
    return {};
}

QString OverlayTree::descriptionOf(Node node) const {
    if (node != Node::area)
        return {};
    return m_hasMoved || m_words.isEmpty() ? m_words : m_words + QStringLiteral(". ") + narratedKeys();
}

QStringList OverlayTree::interfacesOf(Node node) const {
    return {accessible, node == Node::application ? application : component};
}

QRect OverlayTree::placeOf(Node node) const {
    return node == Node::area ? m_area : m_screen;
}

QList<quint32> OverlayTree::statesOf(Node node) const {
    std::vector<int> states{enabledState, sensitiveState, showingState, visibleState};
    if (node == Node::window)
        states.push_back(activeState);
    if (node == Node::area)
        states.insert(states.end(), {focusableState, focusedState});
    quint32 bits = 0;
    for (const int state : states)
        bits |= 1U << unsigned(state);
    return {bits, 0};
}

QVariantMap OverlayTree::propertiesOf(Node node, const QString &interface) const {
    if (interface == accessible)
        return {{QStringLiteral("Name"), nameOf(node)},
                {QStringLiteral("Description"), descriptionOf(node)},
                {QStringLiteral("Parent"), QVariant::fromValue(parentOf(node))},
                {QStringLiteral("ChildCount"), int(childrenOf(node).size())},
                {QStringLiteral("Locale"), QLocale().name()},
                {QStringLiteral("AccessibleId"), QString()}};
    if (interface == application && node == Node::application)
        return {{QStringLiteral("ToolkitName"), QStringLiteral("Tavrine")},
                {QStringLiteral("Version"), QStringLiteral(TAVRINE_VERSION)},
                {QStringLiteral("AtspiVersion"), QStringLiteral("2.1")},
                {QStringLiteral("Id"), 0}};
    return {};
}

std::optional<QVariantList> OverlayTree::answer(Node node, const QDBusMessage &call) const {
    if (call.interface() == properties)
        return answerOfProperties(node, call);
    if (call.interface() == accessible)
        return answerOfAccessible(node, call);
    if (call.interface() == component && node != Node::application)
        return answerOfPlace(node, call.member());
    if (call.interface() == application && call.member() == QLatin1String("GetLocale"))
        return QVariantList{QLocale().name()};
    return std::nullopt;
}

std::optional<QVariantList> OverlayTree::answerOfProperties(Node node, const QDBusMessage &call) const {
    const QVariantList asked = call.arguments();
    const QVariantMap known = propertiesOf(node, asked.value(0).toString());
    if (call.member() == QLatin1String("GetAll"))
        return QVariantList{known};
    if (call.member() == QLatin1String("Set"))
        return QVariantList{}; // the registry's number of the program, which nobody asks for again
    const auto value = known.constFind(asked.value(1).toString());
    if (call.member() != QLatin1String("Get") || value == known.cend())
        return std::nullopt;
    return QVariantList{QVariant::fromValue(QDBusVariant(*value))};
}

std::optional<QVariantList> OverlayTree::answerOfAccessible(Node node, const QDBusMessage &call) const {
    const QString member = call.member();
    const NodeRow &row = nodes[size_t(node)];
    const QList<AccessibleReference> children = childrenOf(node);
    if (member == QLatin1String("GetChildren"))
        return QVariantList{QVariant::fromValue(children)};
    if (member == QLatin1String("GetChildAtIndex")) {
        const AccessibleReference none{QString(), QDBusObjectPath(QStringLiteral("/org/a11y/atspi/null"))};
        return QVariantList{QVariant::fromValue(children.value(call.arguments().value(0).toInt(), none))};
    }
    if (member == QLatin1String("GetIndexInParent"))
        return QVariantList{0};
    if (member == QLatin1String("GetRole"))
        return QVariantList{row.role};
    if (member == QLatin1String("GetRoleName") || member == QLatin1String("GetLocalizedRoleName"))
        return QVariantList{QLatin1String(row.roleName)};
    if (member == QLatin1String("GetState"))
        return QVariantList{QVariant::fromValue(statesOf(node))};
    if (member == QLatin1String("GetInterfaces"))
        return QVariantList{interfacesOf(node)};
    if (member == QLatin1String("GetApplication"))
        return QVariantList{QVariant::fromValue(root())};
    if (member == QLatin1String("GetAttributes"))
        return QVariantList{QVariant::fromValue(QMap<QString, QString>())};
    if (member == QLatin1String("GetRelationSet"))
        return QVariantList{QVariant::fromValue(QList<AccessibleRelation>())};
    return std::nullopt;
}

std::optional<QVariantList> OverlayTree::answerOfPlace(Node node, const QString &member) const {
    const QRect place = placeOf(node);
    if (member == QLatin1String("GetExtents"))
        return QVariantList{place};
    if (member == QLatin1String("GetPosition"))
        return QVariantList{place.x(), place.y()};
    if (member == QLatin1String("GetSize"))
        return QVariantList{place.width(), place.height()};
    if (member == QLatin1String("GetLayer"))
        return QVariantList{overlayLayer};
    if (member == QLatin1String("GetAlpha"))
        return QVariantList{1.0};
    if (member == QLatin1String("GrabFocus"))
        return QVariantList{node == Node::area};
    return std::nullopt;
}

void OverlayTree::signal(Node node, const QString &kind, const QString &member, const QString &detail, int value,
                         const QVariant &data) {
    auto event = QDBusMessage::createSignal(QLatin1String(nodes[size_t(node)].path),
                                            atspi + QStringLiteral("Event.") + kind, member);
    event << detail << value << 0 << QVariant::fromValue(QDBusVariant(data)) << QVariantMap();
    m_bus.send(event);
}

} // namespace tavrine
