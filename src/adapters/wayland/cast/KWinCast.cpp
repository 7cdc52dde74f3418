#include "adapters/wayland/cast/KWinCast.h"

#include <algorithm>

#include <wayland/zkde-screencast-unstable-v1.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock;

} // namespace

KWinCast::~KWinCast() {
    if (m_stream)
        zkde_screencast_stream_unstable_v1_close(m_stream);
    m_outputs.reset();
    if (m_casts)
        zkde_screencast_unstable_v1_destroy(m_casts);
    m_link.flush();
}

std::optional<WaylandOutput> KWinCast::output(const QString &name) const {
    const auto outputs = m_outputs->all();
    const auto found = std::find_if(outputs.begin(), outputs.end(),
                                    [&name](const WaylandOutput &each) { return each.name == name.toStdString(); });
    return found == outputs.end() ? std::nullopt : std::optional(*found);
}

/// False when it is not in time, the connection is lost, or the session is over.
bool KWinCast::waitUntil(const std::function<bool()> &isDone, WaylandLink::Wait longest,
                         const ThreadedScreenStream::Session &session) {
    const auto end = Clock::now() + longest;
    for (auto now = Clock::now(); !isDone(); now = Clock::now()) {
        if (now >= end || session.isOver() ||
            !m_link.dispatch(std::chrono::ceil<WaylandLink::Wait>(end - now), session.waker()->descriptor()))
            return isDone();
        session.waker()->clear(); // it is woken for more than the end
    }
    return true;
}

/// As the link's own, but for the session's end.
bool KWinCast::finish(const ThreadedScreenStream::Session &session) {
    bool isDone = false;
    static constexpr wl_callback_listener listener{
        .done = [](void *done, wl_callback *, std::uint32_t) { *static_cast<bool *>(done) = true; }};
    wl_callback *const callback = m_link.sync();
    wl_callback_add_listener(callback, &listener, &isDone);
    const bool isInTime = waitUntil([&isDone] { return isDone; }, WaylandLink::usualWait, session);
    wl_callback_destroy(callback);
    return isInTime;
}

std::variant<QString, Cast> KWinCast::open(const StreamPlan &plan, const ScreenStreamConfiguration &configuration,
                                           const ThreadedScreenStream::Session &session) {
    if (!m_link.isOpen())
        return QStringLiteral("There is no Wayland compositor to see the screen of.");
    m_casts = m_link.bind<zkde_screencast_unstable_v1>(zkde_screencast_unstable_v1_interface, 1);
    if (!m_casts)
        return QStringLiteral("KWin casts its screen to no program that is not installed.");
    m_outputs.emplace(m_link);
    if (!finish(session))
        return QStringLiteral("The compositor does not answer.");
    const auto wanted = output(plan.output);
    if (!wanted)
        return QStringLiteral("There is no such display.");
    m_name = plan.output;
    m_pixels = wanted->pixels();
    static constexpr zkde_screencast_stream_unstable_v1_listener listener{
        .closed =
            [](void *self, zkde_screencast_stream_unstable_v1 *) {
                static_cast<KWinCast *>(self)->m_end = QStringLiteral("The compositor has ended its pictures.");
            },
        .created = [](void *self, zkde_screencast_stream_unstable_v1 *,
                      std::uint32_t node) { static_cast<KWinCast *>(self)->m_node = node; },
        .failed = [](void *self, zkde_screencast_stream_unstable_v1 *,
                     const char *error) { static_cast<KWinCast *>(self)->m_end = QString::fromUtf8(error); },
    };
    m_stream = zkde_screencast_unstable_v1_stream_output(
        m_casts, wanted->proxy,
        plan.showsPointer ? ZKDE_SCREENCAST_UNSTABLE_V1_POINTER_EMBEDDED : ZKDE_SCREENCAST_UNSTABLE_V1_POINTER_HIDDEN);
    zkde_screencast_stream_unstable_v1_add_listener(m_stream, &listener, this);
    m_link.flush();
    static_cast<void>(waitUntil([this] { return m_node || m_end; }, m_longestAnswer, session));
    if (m_end)
        return *m_end;
    if (!m_node)
        return QStringLiteral("The compositor does not cast its screen.");
    return Cast::of(*m_node, m_pixels, pixelsOf(configuration, {}, m_pixels, wanted->scale()));
}

std::optional<QString> KWinCast::lost() {
    if (!m_link.dispatch())
        return QStringLiteral("The connection to the compositor was lost.");
    const auto now = output(m_name);
    if (!now || now->pixels() != m_pixels)
        return QStringLiteral("The display has changed.");
    return m_end;
}

} // namespace tavrine
