#include "adapters/wayland/cast/KWinCast.h"

#include <algorithm>

#include <wayland/zkde-screencast-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto longestAnswer = 5s; // it makes a stream of PipeWire's for it

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

std::variant<QString, Cast> KWinCast::open(const StreamPlan &plan, const ScreenStreamConfiguration &configuration) {
    if (!m_link.isOpen())
        return QStringLiteral("There is no Wayland compositor to see the screen of.");
    m_casts = m_link.bind<zkde_screencast_unstable_v1>(zkde_screencast_unstable_v1_interface, 1);
    if (!m_casts)
        return QStringLiteral("KWin casts its screen to no program that is not installed.");
    m_outputs.emplace(m_link);
    if (!m_link.finish())
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
    const auto end = Clock::now() + longestAnswer;
    for (auto now = Clock::now(); !m_node && !m_end && now < end; now = Clock::now())
        if (!m_link.dispatch(std::chrono::ceil<WaylandLink::Wait>(end - now)))
            break;
    if (m_end)
        return *m_end;
    if (!m_node)
        return QStringLiteral("The compositor does not cast its screen.");
    return Cast{.node = *m_node, .pictures = m_pixels, .area = pixelsOf(configuration, {}, m_pixels, wanted->scale())};
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
