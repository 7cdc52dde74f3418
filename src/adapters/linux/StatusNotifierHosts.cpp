#include "adapters/linux/StatusNotifierHosts.h"

#include "adapters/linux/SessionBus.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace tavrine {
namespace {

const auto hostWatcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto hostNames = QStringLiteral("org.kde.StatusNotifierHost-"); // with a process and a number behind it

/// Tried: a picture of 70 x 22 pixels is 51 x 16 in it.
constexpr std::array keepers{"waybar"};

bool keepsShape(uint process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    const QByteArray program = file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    return std::ranges::any_of(keepers, [&](const char *keeper) { return program == keeper; });
}

QDBusMessage questionToTheBus(const QString &method, const QVariantList &arguments = {}) {
    const auto name = QStringLiteral("org.freedesktop.DBus");
    auto call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/DBus"), name, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

void StatusNotifierHosts::ask(std::function<void(bool)> answered) {
    m_inquiry = {.answered = std::move(answered)};
    sessionBus::ask(m_bus, questionToTheBus(QStringLiteral("ListNames")), this,
                    [this, number = ++m_number](const QDBusPendingCall &reply) {
                        if (number != m_number)
                            return;
                        QStringList names = reply.reply().arguments().value(0).toStringList().filter(hostNames);
                        names.append(hostWatcherName);
                        m_inquiry.unanswered = names.size();
                        for (const QString &name : std::as_const(names))
                            askForProcess(name);
                    });
}

void StatusNotifierHosts::askForProcess(const QString &name) {
    sessionBus::ask(m_bus, questionToTheBus(QStringLiteral("GetConnectionUnixProcessID"), {name}), this,
                    [this, number = m_number](const QDBusPendingCall &reply) {
                        if (number == m_number)
                            take(!reply.isError() && keepsShape(reply.reply().arguments().value(0).toUInt()));
                    });
}

void StatusNotifierHosts::take(bool keepsShape) {
    m_inquiry.keepShape = m_inquiry.keepShape && keepsShape;
    if (--m_inquiry.unanswered == 0)
        m_inquiry.answered(m_inquiry.keepShape);
}

} // namespace tavrine
