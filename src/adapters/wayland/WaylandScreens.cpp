#include "adapters/wayland/WaylandScreens.h"

#include "adapters/stream/ToolkitPoints.h"
#include "base/Time.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

constexpr qint64 answerHolds = 250; ///< milliseconds: one opening asks several times

class TracedPointer final : public PointerWatch {
public:
    TracedPointer(PointerTrace &trace, Time &time, Seconds interval, std::function<void()> handler)
        : m_trace(trace), m_time(time), m_interval(interval), m_handler(std::move(handler)) {
        m_follower = m_trace.add([this] { tell(); });
        tell();
    }
    ~TracedPointer() override {
        TracedPointer::setTellsAll(false);
        m_trace.remove(m_follower);
    }
    TracedPointer(const TracedPointer &) = delete;
    TracedPointer &operator=(const TracedPointer &) = delete;

    /// Whatever the windows hear is heard at once, so nothing was missed until now.
    [[nodiscard]] Date lastLook() const override { return m_time.now(); }
    void setTellsAll(bool tellsAll) override {
        if (tellsAll == (m_timer != nullptr))
            return;
        m_timer = tellsAll ? m_time.repeat(m_interval, [this] { tell(); }) : nullptr;
        m_trace.setPolled(tellsAll);
    }

private:
    void tell() {
        if (std::exchange(m_isTold, true))
            return;
        m_time.async(&m_owner, [this] {
            m_isTold = false;
            if (const auto handler = m_handler) // it may end this
                handler();
        });
    }

    PointerTrace &m_trace;
    Time &m_time;
    const Seconds m_interval;
    const std::function<void()> m_handler;
    PointerTrace::Followers::iterator m_follower;
    std::unique_ptr<Timer> m_timer;
    QObject m_owner; ///< what was posted goes with it
    bool m_isTold = false;
};

} // namespace

WaylandScreens::WaylandScreens(std::shared_ptr<WaylandReader> reader)
    : m_questions(reader ? reader->connection() : nullptr), m_table(std::move(reader), [this] { m_changes.tell(); }) {}

Screen WaylandScreens::describe(const QScreen &screen) const {
    const QRect whole = screen.geometry();
    QRect usable = whole;
    double scale = screen.devicePixelRatio();
    const double factor = toolkitPoints::factor(&screen);
    QString name = screen.model().isEmpty() ? screen.name() : screen.model();
    if (const OutputFacts *facts = m_table.find(screen.name())) {
        if (!facts->pixels.isEmpty() && !facts->logical.isEmpty())
            scale = factor * facts->pixels.width() / facts->logical.width();
        if (!facts->usable.isEmpty()) {
            usable = toolkitPoints::fromCompositor(facts->usable, factor).translated(whole.topLeft()) & whole;
        }
        if (screen.model().isEmpty() && !facts->description.isEmpty())
            name = facts->description;
    }
    return {.number = static_cast<quint32>(qHash(screen.name())),
            .localizedName = name,
            .frame = flippedRect(whole),
            .visibleFrame = flippedRect(usable),
            .scale = scale};
}

QList<Screen> WaylandScreens::screens() const {
    QList<Screen> all;
    const auto screens = QGuiApplication::screens(); // the primary one first
    for (const QScreen *screen : screens)
        if (!screen->geometry().isEmpty()) // one stands in where there is none
            all.append(describe(*screen));
    return all;
}

std::optional<Screen> WaylandScreens::mainScreen() const {
    const auto all = screens();
    if (all.size() < 2)
        return all.isEmpty() ? std::nullopt : std::optional(all.first());
    const QWindow *own = QGuiApplication::focusWindow();
    if (!own && (!m_sinceOutput.isValid() || m_sinceOutput.elapsed() > answerHolds)) {
        m_output = m_questions.output();
        m_sinceOutput.start();
    }
    const auto number = static_cast<quint32>(qHash(own && own->screen() ? own->screen()->name() : m_output));
    for (const Screen &screen : all)
        if (screen.number == number)
            return screen;
    const QPointF pointer = mouseLocation();
    for (const Screen &screen : all)
        if (screen.frame.contains(pointer))
            return screen;
    return all.first();
}

PointerReading WaylandScreens::pointer() const {
    if (!m_trace.isOver() && !m_trace.isPolled() && QGuiApplication::screens().size() > 1 &&
        (!m_sincePointer.isValid() || m_sincePointer.elapsed() > answerHolds)) {
        if (const auto place = m_questions.pointer())
            m_trace.setPlace(toolkitPoints::fromCompositorsPlane(*place));
        m_sincePointer.start();
    }
    return {.location = flippedPoint(m_trace.place()), .pressedButtons = m_trace.pressedButtons()};
}

std::unique_ptr<PointerWatch> WaylandScreens::watchPointer(Time &time, Seconds interval,
                                                           std::function<void()> handler) {
    return std::make_unique<TracedPointer>(m_trace, time, interval, std::move(handler));
}

} // namespace tavrine
