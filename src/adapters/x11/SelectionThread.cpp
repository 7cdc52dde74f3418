#include "adapters/x11/SelectionThread.h"

#include "adapters/pasteboard/ReaderThread.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <xcb/xfixes.h>

namespace tavrine {
namespace {

constexpr int eventsPerTurn = 64; // a flood of events must not keep the main thread's messages waiting

} // namespace

SelectionThread::SelectionThread(const SelectionLimits &limits, ImageFileReader &files, Publish publish)
    : m_limits(limits), m_files(files), m_mailbox(std::make_shared<Mailbox<Message>>()), m_news(std::move(publish)),
      m_owner(m_connection, m_limits, [this](SelectionOwner::Order order, const SelectionOwner::Recipe &recipe) {
          m_maker.start([order, recipe, mailbox = m_mailbox] { mailbox->post(Made{order, recipe()}); });
      }) {
    m_maker.setMaxThreadCount(1);
    if (!m_mailbox->isUsable())
        return;
    m_mailbox->setRead(true);
    m_thread = startReaderThread([this] { open(); }, [this] { run(); }, m_limits.start);
}

SelectionThread::~SelectionThread() {
    m_mailbox->post(Stop{});
    if (m_thread.joinable())
        m_thread.join();
    m_maker.waitForDone();
}

void SelectionThread::claim(OwnContents contents, int serial, TimePoint writtenAt) {
    m_mailbox->post(Claim{std::move(contents), serial, writtenAt});
}

void SelectionThread::open() {
    m_connection.open();
    if (m_connection.isUsable() && m_connection.owner(m_connection.atoms().clipboard) != 0)
        startFetch(m_connection.serverTime());
}

void SelectionThread::run() {
    while (m_connection.isUsable()) {
        const bool isBusy = work();
        if (m_isStopping && !m_handOverEnd)
            break;
        if (!isBusy)
            wait();
    }
    m_mailbox->setRead(false);
    m_fetch.reset();
    m_connection.flush();
}

bool SelectionThread::work() {
    bool isBusy = false;
    for (int i = 0; i < eventsPerTurn; ++i) {
        const XEvent event = m_connection.nextEvent();
        if (!event)
            break;
        handle(*event);
        isBusy = true;
    }
    for (Message &message : m_mailbox->takeAll()) {
        receive(std::move(message));
        isBusy = true;
    }
    expire();
    if (!isBusy && m_reclaimTime)
        reclaim();
    m_connection.flush();
    return isBusy || m_connection.readAhead();
}

void SelectionThread::wait() {
    std::optional<TimePoint> due = m_owner.deadline();
    const auto consider = [&due](std::optional<TimePoint> other) {
        if (other)
            due = std::min(due.value_or(*other), *other);
    };
    if (m_fetch)
        consider(m_fetch->contents().deadline());
    if (m_reclaimTime)
        consider(m_brake.releaseTime());
    consider(m_handOverEnd);
    int timeout = -1;
    if (due) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - std::chrono::steady_clock::now());
        timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    pollfd descriptors[] = {{m_connection.descriptor(), POLLIN, 0}, {m_mailbox->wakeUp(), POLLIN, 0}};
    ::poll(descriptors, std::size(descriptors), timeout);
}

void SelectionThread::expire() {
    const TimePoint now = std::chrono::steady_clock::now();
    m_owner.expire(now);
    if (m_fetch && m_fetch->contents().deadline().value_or(TimePoint::max()) <= now) {
        m_connection.finish(); // that the server stands still is not the owner's doing
        if (m_connection.readAhead())
            return; // what came with that answer is heard first
        m_fetch->contents().expire(std::chrono::steady_clock::now());
    }
    if (m_fetch && !m_fetch->contents().isRunning() && m_owner.isOwner())
        m_fetch.reset(); // what it holds has been claimed
    if (m_handOverEnd && (*m_handOverEnd <= now || !m_owner.isOwner()))
        m_handOverEnd.reset();
}

void SelectionThread::handle(const xcb_generic_event_t &event) {
    switch (eventType(event)) {
    case XCB_SELECTION_REQUEST:
        m_owner.onRequest(eventAs<xcb_selection_request_event_t>(event));
        break;
    case XCB_PROPERTY_NOTIFY:
        m_owner.onPropertyNotify(eventAs<xcb_property_notify_event_t>(event));
        if (m_fetch)
            m_fetch->onPropertyNotify(eventAs<xcb_property_notify_event_t>(event));
        break;
    case XCB_SELECTION_NOTIFY: {
        const auto &notice = eventAs<xcb_selection_notify_event_t>(event);
        if (notice.selection == m_connection.atoms().clipboardManager)
            m_handOverEnd.reset(); // the manager has everything, or does not want it
        else if (m_fetch && notice.selection == m_connection.atoms().clipboard)
            m_fetch->onSelectionNotify(notice);
        break;
    }
    case XCB_DESTROY_NOTIFY:
        m_owner.onWindowDestroyed(eventAs<xcb_destroy_notify_event_t>(event).window);
        break;
    default: // errors among them
        if (eventType(event) == m_connection.selectionNoticeEvent())
            onSelectionNotice(event);
    }
}

void SelectionThread::receive(Message message) {
    if (const auto *claim = std::get_if<Claim>(&message)) {
        claimNow(*claim);
    } else if (const auto *made = std::get_if<Made>(&message)) {
        m_owner.onMade(made->order, made->bytes);
    } else if (auto *file = std::get_if<ImageFile>(&message)) {
        if (m_fetch && file->fetch == m_fetchNumber)
            m_fetch->contents().onImageFile(std::move(file->bytes));
    } else {
        m_isStopping = true;
        startHandOver();
    }
}

