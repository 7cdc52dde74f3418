#include "adapters/x11/TestOwner.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tavrine {

TestOwner::TestOwner(const QByteArray &selection)
    : m_selectionName(selection), m_connection(xcb_connect(nullptr, nullptr)), m_wakeUp(::eventfd(0, EFD_CLOEXEC)) {
    createWindow();
    m_thread = std::thread([this] { loop(); });
}

TestOwner::~TestOwner() {
    m_isStopping = true;
    ::eventfd_write(m_wakeUp, 1);
    m_thread.join();
    closeConnection();
    ::close(m_wakeUp);
}

void TestOwner::own(Contents contents) {
    Answer targets = listOf(contents);
    own(std::move(contents), std::move(targets));
}

void TestOwner::own(Contents contents, Answer targets) {
    rememberTime();
    ownAt(m_remembered, std::move(contents), std::move(targets));
}

void TestOwner::rememberTime() {
    runOnThread([&] { m_remembered = serverTime(); });
}

void TestOwner::ownAsOfRememberedTime(Contents contents) {
    Answer targets = listOf(contents);
    ownAt(m_remembered, std::move(contents), std::move(targets));
}

void TestOwner::moveToAnotherWindow(std::chrono::microseconds after, Contents contents) {
    Answer targets = listOf(contents);
    runOnThread([&] {
        xcb_destroy_window(m_connection, m_window);
        createWindow();
        xcb_flush(m_connection);
        std::this_thread::sleep_for(after);
    });
    ownAt(m_remembered, std::move(contents), std::move(targets));
}

Answer TestOwner::listOf(const Contents &contents) {
    QByteArray list;
    runOnThread([&] {
        for (const auto &[target, answer] : contents) {
            const xcb_atom_t value = atom(target);
            list.append(reinterpret_cast<const char *>(&value), sizeof value);
        }
    });
    return {.bytes = list, .type = "ATOM", .format = 32};
}

void TestOwner::ownAt(xcb_timestamp_t time, Contents contents, Answer targets) {
    runOnThread([&] {
        m_contents = std::move(contents);
        m_targets = std::move(targets);
        {
            const std::lock_guard lock(m_mutex);
            m_requests.clear();
        }
        xcb_set_selection_owner(m_connection, m_window, atom(m_selectionName), time);
        m_isOwner = true;
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    });
}

void TestOwner::ownAndEndRepeatedly(int count) {
    runOnThread([&] {
        for (int i = 0; i < count; ++i) {
            createWindow();
            xcb_set_selection_owner(m_connection, m_window, atom(m_selectionName), serverTime());
            xcb_destroy_window(m_connection, m_window);
        }
        createWindow();
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    });
}

void TestOwner::clear() {
    runOnThread([&] {
        xcb_set_selection_owner(m_connection, XCB_NONE, atom(m_selectionName), serverTime());
        m_isOwner = false;
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    });
}

void TestOwner::destroyWindow() {
    runOnThread([&] {
        xcb_destroy_window(m_connection, m_window);
        m_isOwner = false;
        createWindow();
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    });
}

void TestOwner::end() {
    runOnThread([&] { closeConnection(); });
}

int TestOwner::requestCount(const QByteArray &target) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_requests.find(target);
    return found != m_requests.end() ? found->second : 0;
}

int TestOwner::requestCount() const {
    const std::lock_guard lock(m_mutex);
    int sum = 0;
    for (const auto &[target, count] : m_requests)
        sum += count;
    return sum;
}

void TestOwner::runOnThread(std::function<void()> work) {
    std::packaged_task<void()> task(std::move(work));
    std::future<void> done = task.get_future();
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(task));
    }
    ::eventfd_write(m_wakeUp, 1);
    done.wait();
}

void TestOwner::loop() {
    while (!m_isStopping) {
        while (m_connection) {
            xcb_generic_event_t *event = xcb_poll_for_event(m_connection);
            if (!event)
                break;
            handle(event);
            std::free(event);
        }
        std::vector<std::packaged_task<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work.swap(m_work);
        }
        for (auto &task : work)
            task();
        if (!work.empty())
            continue;
        if (m_connection)
            xcb_flush(m_connection);
        pollfd descriptors[] = {{m_wakeUp, POLLIN, 0}, {-1, POLLIN, 0}};
        if (m_connection)
            descriptors[1].fd = xcb_get_file_descriptor(m_connection);
        ::poll(descriptors, 2, 100); // round trips may leave events in the library's own queue
        eventfd_t count = 0;
        if (descriptors[0].revents)
            ::eventfd_read(m_wakeUp, &count);
    }
}

void TestOwner::handle(xcb_generic_event_t *event) {
    switch (event->response_type & 0x7F) {
    case XCB_SELECTION_REQUEST:
        onRequest(*reinterpret_cast<xcb_selection_request_event_t *>(event));
        break;
    case XCB_SELECTION_CLEAR:
        m_isOwner = false;
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto &notice = *reinterpret_cast<xcb_property_notify_event_t *>(event);
        if (notice.state == XCB_PROPERTY_DELETE)
            onPropertyDeleted(notice);
        break;
    }
    }
}

