#include "adapters/x11/stream/StreamLoop.h"

#include "adapters/x11/frozen/ScreenMap.h"

#include <algorithm>

#include <poll.h>
#include <xcb/randr.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC

/// A window that is dragged moves once in a frame; one that moves all the time has to be shown as well.
constexpr int mostTries = 3;

/// A program draws what is to be seen of it within a few milliseconds.
constexpr std::chrono::milliseconds untilSettled{3};

MediaTime now() {
    return Clock::now().time_since_epoch();
}

/// The whole screen where the server tells of no monitors.
QRegion monitorAreas(XcbLink &link, QSize root) {
    const auto answer = link.reply<xcb_randr_get_monitors_reply_t>(
        xcb_randr_get_monitors(link.connection(), link.root(), 1 /* those in use */));
    QRegion areas;
    if (answer)
        for (auto each = xcb_randr_get_monitors_monitors_iterator(answer.get()); each.rem > 0;
             xcb_randr_monitor_info_next(&each))
            areas += QRect(each.data->x, each.data->y, each.data->width, each.data->height);
    const QRect whole({}, root);
    return areas.isEmpty() ? QRegion(whole) : areas & whole;
}

} // namespace

StreamLoop::StreamLoop(const StreamPlan &plan, SampleGate<ScreenSample> &session, XcbLink::Wait wait)
    : m_plan(plan), m_session(session), m_link(wait), m_buffers(plan.area.size(), plan.queueDepth, session.waker()),
      m_pacer(plan.interval), m_pointer(m_link), m_keptOut(m_link, plan.area, plan.keptOut) {}

std::optional<QString> StreamLoop::open() {
    for (;;) {
        static_cast<void>(m_link.takeIsLate());
        auto error = begin();
        // Late is neither no nor yes: a recording neither fails for it nor goes on without what was asked for.
        if (!m_link.takeIsLate() || !m_link.isOpen() || m_session.isOver())
            return error;
    }
}

/// Once more after an answer that was late.
std::optional<QString> StreamLoop::begin() {
    if (!m_link.isOpen())
        return QStringLiteral("There is no X server to see the screen of.");
    const auto layout =
        PixelLayout::forVisual(*xcb_get_setup(m_link.connection()), m_link.screen(), m_link.screen().root_visual);
    if (!layout)
        return QStringLiteral("The screen has pixels of an unknown kind.");
    if (!hasExtensions())
        return QStringLiteral("The X server does not tell what changes on its screen.");
    m_reader = std::make_unique<PixelReader>(m_link, *layout);
    const auto *const buffer = m_buffers.free();
    if (!buffer || !buffer->memory)
        return QStringLiteral("There is no memory for pictures of that size.");
    if (!m_damage) {
        m_damage = m_link.newId();
        xcb_damage_create(m_link.connection(), m_damage, m_link.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }
    m_isDamaged = true;
    m_needed = now();
    return std::nullopt;
}

bool StreamLoop::hasExtensions() {
    auto *const connection = m_link.connection();
    const auto *const damage = m_link.extension(xcb_damage_id);
    if (!damage || !m_link.extension(xcb_xfixes_id))
        return false;
    m_damageNotice = damage->first_event + XCB_DAMAGE_NOTIFY;
    // The extensions answer nobody who has not asked for their version.
    if (!m_link.reply<xcb_damage_query_version_reply_t>(xcb_damage_query_version(connection, 1, 1)) ||
        !m_link.reply<xcb_xfixes_query_version_reply_t>(xcb_xfixes_query_version(connection, 5, 0)))
        return false;
    if (const auto *const randr = m_link.extension(xcb_randr_id)) {
        m_monitorsNotice = randr->first_event; // both of its notices say the same here
        static_cast<void>(m_link.reply<xcb_randr_query_version_reply_t>(xcb_randr_query_version(connection, 1, 5)));
        xcb_randr_select_input(connection, m_link.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_RESOURCE_CHANGE);
    }
    // Monitors that a person makes out of parts of the screen are told by a notice of the root window.
    const std::uint32_t notices = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, m_link.root(), XCB_CW_EVENT_MASK, &notices);
    return (!m_plan.showsPointer || m_pointer.open()) && m_keptOut.open();
}

