#include "adapters/wayland/stream/OutputStreamLoop.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <wayland/wlr-screencopy-unstable-v1.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC

constexpr std::uint32_t copyVersion = 3;
constexpr std::uint32_t firstWithDamage = 2;
/// A copy may fail when an output changes or sleeps; when it goes on, there is nothing to see.
constexpr int mostFailures = 50;
constexpr MediaTime untilNextTry = 100ms;
constexpr auto forLong = std::chrono::hours(1);

MediaTime now() {
    return Clock::now().time_since_epoch();
}

} // namespace

OutputStreamLoop::OutputStreamLoop(const StreamPlan &plan, const ScreenStreamConfiguration &configuration,
                                   ThreadedScreenStream::Session &session)
    : m_plan(plan), m_configuration(configuration), m_session(session),
      m_buffers(plan.area.size(), plan.queueDepth, session.waker()), m_pacer(plan.interval) {}

OutputStreamLoop::~OutputStreamLoop() {
    m_copy.reset();
    m_shared.clear();
    m_whole.reset();
    m_outputs.reset();
    if (m_manager)
        zwlr_screencopy_manager_v1_destroy(m_manager);
    if (m_shm)
        wl_shm_destroy(m_shm);
}

std::optional<QString> OutputStreamLoop::open() {
    if (!m_link.isOpen())
        return QStringLiteral("There is no Wayland compositor to see the screen of.");
    m_manager = m_link.bind<zwlr_screencopy_manager_v1>(zwlr_screencopy_manager_v1_interface, copyVersion);
    m_shm = m_link.bind<wl_shm>(wl_shm_interface, 1);
    if (!m_manager || !m_shm || zwlr_screencopy_manager_v1_get_version(m_manager) < firstWithDamage)
        return QStringLiteral("This compositor does not show programs what changes on its screen.");
    m_outputs.emplace(m_link);
    if (!m_link.finish())
        return QStringLiteral("The compositor does not answer.");
    if (auto error = findOutput())
        return error;
    m_outputs->note();
    const auto *const buffer = m_buffers.free();
    if (!buffer || !buffer->memory)
        return QStringLiteral("There is no memory for pictures of that size.");
    return std::nullopt;
}

std::optional<QString> OutputStreamLoop::findOutput() {
    const auto outputs = m_outputs->all();
    const auto found = std::find_if(outputs.begin(), outputs.end(), [this](const WaylandOutput &output) {
        return output.name == m_plan.output.toStdString();
    });
    if (found == outputs.end())
        return QStringLiteral("There is no such display.");
    m_output = *found;
    const double scale = m_output.scale();
    m_area = pixelsOf(m_configuration, {}, m_output.pixels(), scale);
    const auto points = [scale](int pixels) { return static_cast<int>(std::lround(pixels / scale)); };
    const QRect region(QPoint(points(m_area.x()), points(m_area.y())),
                       QSize(points(m_area.width()), points(m_area.height())));
    const auto isExact = [scale](int pixels, int inPoints) { return std::abs(inPoints * scale - pixels) < 0.01; };
    if (m_output.transform == WL_OUTPUT_TRANSFORM_NORMAL && QRect({}, m_output.pixels()).contains(m_area) &&
        isExact(m_area.x(), region.x()) && isExact(m_area.y(), region.y()) && isExact(m_area.width(), region.width()) &&
        isExact(m_area.height(), region.height()))
        m_region = region;
    return std::nullopt;
}

void OutputStreamLoop::sleepUntil(std::optional<MediaTime> until) {
    const auto left =
        until ? std::max(std::chrono::ceil<WaylandLink::Wait>(*until - now()), WaylandLink::Wait(0)) : forLong;
    static_cast<void>(m_link.dispatch(left, m_session.waker()->descriptor()));
    m_session.waker()->clear();
}

std::optional<QString> OutputStreamLoop::run() {
    std::optional<MediaTime> pause;
    while (!m_session.isOver()) {
        if (!m_link.isOpen())
            return QStringLiteral("The connection to the compositor was lost.");
        if (m_outputs->hasChanged()) {
            const QSize before = m_output.pixels();
            if (auto error = findOutput())
                return error;
            if (before != m_output.pixels())
                return QStringLiteral("The display has changed.");
            m_outputs->note();
        }
        FrameBuffers::Buffer *const buffer = m_copy ? m_target : m_buffers.free();
        if (!buffer || (pause && now() < *pause)) {
            sleepUntil(buffer ? pause : std::nullopt);
            continue;
        }
        pause.reset();
        if (!buffer->memory)
            return QStringLiteral("There is no memory for another picture.");
        switch (advance(*buffer)) {
        case Result::frame:
            give(*buffer);
            break;
        case Result::failed:
            if (++m_failures > mostFailures)
                return QStringLiteral("The compositor does not copy its screen.");
            pause = now() + untilNextTry;
            break;
        case Result::waiting:
            sleepUntil(std::nullopt);
            break;
        case Result::nothing:
        case Result::again:
            break;
        }
    }
    return std::nullopt;
}