void TestOwner::onRequest(const xcb_selection_request_event_t &request) {
    const QByteArray target = name(request.target);
    Answer answer = Answer::refused();
    if (target == "TARGETS")
        answer = m_targets;
    for (const auto &[offered, how] : m_contents) {
        if (offered == target)
            answer = how;
    }
    int count = 0;
    {
        const std::lock_guard lock(m_mutex);
        count = ++m_requests[target];
    }
    if (answer.before)
        answer.before();
    if (answer.manner == Answer::Manner::silent || count <= answer.silentTimes)
        return;
    if (answer.manner == Answer::Manner::end) {
        closeConnection();
        return;
    }
    char event[32] = {};
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    notice.property = answer.manner == Answer::Manner::refuse ? XCB_NONE : request.property;
    const xcb_atom_t type = atom(answer.type.isEmpty() ? target : answer.type);
    if (answer.manner == Answer::Manner::whole) {
        // In several requests, so that a property can be larger than the largest request.
        constexpr qsizetype step = qsizetype{15} * 1024 * 1024;
        qsizetype offset = 0;
        do {
            const qsizetype size = std::min(step, answer.bytes.size() - offset);
            xcb_change_property(m_connection, offset == 0 ? XCB_PROP_MODE_REPLACE : XCB_PROP_MODE_APPEND,
                                request.requestor, request.property, type, static_cast<uint8_t>(answer.format),
                                static_cast<uint32_t>(size / (answer.format / 8)), answer.bytes.constData() + offset);
            offset += size;
        } while (offset < answer.bytes.size());
    } else if (answer.manner == Answer::Manner::piecemeal) {
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_connection, request.requestor, XCB_CW_EVENT_MASK, &mask);
        const auto size = static_cast<uint32_t>(answer.announced >= 0 ? answer.announced : answer.bytes.size());
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property, atom("INCR"), 32,
                            1, &size);
        answer.type = answer.type.isEmpty() ? target : answer.type;
        m_outgoing.push_back({request.requestor, request.property, answer});
    }
    std::memcpy(event, &notice, sizeof notice);
    xcb_send_event(m_connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, event);
    if (answer.isGivenUpAfter) {
        xcb_set_selection_owner(m_connection, XCB_NONE, atom(m_selectionName), serverTime());
        m_isOwner = false;
    }
}

void TestOwner::onPropertyDeleted(const xcb_property_notify_event_t &event) {
    const auto found = std::find_if(m_outgoing.begin(), m_outgoing.end(), [&](const Outgoing &o) {
        return o.requestor == event.window && o.property == event.atom;
    });
    if (found == m_outgoing.end())
        return;
    const Answer &answer = found->answer;
    if (found->pieces == answer.endAfterPieces) {
        closeConnection();
        return;
    }
    if (found->pieces == answer.silentAfterPieces)
        return;
    const QByteArray &type = found->pieces > 0 && !answer.laterType.isEmpty() ? answer.laterType : answer.type;
    const qsizetype size = std::min(answer.pieceBytes, answer.bytes.size() - found->offset);
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, found->requestor, found->property, atom(type),
                        static_cast<uint8_t>(answer.format), static_cast<uint32_t>(size / (answer.format / 8)),
                        answer.bytes.constData() + found->offset);
    ++found->pieces;
    ++m_pieces;
    if (!answer.isEndless)
        found->offset += size;
    if (size == 0)
        m_outgoing.erase(found);
}

void TestOwner::closeConnection() {
    if (m_connection)
        xcb_disconnect(m_connection);
    m_connection = nullptr;
    m_isOwner = false;
    m_outgoing.clear();
}

void TestOwner::createWindow() {
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    m_window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, 0, m_window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
}

xcb_timestamp_t TestOwner::serverTime() {
    const xcb_atom_t property = atom("TEST_TIME");
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_window, property, XCB_ATOM_INTEGER, 32, 0, nullptr);
    xcb_flush(m_connection);
    while (xcb_generic_event_t *event = xcb_wait_for_event(m_connection)) {
        const auto &notice = *reinterpret_cast<xcb_property_notify_event_t *>(event);
        const bool isOurs = (event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY && notice.window == m_window &&
                            notice.atom == property;
        const xcb_timestamp_t time = isOurs ? notice.time : 0;
        if (!isOurs)
            handle(event);
        std::free(event);
        if (isOurs)
            return time;
    }
    return XCB_CURRENT_TIME;
}

xcb_atom_t TestOwner::atom(const QByteArray &wanted) {
    auto found = m_atoms.find(wanted);
    if (found != m_atoms.end())
        return found->second;
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(wanted.size()), wanted.constData()),
        nullptr);
    const xcb_atom_t value = reply ? reply->atom : 0;
    std::free(reply);
    return m_atoms[wanted] = value;
}

QByteArray TestOwner::name(xcb_atom_t wanted) {
    for (const auto &[text, value] : m_atoms) {
        if (value == wanted)
            return text;
    }
    xcb_get_atom_name_reply_t *reply =
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, wanted), nullptr);
    QByteArray text = reply ? QByteArray(xcb_get_atom_name_name(reply), reply->name_len) : QByteArray();
    std::free(reply);
    m_atoms[text] = wanted;
    return text;
}

} // namespace tavrine