std::optional<QString> StreamLoop::run() {
    while (!m_session.isOver()) {
        if (!m_link.isOpen())
            return QStringLiteral("The connection to the X server was lost.");
        m_link.flush();
        readEvents();
        if (!m_needed) {
            waitFor(true, std::nullopt);
            continue;
        }
        const MediaTime due = m_pacer.due(*m_needed);
        if (now() < due) {
            waitFor(false, due);
            continue;
        }
        FrameBuffers::Buffer *const buffer = m_buffers.free();
        if (!buffer)
            waitFor(false, std::nullopt);
        else if (!buffer->memory)
            return QStringLiteral("There is no memory for another picture.");
        else
            look(*buffer);
    }
    return std::nullopt;
}

void StreamLoop::waitFor(bool forServer, std::optional<MediaTime> until) const {
    pollfd descriptors[] = {{m_session.waker()->descriptor(), POLLIN, 0}, {m_link.descriptor(), POLLIN, 0}};
    timespec length{};
    if (until) {
        const auto left = std::max(*until - now(), MediaTime(0));
        length.tv_sec = std::chrono::duration_cast<std::chrono::seconds>(left).count();
        length.tv_nsec = (left % std::chrono::seconds(1)).count();
    }
    ::ppoll(descriptors, forServer ? 2 : 1, until ? &length : nullptr, nullptr);
    m_session.waker()->clear();
}

void StreamLoop::readEvents() {
    while (const XcbEvent event = m_link.nextEvent())
        handle(*event);
}

void StreamLoop::handle(const xcb_generic_event_t &event) {
    const int type = eventType(event);
    bool isNews = false;
    if (type == m_damageNotice && eventAs<xcb_damage_notify_event_t>(event).damage == m_damage)
        isNews = m_isDamaged = true;
    else if (m_monitorsNotice >= 0 && (type == m_monitorsNotice || type == m_monitorsNotice + XCB_RANDR_NOTIFY))
        isNews = m_areMonitorsOld = true;
    else if (type == XCB_CONFIGURE_NOTIFY && eventAs<xcb_configure_notify_event_t>(event).window == m_link.root())
        isNews = m_areMonitorsOld = true;
    else if (type != 0) // an error belongs to a request about a window that went meanwhile
        isNews = (m_plan.showsPointer && m_pointer.handle(event)) || m_keptOut.handle(event);
    if (isNews && !m_needed)
        m_needed = now();
}

void StreamLoop::readMonitorsAgain() {
    const auto root = m_link.reply<xcb_get_geometry_reply_t>(xcb_get_geometry(m_link.connection(), m_link.root()));
    if (!root)
        return;
    m_areMonitorsOld = false;
    const QRegion monitors = m_monitorsNotice >= 0 ? monitorAreas(m_link, QSize(root->width, root->height))
                                                   : QRegion(0, 0, root->width, root->height);
    m_lit = monitors.translated(-m_plan.area.topLeft()) & QRect({}, m_plan.area.size());
    m_changed = QRect({}, m_plan.area.size());
    m_keptOut.doubt();
}

/// What is different since the last look, whatever the reason. Everything is asked before the first answer is waited
/// for.
void StreamLoop::takeChanges() {
    static_cast<void>(m_link.takeIsLate());
    if (m_areMonitorsOld)
        readMonitorsAgain();
    const unsigned int question = std::exchange(m_isDamaged, false) ? askRegion(m_link, m_damage) : 0;
    if (m_plan.showsPointer)
        m_pointer.ask();
    m_keptOut.ask();
    m_link.flush();
    QRegion changed = question ? takeRegion(m_link, question).value_or(QRegion()) : QRegion();
    m_keptOut.heed(changed);
    changed -= m_keptOut.hidden();
    if (m_plan.showsPointer)
        m_pointer.take();
    changed += m_keptOut.take();
    m_changed = ofFewRects(m_changed + (changed.translated(-m_plan.area.topLeft()) & QRect({}, m_plan.area.size())));
    m_buffers.change(m_changed);
    const bool isPictureLate = m_keptOut.takeIsLate();
    if (m_link.takeIsLate() || isPictureLate) { // what the answer would have said is not known
        m_isDamaged = m_areMonitorsOld = true;
        m_keptOut.doubt();
    }
}

