#include "adapters/linux/KGlobalAccelHotKeys.h"

#include "adapters/linux/HotKeyLetters.h"
#include "adapters/linux/KGlobalAccelClaim.h"
#include "adapters/linux/SessionBus.h"
#include "base/Program.h"

#include <algorithm>

namespace tavrine {
namespace {

const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");
constexpr qint64 longestRepeatMs = 1000; // a held key repeats within this; else its release was lost

/// As the toolkit numbers keys; none for a key without a letter or a digit.
std::optional<int> toolkitKey(int keyCode, quint32 modifiers) {
    const auto letter = letterOf(keyCode);
    if (!letter)
        return std::nullopt;
    Qt::KeyboardModifiers held;
    held.setFlag(Qt::MetaModifier, modifiers & hotKeyModifier::command);
    held.setFlag(Qt::ShiftModifier, modifiers & hotKeyModifier::shift);
    held.setFlag(Qt::AltModifier, modifiers & hotKeyModifier::option);
    held.setFlag(Qt::ControlModifier, modifiers & hotKeyModifier::control);
    return static_cast<int>(held.toInt()) | *letter;
}

/// What the service knows a hot key by.
QString actionOf(HotKeyId id) {
    return QStringLiteral("hotkey-%1").arg(id.id);
}

std::optional<quint32> idOf(const QString &action) {
    bool isNumber = false;
    const quint32 id = action.section(u'-', 1).toUInt(&isNumber);
    return isNumber ? std::optional(id) : std::nullopt;
}

} // namespace

KGlobalAccelHotKeys::KGlobalAccelHotKeys() {
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBusOpen(bus); });
}

KGlobalAccelHotKeys::~KGlobalAccelHotKeys() = default;

void KGlobalAccelHotKeys::onBusOpen(const QDBusConnection &bus) {
    for (const auto &[ref, claim] : m_claims)
        claim->forget();
    if (!bus.isConnected()) {
        m_bus.reset();
        return;
    }
    m_bus = bus;
    const QString &service = KGlobalAccelClaim::service;
    // Of any component's path: the arguments tell which. And of any sender: with a name the toolkit would ask who has
    // it, and wait. Who sends such a signal can as well ask for our actions.
    m_bus->connect(QString(), QString(), componentInterface, QStringLiteral("globalShortcutPressed"), this,
                   SLOT(pressed(QString, QString, qlonglong)));
    m_bus->connect(QString(), QString(), componentInterface, QStringLiteral("globalShortcutReleased"), this,
                   SLOT(released(QString, QString, qlonglong)));
    m_watcher = std::make_unique<QDBusServiceWatcher>(service, bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                m_held.clear();
                if (!owner.isEmpty())
                    return claimAll();
                for (const auto &[ref, claim] : m_claims) {
                    claim->forget();
                    settle(ref, false);
                }
            });
    claimAll();
}

void KGlobalAccelHotKeys::claimAll() {
    for (const auto &[ref, claim] : m_claims)
        claim->ask(*m_bus);
}

void KGlobalAccelHotKeys::installHandler(Handler handler) {
    m_handler = std::move(handler);
}

void KGlobalAccelHotKeys::removeHandler() {
    m_handler = nullptr;
}

std::optional<HotKeyRef> KGlobalAccelHotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    const auto key = toolkitKey(keyCode, modifiers);
    const QString action = actionOf(id);
    const bool isOurs = std::ranges::any_of(
        m_claims, [&](const auto &each) { return each.second->key() == key || each.second->action() == action; });
    if (!key || isOurs)
        return std::nullopt;
    const auto title = m_titles.find(id.id);
    const QString shown = title == m_titles.end() ? action : title->second;
    const HotKeyRef ref = ++m_lastRef;
    auto claim = std::make_unique<KGlobalAccelClaim>(
        KGlobalAccelClaim::Wish{{ownBundleIdentifier, action, QStringLiteral("Tavrine"), shown}, *key},
        KGlobalAccelClaim::Answers{.isWanted = [this](const QString &other) { return isClaimed(other); },
                                   .settled = [this, ref](bool isHeld) { settle(ref, isHeld); }});
    if (m_bus)
        claim->ask(*m_bus);
    m_claims[ref] = std::move(claim);
    return ref;
}

void KGlobalAccelHotKeys::unregisterHotKey(HotKeyRef ref) {
    m_claims.erase(ref);
}

HotKeyTraits KGlobalAccelHotKeys::traits() const {
    return {.areByPosition = false, .isKnownAtOnce = false, .keepsKeyboard = false};
}

void KGlobalAccelHotKeys::setTitle(HotKeyId id, const QString &title) {
    m_titles[id.id] = title;
}

void KGlobalAccelHotKeys::setOnHeld(std::function<void(HotKeyRef, bool)> handler) {
    m_onHeld = std::move(handler);
}

bool KGlobalAccelHotKeys::isSettled() const {
    return std::ranges::all_of(m_claims, [](const auto &each) { return each.second->isSettled(); });
}

void KGlobalAccelHotKeys::settle(HotKeyRef ref, bool isHeld) {
    if (m_onHeld)
        m_onHeld(ref, isHeld);
}

bool KGlobalAccelHotKeys::isClaimed(const QString &action) const {
    return std::ranges::any_of(m_claims, [&](const auto &each) { return each.second->action() == action; });
}

void KGlobalAccelHotKeys::pressed(const QString &component, const QString &action, qlonglong /*timestamp*/) {
    if (component != ownBundleIdentifier || !isClaimed(action))
        return;
    QElapsedTimer &last = m_held[action];
    const bool isRepeat = last.isValid() && last.elapsed() < longestRepeatMs;
    last.start();
    const auto id = idOf(action);
    if (isRepeat || !id)
        return;
    if (const Handler handler = m_handler)
        static_cast<void>(handler({0, *id}));
}

void KGlobalAccelHotKeys::released(const QString &component, const QString &action, qlonglong /*timestamp*/) {
    if (component == ownBundleIdentifier)
        m_held.erase(action);
}

} // namespace tavrine
