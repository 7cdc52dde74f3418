#include "adapters/gnome/GnomeShell.h"

#include "adapters/linux/SessionBus.h"
#include "base/Program.h"

#include <QDBusArgument>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <memory>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

const auto shellName = QStringLiteral("org.gnome.Shell");
const QString objectPath = u'/' + QString(ownBundleIdentifier).replace(u'.', u'/') + QStringLiteral("/Shell");
const QString interfaceName = ownBundleIdentifier + QStringLiteral(".Shell");

constexpr auto forever = std::chrono::milliseconds(std::numeric_limits<int>::max()); // as the bus spells it
constexpr size_t mostWindows = 1024;
constexpr size_t mostScreens = 64;

// What the shell says is read as it stands, or not at all.

bool readPointer(const QVariant &value, GnomePointer &pointer) {
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(iiu)"))
        return false;
    int x = 0;
    int y = 0;
    argument.beginStructure();
    argument >> x >> y >> pointer.state;
    argument.endStructure();
    pointer.place = {x, y};
    return true;
}

bool readWindows(const QVariant &value, std::vector<GnomeWindow> &windows) {
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ssuu)"))
        return false;
    windows.clear();
    argument.beginArray();
    while (!argument.atEnd() && windows.size() < mostWindows) {
        GnomeWindow window;
        quint32 process = 0;
        argument.beginStructure();
        argument >> window.application >> window.windowClass >> process >> window.number;
        argument.endStructure();
        window.process = process;
        windows.push_back(window);
    }
    argument.endArray();
    return true;
}

std::vector<GnomePicture> readPictures(const QVariant &value) {
    const auto argument = value.value<QDBusArgument>();
    std::vector<GnomePicture> pictures;
    if (argument.currentSignature() != QLatin1String("a(iiiit)"))
        return pictures;
    argument.beginArray();
    while (!argument.atEnd() && pictures.size() < mostScreens) {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        quint64 length = 0;
        argument.beginStructure();
        argument >> x >> y >> width >> height >> length;
        argument.endStructure();
        pictures.push_back({QRect(x, y, width, height), static_cast<qint64>(length)});
    }
    argument.endArray();
    return pictures;
}

