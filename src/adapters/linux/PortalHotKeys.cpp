#include "adapters/linux/PortalHotKeys.h"

#include "adapters/linux/HotKeyLetters.h"
#include "adapters/linux/PortalRequest.h"
#include "adapters/linux/SessionBus.h"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <algorithm>

namespace tavrine {
namespace {

const auto interface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
constexpr int mostShortcuts = 64; // in an answer; we ask for four

struct BoundShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const BoundShortcut &shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, BoundShortcut &shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

/// In the words of the portals' shortcuts specification; none for a key without a letter or a digit.
std::optional<QString> triggerOf(int keyCode, quint32 modifiers) {
    const auto letter = letterOf(keyCode);
    if (!letter)
        return std::nullopt;
    QString trigger;
    if (modifiers & hotKeyModifier::control)
        trigger += QStringLiteral("CTRL+");
    if (modifiers & hotKeyModifier::option)
        trigger += QStringLiteral("ALT+");
    if (modifiers & hotKeyModifier::shift)
        trigger += QStringLiteral("SHIFT+");
    if (modifiers & hotKeyModifier::command)
        trigger += QStringLiteral("LOGO+");
    return trigger + QChar(*letter).toLower();
}

QString nameOf(quint32 id) {
    return QStringLiteral("hotkey-%1").arg(id);
}

std::optional<quint32> idOf(const QString &name) {
    bool isNumber = false;
    const quint32 id = name.startsWith(QLatin1String("hotkey-")) ? name.mid(7).toUInt(&isNumber) : 0;
    return isNumber ? std::optional(id) : std::nullopt;
}

} // namespace

PortalHotKeys::PortalHotKeys() {
    qDBusRegisterMetaType<BoundShortcut>();
    qDBusRegisterMetaType<QList<BoundShortcut>>();
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
}

PortalHotKeys::~PortalHotKeys() {
    closeSession();
}

void PortalHotKeys::onBusOpen(const QDBusConnection &bus) {
    m_session.clear(); // it went with the bus
    closeSession();
    if (!bus.isConnected()) {
        m_bus.reset();
        return settleAll(true);
    }
    m_bus = bus;
    // Of any sender: with a name the toolkit would ask who has it, and wait. Who sends such a signal can as well ask
    // for our actions.
    m_bus->connect(QString(), PortalRequest::path, interface, QStringLiteral("Activated"), this,
                   SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    // Of any session's path.
    m_bus->connect(QString(), QString(), PortalRequest::sessionInterface, QStringLiteral("Closed"), this,
                   SLOT(closed(QVariantMap, QDBusMessage)));
    m_watcher =
        std::make_unique<QDBusServiceWatcher>(PortalRequest::service, bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &before, const QString &owner) {
                if (!before.isEmpty())
                    loseSession();
                // One that went is not called back: it might go with each question again.
                const bool isReplaced = !before.isEmpty() && !owner.isEmpty();
                const bool isNew = before.isEmpty() && m_session.isEmpty() && !m_isBinding;
                if (isReplaced || isNew)
                    bindSoon();
            });
    bindSoon();
}

void PortalHotKeys::installHandler(Handler handler) {
    m_handler = std::move(handler);
}

void PortalHotKeys::removeHandler() {
    m_handler = nullptr;
}

std::optional<HotKeyRef> PortalHotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    const auto trigger = triggerOf(keyCode, modifiers);
    const bool isOurs = std::ranges::any_of(
        m_wishes, [&](const auto &each) { return each.second.trigger == trigger || each.second.id == id.id; });
    if (!trigger || isOurs)
        return std::nullopt;
    m_wishes[++m_lastRef] = {id.id, *trigger};
    bindSoon();
    return m_lastRef;
}

void PortalHotKeys::unregisterHotKey(HotKeyRef ref) {
    if (m_wishes.erase(ref) > 0)
        bindSoon();
}

HotKeyTraits PortalHotKeys::traits() const {
    const HotKeyAvailability known = m_held.empty() ? HotKeyAvailability::none : HotKeyAvailability::there;
    return {.availability = m_hasAnswered ? known : HotKeyAvailability::asking,
            .areByPosition = false,
            .isKnownAtOnce = false,
            .keepsKeyboard = false,
            .isAskedOfPerson = true};
}

void PortalHotKeys::setTitle(HotKeyId id, const QString &title) {
    m_titles[id.id] = title;
}

void PortalHotKeys::setOnHeld(std::function<void(HotKeyRef, bool)> handler) {
    m_onHeld = std::move(handler);
}