void OutputStreamLoop::ask() {
    m_copy = std::make_unique<ScreenCopy>(m_manager, m_output.proxy, m_plan.showsPointer, m_region);
    m_link.flush();
}

/// One step on the way of a copy.
OutputStreamLoop::Result OutputStreamLoop::advance(FrameBuffers::Buffer &buffer) {
    if (!m_copy) {
        m_target = &buffer;
        ask();
    }
    switch (m_copy->state()) {
    case ScreenCopy::State::asked:
    case ScreenCopy::State::copying:
        return Result::waiting;
    case ScreenCopy::State::described:
        if (copyInto(buffer))
            return Result::waiting;
        m_copy.reset();
        return m_region ? (m_region.reset(), Result::again) : Result::failed;
    case ScreenCopy::State::ready: {
        const Result result = take(buffer);
        m_copy.reset();
        return result;
    }
    case ScreenCopy::State::failed:
        break;
    }
    m_copy.reset();
    return Result::failed;
}

/// False when the compositor's memory is not what can be taken.
bool OutputStreamLoop::copyInto(FrameBuffers::Buffer &buffer) {
    const ScreenCopy &copy = *m_copy;
    const CopiedPixels kind{.data = nullptr,
                            .format = copy.format(),
                            .size = copy.size(),
                            .lineBytes = copy.lineBytes(),
                            .transform = m_output.transform};
    if (!kind.isKnown() ||
        (m_region ? !kind.isPlain() || copy.size() != m_area.size() : kind.seenSize() != m_output.pixels()))
        return false;
    std::unique_ptr<ShmBuffer> &target = m_region ? m_shared[buffer.number] : m_whole;
    if (!target && m_region)
        target = ShmBuffer::over(m_shm, buffer.memory, copy.format(), copy.size(), copy.lineBytes());
    else if (!target)
        target = ShmBuffer::make(m_shm, copy.format(), copy.size(), copy.lineBytes());
    if (!target)
        return false;
    // A screen that stands still is never damaged: the first picture is not to wait.
    m_copy->copy(target->buffer(), m_hasBegun);
    m_link.flush();
    return true;
}

QRegion OutputStreamLoop::changedIn(const CopiedPixels &copied) const {
    const QRect whole({}, m_area.size());
    if (!m_hasBegun)
        return whole;
    QRegion changed;
    for (const QRect &damage : m_copy->damage())
        changed += copied.seen(damage).translated(-m_area.topLeft());
    return changed & whole;
}

/// The compositor counts everything as changed before its first copy for us; whether it is so is seen.
bool OutputStreamLoop::isFirstRepeated(const FrameBuffers::Buffer &buffer) const {
    return m_firstMemory && m_firstMemory != buffer.memory &&
           std::memcmp(m_firstMemory->pixels().data, buffer.memory->pixels().data, buffer.memory->bytes()) == 0;
}

OutputStreamLoop::Result OutputStreamLoop::take(FrameBuffers::Buffer &buffer) {
    m_failures = 0;
    if (m_region && m_copy->isUpsideDown()) {
        m_region.reset();
        return Result::again;
    }
    const ShmBuffer &source = m_region ? *m_shared[buffer.number] : *m_whole;
    const CopiedPixels copied{.data = reinterpret_cast<const std::uint8_t *>(source.memory()->pixels().data),
                              .format = m_copy->format(),
                              .size = m_region ? m_output.pixels() : m_copy->size(), // damage is of the output
                              .lineBytes = m_copy->lineBytes(),
                              .transform = m_output.transform,
                              .isUpsideDown = m_copy->isUpsideDown()};
    const QRegion changed = changedIn(copied);
    m_changed = ofFewRects(m_changed + changed);
    m_buffers.change(changed);
    const QRegion pending = std::exchange(buffer.pending, {});
    if (!m_region)
        for (const QRect &part : pending)
            copied.putInto(buffer.memory->pixels(), -m_area.topLeft(), part.translated(m_area.topLeft()));
    if (m_changed.isEmpty())
        return Result::nothing;
    const bool isRepeated = isFirstRepeated(buffer);
    m_first.reset();
    m_firstMemory.reset();
    if (isRepeated)
        m_changed = {};
    return isRepeated ? Result::nothing : Result::frame;
}

void OutputStreamLoop::give(FrameBuffers::Buffer &buffer) {
    const MediaTime needed = now();
    // The picture is here already; who asks for no more than so many a second waits for it.
    for (MediaTime due = m_pacer.due(needed); now() < due && !m_session.isOver();)
        sleepUntil(due);
    const MediaTime moment = m_pacer.look(now(), needed);
    const QRegion changed = std::exchange(m_changed, {});
    const auto frame = m_buffers.give(buffer, {changed.begin(), changed.end()});
    if (!std::exchange(m_hasBegun, true) && m_plan.queueDepth > 1) {
        m_first = frame; // so that the next picture is not put into the same memory
        m_firstMemory = buffer.memory;
    }
    m_session.deliver({static_cast<int>(ScreenFrameStatus::complete), moment, frame});
}

} // namespace tavrine
