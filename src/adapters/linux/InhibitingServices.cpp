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

/// A lock of logind's.
class LogindLock {
public:
    LogindLock(const QString &what, std::function<void()> onChange)
        : m_what(what), m_call({.name = address().name, .follow = systemBus::follow, .giveBack = {}}, // a descriptor
                               std::move(onChange)) {}

    void want(bool isWanted, const QString &why) {
        if (isWanted)
            m_call.want(
                callOf(address(), QStringLiteral("Inhibit"), {m_what, applicationName, why, QStringLiteral("block")}));
        else
            m_call.want(std::nullopt);
    }
    [[nodiscard]] bool isHeld() const { return m_call.isHeld(); }
    [[nodiscard]] bool isAsking() const { return m_call.isAsking(); }

private:
    static Address address() {
        return {QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager")};
    }

    QString m_what;
    InhibitCall m_call;
};

const auto idleLock = QStringLiteral("idle");

/// The lock against the suspend is one against the person too: logind refuses the suspend to everybody, or, before its
/// version 257, to everybody but the lock's owner.
class LogindKeeper final : public PowerKeeper {
public:
    void want(const PowerNeeds &needs, const QString &why) override {
        m_idle.want(needs.display, why);
        m_sleep.want(needs.sleep, why);
        m_lid.want(needs.lid, why);
    }
    /// Of the display it knows only who asks it whether the session is idle, so that is no promise.
    [[nodiscard]] PowerNeeds held() const override {
        return {.display = false,
                .idleSleep = m_idle.isHeld() || m_sleep.isHeld(),
                .sleep = m_sleep.isHeld(),
                .lid = m_lid.isHeld()};
    }
    [[nodiscard]] bool isAsking() const override { return m_idle.isAsking() || m_sleep.isAsking() || m_lid.isAsking(); }

private:
    LogindLock m_idle{idleLock, [this] { changed(); }};
    LogindLock m_sleep{QStringLiteral("sleep"), [this] { changed(); }};
    LogindLock m_lid{QStringLiteral("handle-lid-switch"), [this] { changed(); }};
};

/// What logind itself does in an idle session, for who has no other lock of it.
class LogindIdleKeeper final : public PowerKeeper {
public:
    void want(const PowerNeeds &needs, const QString &why) override {
        m_idle.want(needs.idleSleep && !needs.display && !needs.sleep, why);
    }
    [[nodiscard]] PowerNeeds held() const override { return {.idleSleep = m_idle.isHeld()}; }
    [[nodiscard]] bool isAsking() const override { return m_idle.isAsking(); }

private:
    LogindLock m_idle{idleLock, [this] { changed(); }};
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
        const PowerNeeds wanted{.display = needs.display && m_able.display,
                                .idleSleep = needs.idleSleep && m_able.idleSleep,
                                .sleep = needs.sleep && m_able.sleep};
        m_before = held();
        m_wanted = wanted;
        if (wanted.isEmpty())
            m_call.want(std::nullopt);
        else
            m_call.want(callOf(m_address, QStringLiteral("Inhibit"), m_arguments(wanted, why)));
    }
    /// While something else is asked for, what it agreed to before.
    [[nodiscard]] PowerNeeds held() const override {
        if (!m_call.isHeld())
            return {};
        return m_call.isAsking() ? m_before : m_wanted;
    }
    [[nodiscard]] bool isAsking() const override { return m_call.isAsking(); }

private:
    Address m_address;
    PowerNeeds m_able;
    Arguments m_arguments;
    PowerNeeds m_wanted;
    PowerNeeds m_before;
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
    return std::make_unique<CookieKeeper>(
        Address{name, QStringLiteral("/org/gnome/SessionManager"), name}, QStringLiteral("Uninhibit"),
        PowerNeeds{.display = true, .idleSleep = true, .sleep = true}, [](const PowerNeeds &needs, const QString &why) {
            constexpr uint noWindow = 0;
            constexpr uint suspend = 4;
            constexpr uint idle = 8; // which keeps an idle machine from suspending as well
            const uint flags = (needs.sleep || !needs.display ? suspend : 0) | (needs.display ? idle : 0);
            return QVariantList{applicationName, noWindow, why, flags};
        });
}

std::unique_ptr<PowerKeeper> makePowerManagementKeeper() {
    return std::make_unique<CookieKeeper>(Address{QStringLiteral("org.freedesktop.PowerManagement"),
                                                  QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
                                                  QStringLiteral("org.freedesktop.PowerManagement.Inhibit")},
                                          QStringLiteral("UnInhibit"), PowerNeeds{.idleSleep = true, .sleep = true},
                                          nameAndReason);
}

PowerKeepers makeInhibitingServices() {
    PowerKeepers services;
    services.push_back(makeLogindKeeper());
    services.push_back(makeScreenSaverKeeper());
    services.push_back(makeSessionManagerKeeper());
    return services;
}

PowerKeepers makeLastResorts() {
    PowerKeepers services;
    services.push_back(makePowerManagementKeeper());
    services.push_back(std::make_unique<LogindIdleKeeper>());
    return services;
}

} // namespace tavrine
