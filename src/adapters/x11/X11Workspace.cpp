#include "adapters/x11/X11Workspace.h"

#include "adapters/linux/FileManager.h"
#include "adapters/linux/KnownPrograms.h"
#include "adapters/x11/XcbClient.h"
#include "base/NotificationCenter.h"
#include "base/Program.h"

#include <QSysInfo>
#include <QTimer>

#include <algorithm>

#include <unistd.h>
#include <xcb/res.h>

namespace tavrine {
namespace {

constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;

// Window managers name no window at all for a moment while they move the activity from one window to the next; that is
// no departure. Openbox needs under 5 ms for it.
constexpr auto longestPause = std::chrono::milliseconds(100);

// Until a server that was late is asked again; each question waits for it a little.
constexpr auto lateServer = std::chrono::milliseconds(500);

// Dialogues of dialogues and frames of frames end somewhere, unless a program made a ring of them.
constexpr int deepestChain = 16;

// More than anybody has open; each costs a few round trips to the server.
constexpr std::size_t mostWindows = 100;

/// What one window says of itself.
struct WindowFacts {
    QString applicationId;
    QString windowClass;
    QString windowInstance;
    qint64 processIdentifier = 0;
    xcb_window_t transientFor = noWindow;
    xcb_window_t group = noWindow;

    [[nodiscard]] bool hasName() const { return !applicationId.isEmpty() || !windowClass.isEmpty(); }
};

/// WM_CLASS holds the instance and the class, each ended by a null.
QString classOf(const QByteArray &wmClass) {
    const QList<QByteArray> parts = wmClass.split('\0');
    const QByteArray name = parts.size() > 1 && !parts[1].isEmpty() ? parts[1] : parts[0];
    return QString::fromLatin1(name).trimmed();
}
QString instanceOf(const QByteArray &wmClass) {
    return QString::fromLatin1(wmClass.split('\0').constFirst()).trimmed();
}

} // namespace

class X11Workspace::Private {
public:
    Private();

    void refresh();
    void postNotices();
    [[nodiscard]] QList<RunningApplication> runningApplications();

    NotificationCenter center;
    std::optional<RunningApplication> frontmost;
    bool isLate = false; ///< the server did not answer the last look

private:
    void onEvent(const xcb_generic_event_t &event);
    [[nodiscard]] bool look();
    void lookForWindowManager();
    [[nodiscard]] std::optional<xcb_window_t> activeWindow();
    [[nodiscard]] xcb_window_t namedWindowAbove(xcb_window_t window);
    void watch(xcb_window_t window);
    void lookForClientIds();
    [[nodiscard]] WindowFacts factsOf(xcb_window_t window);
    [[nodiscard]] std::optional<RunningApplication> programOf(xcb_window_t window);
    [[nodiscard]] quint32 pidMask() const { return XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID; }

    XcbClient m_client;
    QList<RunningApplication> m_left; // of whom the notice is still to be posted
    QTimer m_pause;
    QTimer m_again;
    const QByteArray m_host = QSysInfo::machineHostName().toLocal8Bit();
    xcb_window_t m_active = noWindow;
    xcb_window_t m_windowManager = noWindow;
    xcb_window_t m_focus = noWindow; // whose end or loss of the keyboard is to be seen
    xcb_window_t m_watched = noWindow;
    bool m_hasClientIds = false;
    bool m_areClientIdsLookedFor = false;
    bool m_isManagerKnown = false;
    bool m_isStale = true;
    bool m_isPauseOver = false;
    bool m_hasNews = false;
};

X11Workspace::Private::Private()
    : m_client([this](const xcb_generic_event_t &event) { onEvent(event); },
               [this] {
                   if (std::exchange(m_hasNews, false))
                       refresh();
                   postNotices();
               }) {
    m_again.setSingleShot(true);
    m_again.setInterval(lateServer);
    m_again.callOnTimeout([this] {
        refresh();
        postNotices();
    });
    m_pause.setSingleShot(true);
    m_pause.setInterval(longestPause);
    m_pause.callOnTimeout([this] {
        m_isPauseOver = true;
        refresh();
        postNotices();
    });
    refresh();
}

void X11Workspace::Private::onEvent(const xcb_generic_event_t &event) {
    bool isNews = false;
    switch (event.response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY: {
        const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        const bool isOfManager = notice.atom == m_client.atom("_NET_SUPPORTING_WM_CHECK");
        m_isManagerKnown = m_isManagerKnown && !isOfManager;
        isNews = isOfManager || notice.atom == m_client.atom("_NET_ACTIVE_WINDOW");
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window == m_windowManager)
            m_isManagerKnown = false;
        isNews = true;
        break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        isNews = m_windowManager == noWindow;
        break;
    default:
        break;
    }
    m_isStale = m_isStale || isNews;
    m_hasNews = m_hasNews || isNews;
}

/// A window manager is running when the window that the root names for it is there and names itself.
void X11Workspace::Private::lookForWindowManager() {
    static_cast<void>(m_client.takeIsLate());
    const auto named = m_client.words(m_client.root(), "_NET_SUPPORTING_WM_CHECK");
    m_windowManager = noWindow;
    if (!named.empty()) {
        const quint32 structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_client.connection(), named[0], XCB_CW_EVENT_MASK, &structure);
        if (m_client.words(named[0], "_NET_SUPPORTING_WM_CHECK") == named)
            m_windowManager = named[0];
    }
    const bool hasManager = m_windowManager != noWindow;
    const quint32 focusEvents = XCB_EVENT_MASK_FOCUS_CHANGE;
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE | (hasManager ? 0U : focusEvents);
    xcb_change_window_attributes(m_client.connection(), m_client.root(), XCB_CW_EVENT_MASK, &events);
    watch(noWindow);
    m_isManagerKnown = !m_client.takeIsLate();
    m_isStale = true;
}