PortalHotKeys::Shortcuts PortalHotKeys::wanted() const {
    Shortcuts wanted;
    for (const auto &[ref, wish] : m_wishes) {
        const auto title = m_titles.find(wish.id);
        wanted[wish.id] = {wish.trigger, title == m_titles.end() ? nameOf(wish.id) : title->second};
    }
    return wanted;
}

/// Once for all that is registered and given up within a turn.
void PortalHotKeys::bindSoon() {
    if (!std::exchange(m_isBindDue, true))
        QMetaObject::invokeMethod(this, &PortalHotKeys::bind, Qt::QueuedConnection);
}

void PortalHotKeys::bind() {
    m_isBindDue = false;
    const Shortcuts wanted = this->wanted();
    if (wanted == m_asked && (m_isBinding || !m_session.isEmpty()))
        return m_isBinding ? void() : settleAll(true);
    closeSession();
    if (wanted.empty() || !m_bus)
        return;
    createSession(wanted);
}

void PortalHotKeys::createSession(const Shortcuts &wanted) {
    m_asked = wanted;
    m_isBinding = true;
    m_questions = std::make_unique<QObject>();
    PortalRequest::introduce(*m_bus);
    new PortalRequest(
        *m_bus, PortalRequest::message(interface, QStringLiteral("CreateSession")),
        {{QStringLiteral("session_handle_token"), PortalRequest::newToken()}},
        [this, wanted](const PortalAnswer &answer) {
            m_session = answer.results.value(QStringLiteral("session_handle")).toString();
            if (m_session.isEmpty())
                return settleAll(true);
            bindShortcuts(wanted);
        },
        m_questions.get());
}

void PortalHotKeys::bindShortcuts(const Shortcuts &wanted) {
    QList<BoundShortcut> shortcuts;
    for (const auto &[id, shortcut] : wanted)
        shortcuts.append({nameOf(id),
                          {{QStringLiteral("description"), shortcut.title},
                           {QStringLiteral("preferred_trigger"), shortcut.trigger}}});
    auto message = PortalRequest::message(interface, QStringLiteral("BindShortcuts"));
    message << QVariant::fromValue(QDBusObjectPath(m_session)) << QVariant::fromValue(shortcuts) << QString();
    new PortalRequest(
        *m_bus, message, {},
        [this](const PortalAnswer &answer) {
            if (answer.outcome == PortalAnswer::Outcome::given)
                bound(answer.results);
            settleAll(true);
        },
        m_questions.get());
}

void PortalHotKeys::bound(const QVariantMap &results) {
    const auto answer = results.value(QStringLiteral("shortcuts"));
    if (answer.userType() != qMetaTypeId<QDBusArgument>())
        return;
    const auto argument = answer.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(sa{sv})"))
        return;
    const auto shortcuts = qdbus_cast<QList<BoundShortcut>>(argument);
    for (const BoundShortcut &each : shortcuts.first(std::min<qsizetype>(shortcuts.size(), mostShortcuts)))
        if (const auto id = idOf(each.id); id && m_asked.contains(*id))
            m_held.insert(*id);
}

/// Tells every registration what is known of it.
void PortalHotKeys::settleAll(bool isAnswered) {
    m_isBinding = false;
    m_hasAnswered = isAnswered;
    if (!m_onHeld)
        return;
    const auto wishes = m_wishes; // who is told may register anew
    for (const auto &[ref, wish] : wishes)
        m_onHeld(ref, m_held.contains(wish.id));
}

void PortalHotKeys::closeSession() {
    m_questions.reset();
    m_isBinding = false;
    m_asked.clear();
    m_held.clear();
    const QString session = std::exchange(m_session, QString());
    if (session.isEmpty() || !m_bus)
        return;
    auto message = QDBusMessage::createMethodCall(PortalRequest::service, session, PortalRequest::sessionInterface,
                                                  QStringLiteral("Close"));
    message.setAutoStartService(false);
    m_bus->send(message);
}

void PortalHotKeys::closed(const QVariantMap & /*details*/, const QDBusMessage &news) {
    if (!m_session.isEmpty() && news.path() == m_session)
        loseSession();
}

void PortalHotKeys::loseSession() {
    m_session.clear(); // gone already
    closeSession();
    settleAll(true);
}

void PortalHotKeys::activated(const QDBusObjectPath &session, const QString &shortcut, qulonglong /*timestamp*/,
                              const QVariantMap & /*options*/) {
    const auto id = idOf(shortcut);
    if (session.path() != m_session || !id || !m_asked.contains(*id))
        return;
    if (const Handler handler = m_handler)
        static_cast<void>(handler({0, *id}));
}

} // namespace tavrine
