#include "adapters/cast/CastStreamLoop.h"

#include <algorithm>
#include <cstring>

#include <poll.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC

/// A compositor that casts has given its first picture long before.
constexpr MediaTime longestStart = 10s;
/// So long the first look for a picture lasts, and each that follows as much longer: some have no time.
constexpr MediaTime firstLook = 300ms;
/// A third of a look: until both sides have stopped, or nobody has begun to look.
constexpr int lookForAway = 3;

MediaTime now() {
    return Clock::now().time_since_epoch();
}

} // namespace

CastStreamLoop::CastStreamLoop(std::unique_ptr<CastSource> source, const StreamPlan &plan,
                               const ScreenStreamConfiguration &configuration, ThreadedScreenStream::Session &session)
    : m_plan(plan), m_configuration(configuration), m_session(session), m_source(std::move(source)),
      m_buffers(plan.area.size(), plan.queueDepth, session.waker()), m_pacer(plan.interval) {}

std::optional<QString> CastStreamLoop::open() {
    auto opened = m_source->open(m_plan, m_configuration, m_session);
    if (const auto *const reason = std::get_if<QString>(&opened))
        return *reason;
    auto &cast = std::get<Cast>(opened);
    m_areaIn = std::move(cast.areaIn);
    m_seen = FrameMemory::make(m_plan.area.size());
    m_line.resize(static_cast<std::size_t>(m_plan.area.width()));
    const auto *const buffer = m_buffers.free();
    if (!m_seen || !buffer || !buffer->memory)
        return QStringLiteral("There is no memory for pictures of that size.");
    if (auto error = m_reader.open(cast.node, std::move(cast.remote)))
        return error;
    return awaitPicture();
}

std::optional<QString> CastStreamLoop::awaitPicture() {
    const MediaTime end = now() + longestStart;
    MediaTime look = firstLook;
    MediaTime next = now() + look;
    bool isLooking = true;
    while (!m_reader.hasPicture() && !m_session.isOver()) {
        if (auto error = trouble())
            return error;
        if (now() > end)
            return QStringLiteral("The desktop gives no picture of its screen.");
        if (now() > next) {
            isLooking = !isLooking;
            m_reader.setLooking(isLooking);
            look += isLooking ? firstLook : MediaTime::zero();
            next = now() + (isLooking ? look : look / lookForAway);
        }
        sleepUntil(std::min(next, end));
    }
    m_reader.setLooking(true); // one may come while it looks away
    return m_reader.hasPicture() ? trouble() : std::optional(QStringLiteral("The stream was stopped before it began."));
}

std::optional<QString> CastStreamLoop::trouble() {
    if (auto reason = m_source->lost())
        return reason;
    if (auto reason = m_reader.lost())
        return reason;
    return m_reader.hasPicture() && !hasArea()
               ? std::optional(QStringLiteral("The desktop's pictures are of another size than its screen."))
               : std::nullopt;
}

/// Of the picture that is there. All have the size of the first.
bool CastStreamLoop::hasArea() {
    const QSize size = m_reader.size();
    if (m_pictures.isEmpty()) {
        const auto area = m_areaIn(size);
        if (!area || area->size() != m_plan.area.size() || !QRect({}, size).contains(*area))
            return false;
        m_area = *area;
        m_pictures = size;
    }
    return size == m_pictures;
}

void CastStreamLoop::sleepUntil(std::optional<MediaTime> until) {
    pollfd waits[] = {{m_session.waker()->descriptor(), POLLIN, 0},
                      {m_reader.descriptor(), POLLIN, 0},
                      {m_source->descriptor(), POLLIN, 0}};
    const auto left = until ? std::max(*until - now(), MediaTime::zero()) : MediaTime(1h);
    const timespec longest{.tv_sec = static_cast<time_t>(left / 1s), .tv_nsec = static_cast<long>((left % 1s).count())};
    ::ppoll(waits, std::size(waits), &longest, nullptr);
    m_session.waker()->clear();
    m_reader.dispatch();
    if (m_reader.hasPicture() && !m_needed)
        m_needed = now();
}

std::optional<QString> CastStreamLoop::run() {
    while (!m_session.isOver()) {
        if (auto reason = trouble())
            return reason;
        FrameBuffers::Buffer *const buffer = m_needed ? m_buffers.free() : nullptr;
        if (!buffer) {
            sleepUntil(std::nullopt);
            continue;
        }
        if (!buffer->memory)
            return QStringLiteral("There is no memory for another picture.");
        if (const MediaTime due = m_pacer.due(*m_needed); now() < due) {
            sleepUntil(due);
            continue;
        }
        if (m_reader.hasPicture())
            look();
        if (!m_changed.isEmpty())
            give(*buffer);
        m_needed.reset();
    }
    return std::nullopt;
}

void CastStreamLoop::look() {
    const QRegion changed = ofFewRects(compare());
    m_reader.letGo();
    m_changed = ofFewRects(m_changed + changed);
    m_buffers.change(changed);
}

/// What differs from what was seen before, which it then is: for each run of lines the columns between the first and
/// the last that do.
QRegion CastStreamLoop::compare() {
    const PixelsToPaint seen = m_seen->pixels();
    const int width = m_area.width();
    QRegion changed;
    QRect run;
    for (int y = 0; y < m_area.height(); ++y) {
        m_reader.readLine(m_area.y() + y, m_area.x(), width, m_line.data());
        std::uint32_t *const line = seen.line(y);
        const std::size_t bytes = m_line.size() * sizeof(std::uint32_t);
        if (m_hasSeen && std::memcmp(line, m_line.data(), bytes) == 0)
            continue;
        const int first = static_cast<int>(std::mismatch(line, line + width, m_line.begin()).first - line);
        int last = width - 1;
        while (last > first && line[last] == m_line[static_cast<std::size_t>(last)])
            --last;
        std::memcpy(line, m_line.data(), bytes);
        const QRect part(m_hasSeen ? first : 0, y, m_hasSeen ? last - first + 1 : width, 1);
        if (!run.isEmpty() && run.bottom() + 1 == y)
            run |= part;
        else
            changed += std::exchange(run, part);
    }
    m_hasSeen = true;
    return changed + run;
}

void CastStreamLoop::give(FrameBuffers::Buffer &buffer) {
    const MediaTime moment = m_pacer.look(now(), *m_needed);
    for (const QRect &part : std::exchange(buffer.pending, {}))
        for (int y = part.top(); y <= part.bottom(); ++y)
            std::memcpy(buffer.memory->pixels().line(y) + part.x(), m_seen->pixels().line(y) + part.x(),
                        static_cast<std::size_t>(part.width()) * sizeof(std::uint32_t));
    const QRegion changed = std::exchange(m_changed, {});
    m_session.deliver({static_cast<int>(ScreenFrameStatus::complete), moment,
                       m_buffers.give(buffer, {changed.begin(), changed.end()})});
}

} // namespace tavrine
