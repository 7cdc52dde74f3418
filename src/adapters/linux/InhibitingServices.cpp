#include "adapters/linux/InhibitingServices.h"

#include "adapters/linux/InhibitCall.h"
#include "adapters/linux/SystemBus.h"

namespace tavrine {
namespace {

const auto applicationName = QStringLiteral("Tavrine");

/// Where a service takes its calls.
struct Address {
    QString name;
    QString path;
    QString interface;
};

QDBusMessage callOf(const Address &address, const QString &method, const QVariantList &arguments) {
    auto call = QDBusMessage::createMethodCall(address.name, address.path, address.interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

class LogindKeeper final : public PowerKeeper {
public:
    void want(const PowerNeeds &needs, const QString &why) override {
        want(m_idle, needs.display, QStringLiteral("idle"), why);
        want(m_sleep, needs.sleep, QStringLiteral("sleep"), why);
        want(m_lid, needs.lid, QStringLiteral("handle-lid-switch"), why);
    }
    /// Of the display it knows only who asks it whether the session is idle, so that is no promise.
    [[nodiscard]] PowerNeeds held() const override {
        return {.display = false, .sleep = m_sleep.isHeld(), .lid = m_lid.isHeld()};
    }
    [[nodiscard]] bool isAsking() const override { return m_sleep.isAsking() || m_lid.isAsking(); }

private:
    static InhibitCall::Service service() {
        return {.name = address().name, .follow = systemBus::follow, .giveBack = {}}; // the descriptor is the lock
    }
    static Address address() {
        return {QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager")};
    }
    static void want(InhibitCall &lock, bool isWanted, const QString &what, const QString &why) {
        if (isWanted)
            lock.want(
                callOf(address(), QStringLiteral("Inhibit"), {what, applicationName, why, QStringLiteral("block")}));
        else
            lock.want(std::nullopt);
    }

    InhibitCall m_idle{service(), [this] { changed(); }};
    InhibitCall m_sleep{service(), [this] { changed(); }};
    InhibitCall m_lid{service(), [this] { changed(); }};
};

/// A service of the session that gives a number for each thing that it holds off.
class CookieKeeper final : public PowerKeeper {
public:
    /// Those of its call.
    using Arguments = std::function<QVariantList(const PowerNeeds &, const QString &why)>;

    CookieKeeper(Address address, const QString &giveBackMethod, PowerNeeds able, Arguments arguments)
        : m_address(std::move(address)), m_able(able), m_arguments(std::move(arguments)),
          m_call({.name = m_address.name,
                  .follow = sessionBus::follow,
                  .giveBack = [address = m_address, giveBackMethod](
                                  const QVariant &cookie) { return callOf(address, giveBackMethod, {cookie}); }},
                 [this] { changed(); }) {}

    void want(const PowerNeeds &needs, const QString &why) override {
        const PowerNeeds wanted{.display = needs.display && m_able.display, .sleep = needs.sleep && m_able.sleep};
        m_wanted = wanted;
        if (wanted.isEmpty())
            m_call.want(std::nullopt);
        else
            m_call.want(callOf(m_address, QStringLiteral("Inhibit"), m_arguments(wanted, why)));
    }
    [[nodiscard]] PowerNeeds held() const override { return m_call.isHeld() ? m_wanted : PowerNeeds{}; }
    [[nodiscard]] bool isAsking() const override { return m_call.isAsking(); }

private:
    Address m_address;
    PowerNeeds m_able;
    Arguments m_arguments;
    PowerNeeds m_wanted;
    InhibitCall m_call;
};

QVariantList nameAndReason(const PowerNeeds & /*needs*/, const QString &why) {
    return {applicationName, why};
}

} // namespace

std::unique_ptr<PowerKeeper> makeLogindKeeper() {
    return std::make_unique<LogindKeeper>();
}

std::unique_ptr<PowerKeeper> makeScreenSaverKeeper() {
    const auto name = QStringLiteral("org.freedesktop.ScreenSaver");
    return std::make_unique<CookieKeeper>(Address{name, QStringLiteral("/org/freedesktop/ScreenSaver"), name},
                                          QStringLiteral("UnInhibit"), PowerNeeds{.display = true}, nameAndReason);
}

std::unique_ptr<PowerKeeper> makeSessionManagerKeeper() {
    const auto name = QStringLiteral("org.gnome.SessionManager");
    return std::make_unique<CookieKeeper>(Address{name, QStringLiteral("/org/gnome/SessionManager"), name},
                                          QStringLiteral("Uninhibit"), PowerNeeds{.display = true, .sleep = true},
                                          [](const PowerNeeds &needs, const QString &why) {
                                              constexpr uint noWindow = 0;
                                              constexpr uint suspend = 4;
                                              constexpr uint idle = 8;
                                              const uint flags = suspend | (needs.display ? idle : 0);
                                              return QVariantList{applicationName, noWindow, why, flags};
                                          });
}

std::unique_ptr<PowerKeeper> makePowerManagementKeeper() {
    return std::make_unique<CookieKeeper>(Address{QStringLiteral("org.freedesktop.PowerManagement"),
                                                  QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
                                                  QStringLiteral("org.freedesktop.PowerManagement.Inhibit")},
                                          QStringLiteral("UnInhibit"), PowerNeeds{.sleep = true}, nameAndReason);
}

std::vector<std::unique_ptr<PowerKeeper>> makeInhibitingServices() {
    std::vector<std::unique_ptr<PowerKeeper>> services;
    services.push_back(makeLogindKeeper());
    services.push_back(makeScreenSaverKeeper());
    services.push_back(makeSessionManagerKeeper());
    return services;
}

} // namespace tavrine