/// None when the server did not answer: then what was known last still stands.
std::optional<xcb_window_t> X11Workspace::Private::activeWindow() {
    static_cast<void>(m_client.takeIsLate());
    xcb_window_t window = noWindow;
    m_focus = noWindow;
    if (m_windowManager != noWindow) {
        const auto named = m_client.words(m_client.root(), "_NET_ACTIVE_WINDOW");
        window = named.empty() || named[0] == m_client.root() ? noWindow : named[0];
        m_focus = window;
    } else if (const auto focus =
                   m_client.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_client.connection()))) {
        if (focus->focus > XCB_INPUT_FOCUS_POINTER_ROOT && focus->focus != m_client.root()) {
            m_focus = focus->focus;
            window = namedWindowAbove(focus->focus);
        }
    }
    if (m_client.takeIsLate())
        return std::nullopt;
    return window;
}

xcb_window_t X11Workspace::Private::namedWindowAbove(xcb_window_t window) {
    for (int depth = 0; depth < deepestChain; ++depth) {
        const auto name = m_client.ask(window, "WM_CLASS");
        const auto tree = m_client.reply<xcb_query_tree_reply_t>(xcb_query_tree(m_client.connection(), window));
        if (!m_client.text(name).isEmpty() || !tree || tree->parent == tree->root || tree->parent == noWindow)
            break;
        window = tree->parent;
    }
    return window;
}

/// The end of the active window is seen here, since a window manager may go on naming a window that is gone. Without
/// one, nobody but the window that loses the focus tells of another focus.
void X11Workspace::Private::watch(xcb_window_t window) {
    if (window == m_watched && !m_isStale)
        return;
    const quint32 none = XCB_EVENT_MASK_NO_EVENT;
    const quint32 events = XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const quint32 structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (m_watched != noWindow)
        xcb_change_window_attributes(m_client.connection(), m_watched, XCB_CW_EVENT_MASK, &none);
    if (window != noWindow)
        xcb_change_window_attributes(m_client.connection(), window, XCB_CW_EVENT_MASK,
                                     m_windowManager == noWindow ? &events : &structure);
    m_watched = window;
}

/// A server that was late is asked again by itself: nothing else may ever happen that would have somebody look.
void X11Workspace::Private::refresh() {
    isLate = m_client.isConnected() && !look();
    if (isLate)
        m_again.start();
}

/// False when the server was late.
bool X11Workspace::Private::look() {
    // The events that were sent before an answer are here after it. One may tell that the window of that number is
    // another one than before, since numbers are used again, or that a window manager came or went: then its word, or
    // the focus, has to be asked for.
    std::optional<xcb_window_t> window;
    constexpr int mostTries = 3;
    for (int tries = 0; tries == 0 || (!m_isManagerKnown && tries < mostTries); ++tries) {
        if (!m_isManagerKnown)
            lookForWindowManager();
        window = activeWindow();
        m_client.drain();
    }
    if (!window)
        return false;
    watch(m_focus);
    if (!m_isStale && frontmost && *window == m_active)
        return true;
    auto next = *window == noWindow ? std::nullopt : programOf(*window);
    if (m_client.takeIsLate())
        return false;
    if (!next && frontmost && !m_isPauseOver) {
        if (!m_pause.isActive())
            m_pause.start();
        return true;
    }
    m_pause.stop();
    m_isPauseOver = false;
    if (frontmost && !(next && isSameApplication(*frontmost, *next)))
        m_left.append(*frontmost);
    frontmost = std::move(next);
    m_active = *window;
    m_isStale = false;
    return true;
}

void X11Workspace::Private::postNotices() {
    while (!m_left.isEmpty())
        center.post(QLatin1String(didDeactivateApplicationNotification),
                    {{QLatin1String(applicationKey), QVariant::fromValue(m_left.takeFirst())}});
}

void X11Workspace::Private::lookForClientIds() {
    if (m_areClientIdsLookedFor)
        return;
    const bool hasExtension = m_client.link().extension(xcb_res_id);
    const auto version =
        hasExtension ? m_client.reply<xcb_res_query_version_reply_t>(xcb_res_query_version(m_client.connection(), 1, 2))
                     : nullptr;
    m_hasClientIds = version && (version->server_major > 1 || version->server_minor >= 2);
    m_areClientIdsLookedFor = version || (!hasExtension && m_client.link().finish()); // a late answer is none
}