void SelectionThread::onSelectionNotice(const xcb_generic_event_t &event) {
    const auto &notice = eventAs<xcb_xfixes_selection_notify_event_t>(event);
    if (notice.selection != m_connection.atoms().clipboard)
        return;
    const TimePoint now = std::chrono::steady_clock::now();
    const bool isClaim = notice.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER;
    if (isClaim && notice.owner != 0)
        m_brake.ownershipChanged(now);
    if (m_claimSequence && isSequenceBefore(event.full_sequence, *m_claimSequence))
        return;
    m_claimSequence.reset();
    if (notice.owner == m_connection.window())
        return;
    if (isClaim) {
        dropForeign();
        m_owner.release();
        m_foreignTime = notice.timestamp;
        m_news.begin(true);
        if (notice.owner != 0)
            startFetch(notice.timestamp);
        else
            m_news.publish({}); // cleared on purpose
    } else {
        ownerEnded(notice.selection_timestamp, notice.timestamp);
    }
}

void SelectionThread::dropForeign() {
    m_fetch.reset();
    m_reclaimTime.reset();
}

void SelectionThread::startFetch(xcb_timestamp_t time) {
    const int number = ++m_fetchNumber;
    m_fetch = std::make_unique<SelectionFetch>(
        m_connection, m_limits, m_secrets, time,
        PasteboardFetch::Hooks{[this](ForeignContents contents) { m_news.publish(std::move(contents)); },
                               [this, number](const QList<QByteArray> &paths) {
                                   m_files.read(paths, [number, mailbox = m_mailbox](std::optional<QByteArray> bytes) {
                                       mailbox->post(ImageFile{number, std::move(bytes)});
                                   });
                               }});
}

void SelectionThread::ownerEnded(xcb_timestamp_t ownerTime, xcb_timestamp_t now) {
    if (!m_fetch)
        return;
    m_fetch->contents().ownerEnded();
    if (m_fetch->contents().hasReceived()) {
        m_reclaimTime = ownerTime != XCB_CURRENT_TIME ? ownerTime : now;
        return;
    }
    m_fetch.reset();
    m_news.ownerLeftNothing();
}

void SelectionThread::reclaim() {
    if (!m_brake.isReleased(std::chrono::steady_clock::now()))
        return;
    // Under the grab nobody can claim between the look and our own claim.
    xcb_grab_server(m_connection.get());
    const bool isFree = m_connection.owner(m_connection.atoms().clipboard) == 0;
    // A notice that came with the answer tells of someone who was here since; it is heard first.
    if (isFree && !m_connection.readAhead()) {
        const xcb_void_cookie_t cookie = xcb_set_selection_owner(m_connection.get(), m_connection.window(),
                                                                 m_connection.atoms().clipboard, *m_reclaimTime);
        m_claimSequence = cookie.sequence;
        if (m_connection.owner(m_connection.atoms().clipboard) == m_connection.window())
            m_owner.own(m_fetch->contents().receivedForms(), *m_reclaimTime);
        m_reclaimTime.reset();
        // A file manager may end right after the copy; the picture in the copied file is still to be told of.
        if (!m_fetch->contents().isRunning())
            m_fetch.reset();
    } else if (!isFree) {
        m_reclaimTime.reset();
    }
    xcb_ungrab_server(m_connection.get());
}

void SelectionThread::claimNow(const Claim &claim) {
    const xcb_timestamp_t time = serverTimeOf(claim.writtenAt);
    const xcb_void_cookie_t cookie =
        xcb_set_selection_owner(m_connection.get(), m_connection.window(), m_connection.atoms().clipboard, time);
    m_news.setOwnSerial(claim.serial);
    if (m_connection.owner(m_connection.atoms().clipboard) != m_connection.window())
        return yieldTo(time);
    // Everything up to here has been replaced by this write.
    dropForeign();
    m_news.wasReplaced();
    m_claimSequence = cookie.sequence;
    m_owner.own(formsOf(claim.contents), time);
}

void SelectionThread::yieldTo(xcb_timestamp_t time) {
    m_owner.release();
    const bool isHeardOf = isTimeBefore(time, m_foreignTime);
    if (!isHeardOf) { // its notice is still to come; what is known of is older than the write
        dropForeign();
        m_news.dropUntold();
    } else {
        m_news.tellAgain();
    }
}

xcb_timestamp_t SelectionThread::serverTimeOf(TimePoint moment) {
    const auto since = std::chrono::steady_clock::now() - moment;
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(since).count();
    const xcb_timestamp_t now = m_connection.serverTime();
    const auto then = now - static_cast<xcb_timestamp_t>(std::max<std::int64_t>(milliseconds, 0));
    return then != XCB_CURRENT_TIME ? then : now; // that number means something else
}

void SelectionThread::startHandOver() {
    const SelectionAtoms &atoms = m_connection.atoms();
    if (!m_owner.isOwner() || !m_owner.hasContents() || m_connection.owner(atoms.clipboardManager) == 0)
        return;
    // With no property named the manager takes all that TARGETS lists.
    xcb_convert_selection(m_connection.get(), m_connection.window(), atoms.clipboardManager, atoms.saveTargets,
                          XCB_ATOM_NONE, m_owner.time());
    m_handOverEnd = std::chrono::steady_clock::now() + m_limits.handOver;
}

} // namespace tavrine