void StreamLoop::look(FrameBuffers::Buffer &buffer) {
    const MediaTime needed = *m_needed;
    m_needed.reset();
    const std::uint64_t lastLook = m_pointer.seen().look;
    takeChanges();
    if (m_plan.showsPointer && m_pointer.seen().look != lastLook)
        m_needed = now(); // it may go on without a pause, and then nothing is told of it
    if (!m_keptOut.isSettled(Clock::now())) {
        m_needed = now() + untilSettled;
        return;
    }
    const MediaTime moment = m_pacer.look(now(), needed);
    const QRect pointers = m_givenPointer | m_pointer.seen().area;
    const bool isPointerElsewhere =
        m_plan.showsPointer && m_pointer.seen().look != m_givenLook && pointers.intersects(m_plan.area);
    const bool isSeen = !m_changed.isEmpty() || isPointerElsewhere;
    if (m_areMonitorsOld || (isSeen && !refreshInOnePiece(buffer)))
        m_needed = now(); // again, an interval later
    else if (isSeen)
        give(buffer, moment);
}

/// What is hidden is drawn from windows where they were known to be, and the rest is read as it is seen. A window that
/// has moved in between would be torn in two; the server has told of it by the time of its last answer.
bool StreamLoop::refreshInOnePiece(FrameBuffers::Buffer &buffer) {
    for (int tries = 1; refresh(buffer); ++tries) {
        readEvents();
        if (!m_keptOut.isOld() || tries == mostTries)
            return true;
        takeChanges();
        if (m_areMonitorsOld || !m_keptOut.isSettled(Clock::now()))
            return false;
    }
    return false;
}

/// Makes the buffer's picture that of the screen. False when something of it is not here; it is not to be given then.
bool StreamLoop::refresh(FrameBuffers::Buffer &buffer) {
    const QRect whole({}, m_plan.area.size());
    const FrameBuffers::Pointer pointer = m_plan.showsPointer ? m_pointer.seen() : FrameBuffers::Pointer{};
    const bool isPointerOther = buffer.pointer.look != pointer.look || buffer.pending.intersects(buffer.pointer.area);
    QRegion part = buffer.pending;
    if (isPointerOther)
        part += buffer.pointer.area & whole;
    const QRegion hidden = m_keptOut.hidden().translated(-m_plan.area.topLeft());
    for (const QRect &dark : part - m_lit)
        for (int y = dark.top(); y <= dark.bottom(); ++y)
            std::fill_n(buffer.memory->pixels().line(y) + dark.x(), dark.width(), 0U);
    readRoot(buffer, (part & m_lit) - hidden);
    readHidden(buffer, part & m_lit & hidden);
    buffer.pending = part;
    if (!m_reader->finish())
        return false;
    buffer.pending = {};
    if (isPointerOther && m_plan.showsPointer)
        m_pointer.paint(buffer.memory->pixels(), m_plan.area.topLeft());
    buffer.pointer = {pointer.look, pointer.area.translated(-m_plan.area.topLeft()) & whole};
    return true;
}

void StreamLoop::readRoot(FrameBuffers::Buffer &buffer, const QRegion &part) {
    for (const QRect &each : part)
        m_reader->read(m_link.root(), each.translated(m_plan.area.topLeft()), buffer, each.topLeft());
}

void StreamLoop::readHidden(FrameBuffers::Buffer &buffer, const QRegion &part) {
    if (part.isEmpty())
        return;
    m_keptOut.draw(part.translated(m_plan.area.topLeft()));
    for (const QRect &each : part)
        m_reader->read(m_keptOut.drawable(), each.translated(m_plan.area.topLeft() - m_keptOut.origin()), buffer,
                       each.topLeft());
}

void StreamLoop::give(FrameBuffers::Buffer &buffer, MediaTime moment) {
    QRegion changed = std::exchange(m_changed, {});
    if (m_plan.showsPointer && m_pointer.seen().look != m_givenLook) {
        const QRect pointer = m_pointer.seen().area.translated(-m_plan.area.topLeft());
        changed +=
            (QRegion(m_givenPointer.translated(-m_plan.area.topLeft())) + pointer) & QRect({}, m_plan.area.size());
        m_givenLook = m_pointer.seen().look;
        m_givenPointer = m_pointer.seen().area;
    }
    m_session.deliver({static_cast<int>(ScreenFrameStatus::complete), moment,
                       m_buffers.give(buffer, {changed.begin(), changed.end()})});
}

} // namespace tavrine