QDBusMessage callOf(const QString &owner, const QString &method, const QList<QVariant> &arguments) {
    auto call = QDBusMessage::createMethodCall(owner, objectPath, interfaceName, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

bool isLate(const QDBusPendingCall &call) {
    const auto type = call.error().type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout || type == QDBusError::TimedOut;
}

} // namespace

GnomeShell::GnomeShell(std::chrono::milliseconds patience) : m_patience(patience) {
    sessionBus::follow(this, [this](const QDBusConnection &bus) { onBus(bus); });
    QTimer::singleShot(longestSilence, this, [this] { settle(); });
}

void GnomeShell::whenSettled(QObject *context, const std::function<void()> &settled) {
    if (m_isSettled)
        settled();
    else
        connect(this, &GnomeShell::settled, context, settled, Qt::SingleShotConnection);
}

void GnomeShell::settle() {
    if (!std::exchange(m_isSettled, true))
        Q_EMIT settled();
}

void GnomeShell::onBus(const QDBusConnection &bus) {
    detach();
    m_owner.clear();
    m_bus.reset();
    if (!bus.isConnected())
        return settle();
    m_bus = bus;
    // Of any sender: naming the shell would have the toolkit ask the bus for its owner, and wait.
    m_bus->connect(QString(), objectPath, interfaceName, QString(), this, SLOT(onSignal(QDBusMessage)));
    m_bus->connect(QString(), QLatin1String(mutterMonitors::path), QLatin1String(mutterMonitors::interface),
                   QLatin1String(mutterMonitors::changed), this, SLOT(onMonitorsChanged(QDBusMessage)));
    const auto busName = QStringLiteral("org.freedesktop.DBus");
    const auto busPath = QStringLiteral("/org/freedesktop/DBus");
    m_bus->connect(busName, busPath, busName, QStringLiteral("NameOwnerChanged"), {shellName}, QString(), this,
                   SLOT(onOwnerChanged(QString, QString, QString)));
    auto call = QDBusMessage::createMethodCall(busName, busPath, busName, QStringLiteral("GetNameOwner"));
    call.setArguments({shellName});
    sessionBus::ask(*m_bus, call, this, [this](const QDBusPendingReply<QString> &reply) {
        if (reply.isError())
            settle();
        else if (m_owner.isEmpty())
            setOwner(reply.value());
    });
}

void GnomeShell::onOwnerChanged(const QString &, const QString &, const QString &after) {
    setOwner(after);
}

void GnomeShell::setOwner(const QString &owner) {
    if (owner == m_owner)
        return;
    detach();
    m_owner = owner;
    askForMonitors(); // first, so that they are known when the extension is
    attach();
}

void GnomeShell::onMonitorsChanged(const QDBusMessage &message) {
    if (message.service() == m_owner)
        askForMonitors();
}

/// Of the owner of the shell's name, for as long as it is that, until it answers: a shell that is busy, as at the
/// login, may never say again that it is ready.
void GnomeShell::askUntilAnswered(const QDBusMessage &call, const std::function<void(const QDBusMessage &)> &answered,
                                  const std::function<void()> &refused) {
    if (m_owner.isEmpty() || !m_bus)
        return;
    sessionBus::ask(
        *m_bus, call, this,
        [this, call, answered, refused, owner = m_owner](const QDBusPendingCall &pending) {
            if (owner != m_owner)
                return;
            if (!pending.isError())
                answered(pending.reply());
            else if (isLate(pending))
                askUntilAnswered(call, answered, refused);
            else if (refused)
                refused();
        },
        m_patience);
}

/// What is known stands until they are told.
void GnomeShell::askForMonitors() {
    askUntilAnswered(mutterMonitors::question(m_owner), [this](const QDBusMessage &answer) {
        const auto monitors = mutterMonitors::read(answer);
        if (std::exchange(m_monitors, monitors) != monitors)
            Q_EMIT monitorsChanged();
    });
}

double GnomeShell::finenessAt(QPoint corner) const {
    const auto found = std::ranges::find(m_monitors, corner, &MutterMonitor::corner);
    return found == m_monitors.end() ? 1 : found->fineness;
}

void GnomeShell::attach() {
    askUntilAnswered(
        callOf(m_owner, QStringLiteral("Attach"), {}),
        [this](const QDBusMessage &answer) {
            takeAttached(answer.arguments());
            settle();
        },
        [this] { settle(); });
}

void GnomeShell::takeAttached(const QList<QVariant> &arguments) {
    detach();
    std::vector<GnomeWindow> windows;
    GnomePointer pointer;
    if (arguments.size() != 3 || !readWindows(arguments.at(0), windows) || !readPointer(arguments.at(2), pointer))
        return;
    m_windows = std::move(windows);
    m_focused = arguments.at(1).toUInt();
    m_pointer = pointer;
    m_interval = 0ms;
    m_isAttached = true;
    tellInterval();
    Q_EMIT attached();
}

void GnomeShell::detach() {
    if (!std::exchange(m_isAttached, false))
        return;
    m_windows.clear();
    m_focused = 0;
    Q_EMIT detached();
}

void GnomeShell::onSignal(const QDBusMessage &message) {
    if (message.service() != m_owner)
        return;
    const QString name = message.member();
    const QList<QVariant> arguments = message.arguments();
    if (name == QLatin1String("Ready"))
        attach();
    else if (!m_isAttached)
        return;
    else if (name == QLatin1String("Gone"))
        detach();
    else if (name == QLatin1String("WindowsChanged") && arguments.size() == 2 &&
             readWindows(arguments.at(0), m_windows)) {
        m_focused = arguments.at(1).toUInt();
        Q_EMIT windowsChanged();
    } else if (name == QLatin1String("KeyPressed") && arguments.size() == 3 && readPointer(arguments.at(2), m_pointer))
        Q_EMIT keyPressed(arguments.at(0).toUInt());
    else if (name == QLatin1String("Input") && arguments.size() == 1) {
        const GnomePointer before = m_pointer;
        if (readPointer(arguments.at(0), m_pointer))
            Q_EMIT inputChanged(before);
    }
}

std::optional<GnomeWindow> GnomeShell::focusedWindow() const {
    const auto found = std::ranges::find(m_windows, m_focused, &GnomeWindow::number);
    return m_focused == 0 || found == m_windows.end() ? std::nullopt : std::optional(*found);
}

void GnomeShell::ask(const QString &method, const QList<QVariant> &arguments, QObject *context,
                     std::function<void(const QDBusPendingCall &)> answered) {
    sessionBus::ask(
        *m_bus, callOf(m_owner, method, arguments), context,
        [answered = std::move(answered)](const QDBusPendingCall &call) {
            if (answered)
                answered(call);
        },
        m_patience);
}

void GnomeShell::grabKey(const QString &accelerator, QObject *context, std::function<void(quint32)> answered) {
    if (!m_isAttached)
        return;
    auto *const patience = new QTimer(context);
    patience->setSingleShot(true);
    connect(patience, &QTimer::timeout, context, [answered] { answered(0); });
    patience->start(m_patience);
    // The bus would throw away what comes later, and the shell hold a key that nobody knows of.
    sessionBus::ask(
        *m_bus, callOf(m_owner, QStringLiteral("GrabKey"), {accelerator}), context,
        [patience, answered = std::move(answered)](const QDBusPendingReply<quint32> &reply) {
            const bool isLate = !patience->isActive();
            patience->deleteLater();
            const quint32 action = reply.isError() ? 0 : reply.value();
            if (!isLate || action != 0)
                answered(action);
        },
        forever);
}

void GnomeShell::ungrabKey(quint32 action) {
    if (m_isAttached)
        ask(QStringLiteral("UngrabKey"), {action}, this);
}

void GnomeShell::activateWindow(quint32 number) {
    if (m_isAttached)
        ask(QStringLiteral("ActivateWindow"), {number}, this);
}

void GnomeShell::typeChord(const std::vector<quint32> &symbols) {
    if (m_isAttached)
        ask(QStringLiteral("TypeChord"), {QVariant::fromValue(QList<quint32>(symbols.begin(), symbols.end()))}, this);
}

void GnomeShell::takePicture(int descriptor, QObject *context,
                             std::function<void(const std::vector<GnomePicture> &)> answered) {
    if (!m_isAttached) {
        QMetaObject::invokeMethod(
            context, [answered = std::move(answered)] { answered({}); }, Qt::QueuedConnection);
        return;
    }
    ask(QStringLiteral("TakePicture"), {QVariant::fromValue(QDBusUnixFileDescriptor(descriptor))}, context,
        [answered = std::move(answered)](const QDBusPendingCall &call) {
            answered(call.isError() ? std::vector<GnomePicture>() : readPictures(call.reply().arguments().value(0)));
        });
}

GnomeShell::InputWatch GnomeShell::watchInput(std::chrono::milliseconds interval) {
    const std::shared_ptr<std::chrono::milliseconds> watch(
        new std::chrono::milliseconds(interval), [this, self = QPointer(this)](std::chrono::milliseconds *ended) {
            delete ended;
            if (self)
                tellInterval();
        });
    m_watches.push_back(watch);
    tellInterval();
    return watch;
}

/// As often as whoever wants it most often.
void GnomeShell::tellInterval() {
    std::erase_if(m_watches, [](const auto &watch) { return watch.expired(); });
    std::chrono::milliseconds interval{0};
    for (const auto &watch : m_watches)
        if (const auto wanted = watch.lock(); wanted && (interval == 0ms || *wanted < interval))
            interval = *wanted;
    if (m_isAttached && std::exchange(m_interval, interval) != interval)
        ask(QStringLiteral("WatchInput"), {static_cast<quint32>(interval.count())}, this);
}

} // namespace tavrine
