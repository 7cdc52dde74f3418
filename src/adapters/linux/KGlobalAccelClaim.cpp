#include "adapters/linux/KGlobalAccelClaim.h"

#include "adapters/linux/BusValues.h"
#include "adapters/linux/SessionBus.h"

#include <QDBusMetaType>

#include <algorithm>

namespace tavrine {
namespace {

// Of the service's own header.
constexpr uint present = 2;
constexpr uint noAutoloading = 4; ///< what it has stored for the action does not count
constexpr uint isDefault = 8;     ///< is about the default keys, which the settings show beside the person's

constexpr qsizetype longestSequence = 4;

bool hasKey(const QList<KeySequence> &sequences) {
    return std::ranges::any_of(sequences, [](const KeySequence &each) {
        return std::ranges::any_of(each.keys, [](int key) { return key != 0; });
    });
}

QList<KeySequence> sequencesIn(const QVariant &answer) {
    return busValue<QList<KeySequence>>(answer, QLatin1String("a(ai)"));
}

QVariant asArgument(int key) {
    return QVariant::fromValue(QList<KeySequence>{{{key, 0, 0, 0}}});
}

} // namespace

const QString KGlobalAccelClaim::service = QStringLiteral("org.kde.kglobalaccel");
const QString KGlobalAccelClaim::path = QStringLiteral("/kglobalaccel");
const QString KGlobalAccelClaim::interface = QStringLiteral("org.kde.KGlobalAccel");

QDBusArgument &operator<<(QDBusArgument &argument, const KeySequence &sequence) {
    argument.beginStructure();
    argument << sequence.keys;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, KeySequence &sequence) {
    argument.beginStructure();
    argument >> sequence.keys;
    argument.endStructure();
    sequence.keys.resize(std::min(sequence.keys.size(), longestSequence));
    return argument;
}

KGlobalAccelClaim::KGlobalAccelClaim(Wish wish, Answers answers)
    : m_wish(std::move(wish)), m_answers(std::move(answers)) {
    qDBusRegisterMetaType<KeySequence>();
    qDBusRegisterMetaType<QList<KeySequence>>();
}

KGlobalAccelClaim::~KGlobalAccelClaim() {
    // The keys go to other programs; what the person has set over there stays known.
    send("setInactive", {m_wish.action});
}

void KGlobalAccelClaim::forget() {
    delete m_question;
    m_question = nullptr;
    m_bus.reset();
    m_isSettled = false;
    m_wasRetried = false;
}

void KGlobalAccelClaim::ask(const QDBusConnection &bus) {
    forget();
    m_bus = bus;
    m_question = new QObject(this);
    send("doRegister", {m_wish.action});
    // Other default keys than last time: the program itself wants others, so the stored ones do not count.
    call("defaultShortcutKeys", {m_wish.action}, [this](const QVariant &answer) {
        const auto before = sequencesIn(answer);
        const bool isAsBefore = !before.isEmpty() && before.first().keys.value(0) == m_wish.key;
        send("setShortcutKeys", {m_wish.action, asArgument(m_wish.key), isDefault});
        setShortcut(isAsBefore);
    });
}

void KGlobalAccelClaim::setShortcut(bool isPersonsChoiceKept) {
    call("setShortcutKeys",
         {m_wish.action, asArgument(m_wish.key), isPersonsChoiceKept ? present : present | noAutoloading},
         [this](const QVariant &answer) { onShortcut(sequencesIn(answer)); });
}

void KGlobalAccelClaim::onShortcut(const QList<KeySequence> &given) {
    if (hasKey(given))
        settle(true);
    else
        lookWhoHasIt();
}

void KGlobalAccelClaim::lookWhoHasIt() {
    call("actionList", {QVariant::fromValue(KeySequence{{m_wish.key, 0, 0, 0}})},
         [this](const QVariant &answer) { onHolder(answer.toStringList()); });
}

void KGlobalAccelClaim::onHolder(const QStringList &holder) {
    const bool isOurs = holder.value(0) == m_wish.action.first();
    const QString &other = holder.value(1);
    if (isOurs && other != action() && !m_answers.isWanted(other) && !m_wasRetried) {
        // A hot key that this program had and gave up.
        m_wasRetried = true;
        send("unregister", {holder.first(), other});
        setShortcut(false);
        return;
    }
    // With nobody to hold it, it was the person who took the keys away: that is remembered over there.
    if (!holder.isEmpty())
        send("unregister", {m_wish.action.first(), action()});
    settle(false);
}

void KGlobalAccelClaim::settle(bool isHeld) {
    m_isSettled = true;
    m_answers.settled(isHeld);
}

void KGlobalAccelClaim::send(const char *method, const QVariantList &arguments) const {
    if (!m_bus)
        return;
    auto message = QDBusMessage::createMethodCall(service, path, interface, QLatin1String(method));
    message.setAutoStartService(false);
    message.setArguments(arguments);
    m_bus->send(message);
}

void KGlobalAccelClaim::call(const char *method, const QVariantList &arguments,
                             std::function<void(const QVariant &)> answered) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, QLatin1String(method));
    message.setAutoStartService(false);
    message.setArguments(arguments);
    sessionBus::ask(*m_bus, message, m_question, [this, answered = std::move(answered)](const QDBusPendingCall &reply) {
        if (reply.isError())
            settle(false);
        else
            answered(reply.reply().arguments().value(0));
    });
}

} // namespace tavrine
