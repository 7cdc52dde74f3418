#include "adapters/gnome/GnomeScreens.h"

#include "base/Time.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto followedEvery = 30ms;
constexpr auto followedFor = 5s; // after the last question

} // namespace

GnomeScreens::GnomeScreens(GnomeShell &shell) : m_shell(shell) {
    m_endOfFollowing.setSingleShot(true);
    m_endOfFollowing.setInterval(followedFor);
    m_endOfFollowing.callOnTimeout([this] { m_following.reset(); });
    QObject::connect(&shell, &GnomeShell::monitorsChanged, &m_endOfFollowing, [this] { tellChange(); });
}

QList<Screen> GnomeScreens::screens() const {
    auto all = X11Screens::screens();
    const auto known = QGuiApplication::screens(); // in the same order
    for (qsizetype i = 0; i < std::min(all.size(), known.size()); ++i)
        all[i].scale *= m_shell.finenessAt(known.at(i)->geometry().topLeft());
    return all;
}

PointerReading GnomeScreens::pointer() const {
    if (!m_shell.isAttached())
        return X11Screens::pointer();
    if (!m_following)
        m_following = m_shell.watchInput(followedEvery);
    m_endOfFollowing.start();
    const GnomePointer &now = m_shell.pointer();
    return {.location = flippedPoint(pointOfDevice(now.place)),
            .pressedButtons = (now.state & gnomeState::leftButton ? 1U : 0U) |
                              (now.state & gnomeState::rightButton ? 2U : 0U) |
                              (now.state & gnomeState::middleButton ? 4U : 0U)};
}

/// Hears of the pointer from the shell, which tells nothing while nothing moves; looks at the server's while there is
/// no extension.
class GnomeScreens::Watch final : public QObject, public PointerWatch {
public:
    Watch(GnomeScreens &screens, Time &time, Seconds interval, std::function<void()> handler)
        : m_screens(screens), m_time(time), m_interval(interval), m_handler(std::move(handler)),
          m_input(screens.m_shell.watchInput(std::chrono::milliseconds(static_cast<int>(interval.count() * 1000)))) {
        connect(&screens.m_shell, &GnomeShell::inputChanged, this, [this] { tell(); });
        connect(&screens.m_shell, &GnomeShell::attached, this, [this] { choose(); });
        connect(&screens.m_shell, &GnomeShell::detached, this, [this] { choose(); });
        choose();
        tell(); // after the first look
    }

    [[nodiscard]] Date lastLook() const override { return m_onX ? m_onX->lastLook() : m_time.now(); }
    void setTellsAll(bool tellsAll) override {
        m_tellsAll = tellsAll;
        choose();
    }

private:
    void choose() {
        const bool isAttached = m_screens.m_shell.isAttached();
        if (isAttached)
            m_onX.reset();
        else if (!m_onX)
            m_onX = m_screens.X11Screens::watchPointer(m_time, m_interval, [this] { m_handler(); });
        if (m_onX)
            m_onX->setTellsAll(m_tellsAll);
        m_ticks = isAttached && m_tellsAll ? m_time.repeat(m_interval, [this] { tell(); }) : nullptr;
    }

    void tell() {
        m_time.async(this, [this] { m_handler(); });
    }

    GnomeScreens &m_screens;
    Time &m_time;
    const Seconds m_interval;
    std::function<void()> m_handler;
    GnomeShell::InputWatch m_input;
    std::unique_ptr<PointerWatch> m_onX;
    std::unique_ptr<Timer> m_ticks;
    bool m_tellsAll = false;
};

std::unique_ptr<PointerWatch> GnomeScreens::watchPointer(Time &time, Seconds interval, std::function<void()> handler) {
    return std::make_unique<Watch>(*this, time, interval, std::move(handler));
}

} // namespace tavrine