WindowFacts X11Workspace::Private::factsOf(xcb_window_t window) {
    lookForClientIds();
    const auto applicationId = m_client.ask(window, "_GTK_APPLICATION_ID");
    const auto wmClass = m_client.ask(window, "WM_CLASS");
    const auto wmPid = m_client.ask(window, "_NET_WM_PID");
    const auto machine = m_client.ask(window, "WM_CLIENT_MACHINE");
    const auto transientFor = m_client.ask(window, "WM_TRANSIENT_FOR");
    const auto hints = m_client.ask(window, "WM_HINTS");
    const auto leader = m_client.ask(window, "WM_CLIENT_LEADER");
    xcb_res_query_client_ids_cookie_t clientIds{};
    if (m_hasClientIds) {
        const xcb_res_client_id_spec_t spec{window, pidMask()};
        clientIds = xcb_res_query_client_ids(m_client.connection(), 1, &spec);
    }

    WindowFacts facts;
    facts.applicationId = QString::fromUtf8(m_client.text(applicationId)).trimmed();
    const QByteArray called = m_client.text(wmClass);
    facts.windowClass = classOf(called);
    facts.windowInstance = instanceOf(called);
    const auto ownPid = m_client.words(wmPid);
    const QByteArray host = m_client.text(machine);
    // A number from another machine names nothing here.
    if (!ownPid.empty() && (host.isEmpty() || host == m_host))
        facts.processIdentifier = ownPid[0];
    if (const auto parent = m_client.words(transientFor); !parent.empty())
        facts.transientFor = parent[0];
    constexpr quint32 windowGroupHint = 1U << 6U;
    constexpr size_t windowGroupField = 8;
    if (const auto all = m_client.words(hints); all.size() > windowGroupField && (all[0] & windowGroupHint))
        facts.group = all[windowGroupField];
    else if (const auto top = m_client.words(leader); !top.empty())
        facts.group = top[0];
    if (m_hasClientIds) {
        const auto answer = m_client.reply<xcb_res_query_client_ids_reply_t>(clientIds);
        auto ids = answer ? xcb_res_query_client_ids_ids_iterator(answer.get()) : xcb_res_client_id_value_iterator_t{};
        for (; ids.rem > 0; xcb_res_client_id_value_next(&ids))
            if ((ids.data->spec.mask & pidMask()) && xcb_res_client_id_value_value_length(ids.data) > 0)
                facts.processIdentifier = xcb_res_client_id_value_value(ids.data)[0];
    }
    return facts;
}

std::optional<RunningApplication> X11Workspace::Private::programOf(xcb_window_t window) {
    WindowFacts owner;
    QList<xcb_window_t> seen;
    for (xcb_window_t next = window; next != noWindow && seen.size() < deepestChain && !seen.contains(next);) {
        seen.append(next);
        const WindowFacts facts = factsOf(next);
        if (facts.hasName())
            owner = facts;
        const bool isForWindow = facts.transientFor != noWindow && facts.transientFor != m_client.root();
        const bool isForGroup = facts.transientFor == m_client.root() || !facts.hasName();
        next = isForWindow ? facts.transientFor : isForGroup ? facts.group : noWindow;
    }
    if (!owner.hasName())
        return std::nullopt;
    if (owner.processIdentifier == ::getpid())
        return RunningApplication{ownBundleIdentifier, QStringLiteral("Tavrine"), ::getpid(), window};
    const KnownProgram program = knownProgram(owner.applicationId, owner.windowClass);
    return RunningApplication{.bundleIdentifier = program.bundleIdentifier,
                              .localizedName = program.name,
                              .processIdentifier = owner.processIdentifier,
                              .window = window,
                              .names = {owner.applicationId, owner.windowClass, owner.windowInstance}};
}

QList<RunningApplication> X11Workspace::Private::runningApplications() {
    QList<RunningApplication> found;
    auto windows = m_client.words(m_client.root(), "_NET_CLIENT_LIST");
    windows.resize(std::min(windows.size(), mostWindows));
    for (const xcb_window_t window : windows) {
        const auto program = programOf(window);
        const auto isSame = [&program](const RunningApplication &other) {
            return other.bundleIdentifier == program->bundleIdentifier;
        };
        if (program && program->processIdentifier != ::getpid() && std::ranges::none_of(found, isSame))
            found.append(*program);
    }
    return found;
}

X11Workspace::X11Workspace() : d(std::make_unique<Private>()) {}
X11Workspace::~X11Workspace() = default;

NotificationCenter &X11Workspace::notificationCenter() {
    return d->center;
}

std::optional<RunningApplication> X11Workspace::frontmostApplication() const {
    d->refresh(); // the notice of a change that is found here is posted in the next turn, never within the question
    return d->frontmost;
}

bool X11Workspace::isFrontmostKnown() const {
    return !d->isLate;
}

QList<RunningApplication> X11Workspace::runningApplications() const {
    return d->runningApplications();
}

void X11Workspace::activateFileViewerSelecting(const QList<QUrl> &urls) {
    showInFileManager(urls);
}

} // namespace tavrine
