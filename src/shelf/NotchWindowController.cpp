#include "shelf/NotchWindowController.h"

#include "base/Print.h"
#include "base/Time.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr quint32 mouseUp = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp;
constexpr quint32 mouseDragged =
    eventMask::leftMouseDragged | eventMask::rightMouseDragged | eventMask::otherMouseDragged;
constexpr quint32 watched = mouseUp | eventMask::mouseMoved | mouseDragged;

void print(const QString &text) {
    printLine(QStringLiteral("[NotchShelf] ") + text);
}

QString claim(bool isTrue) {
    return isTrue ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

NotchWindowController::NotchWindowController(Ports ports, const Views &views, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_time(m_ports.model.time), m_viewModel(m_ports.model) {
    m_dragPasteboard = m_ports.dragPasteboards.watch();
    m_lastCompletedFileDragPasteboardChangeCount = m_dragPasteboard->changeCount();
    m_dragPasteboard->setOnChange([this] { dragPasteboardChanged(); });
    pin(m_ports.screens.mainScreen());
    makeWindow(views);
    m_healthCheckTimer = m_time.repeat(notch::healthCheckInterval, [this] { checkHealth(); });
    startMonitors();
    m_sessionToken = m_ports.sessionNotices.follow([this](SessionNotice notice) { sessionNotice(notice); });
    m_screensToken = m_ports.screens.onChange([this] { screensChanged(); });
    followModel();
}

NotchWindowController::~NotchWindowController() {
    close();
}

void NotchWindowController::showWindow() {
    orderFront();
}

void NotchWindowController::close() {
    stopMonitors();
    m_leavingMonitor.reset();
    m_healthCheckTimer.reset();
    m_sessionToken.reset();
    m_screensToken.reset();
    m_dragPasteboard.reset();
    m_window.reset();
}

// The window.

void NotchWindowController::makeWindow(const Views &views) {
    m_window = m_ports.edgeWindows.makeEdgeWindow(
        {.title = QStringLiteral("NotchShelf"),
         .largestSize = largestShelf(),
         .level = windowLevel::floating,
         .collectionBehavior = collectionBehavior::canJoinAllSpaces | collectionBehavior::stationary |
                               collectionBehavior::ignoresCycle | collectionBehavior::fullScreenAuxiliary,
         .outline = views.outline});
    m_window->setFrame(m_notchRect, std::chrono::milliseconds(0));
    m_window->setContentView(views.content(m_viewModel, [this] { dismiss(); }));
}

void NotchWindowController::followModel() {
    connect(&m_viewModel, &NotchViewModel::isFileDragActiveChanged, this, [this] { modelChanged(); });
    connect(&m_viewModel, &NotchViewModel::isDragTargetActiveChanged, this, [this] { modelChanged(); });
    connect(&m_viewModel, &NotchViewModel::isHoveringChanged, this, [this] { modelChanged(); });
    connect(&m_viewModel, &NotchViewModel::isShelfItemDragActiveChanged, this, [this] { modelChanged(); });
    connect(&m_viewModel, &NotchViewModel::itemsChanged, this, [this] { itemsChanged(); });
    modelChanged();
}

/// What a slow program drops comes after all flags; and an empty shelf is in the way of what lies below. One that lost
/// an item keeps its width, so that the pointer stays on it.
void NotchWindowController::itemsChanged() {
    const qsizetype count = m_viewModel.items().size();
    if (count > std::exchange(m_itemCount, count) || count == 0)
        modelChanged();
    if (count == 0)
        dismiss();
}

/// The flags change together and often while something is dragged; the window follows once they stay.
void NotchWindowController::modelChanged() {
    watchPointerClosely();
    m_time.asyncAfter(notch::modelDebounce, this, [this, change = ++m_modelChange] {
        if (change != m_modelChange)
            return;
        applyFrame();
        applyMousePassThrough();
    });
}

void NotchWindowController::applyFrame() {
    const QRectF target = targetFrame(m_viewModel, m_pinnedScreen.frame);
    if (m_window && m_window->frame() != target)
        m_window->setFrame(target, notch::frameAnimationDuration);
}

/// Text and pictures are no file drags and open nothing, but they can be dropped: any drag finds the band.
void NotchWindowController::applyMousePassThrough() {
    const bool ignores = !m_viewModel.shouldExpand() && !(m_dragPasteboard && m_dragPasteboard->isDragging());
    if (m_window && m_window->ignoresMouseEvents() != ignores)
        m_window->setIgnoresMouseEvents(ignores);
}

void NotchWindowController::orderFront() {
    if (m_window)
        m_window->orderFrontRegardless();
}

/// Nobody called it: not above a panel that was called since, and not above an item of its own that is on its way,
/// whose drag shows as a window, too.
void NotchWindowController::comeBackToTheFront() {
    if (!m_window)
        return;
    const bool isOwnOnItsWay = m_ports.screens.pressedMouseButtons() != 0 && !m_dragPasteboard->isDragging();
    if (!isOwnOnItsWay)
        m_window->keepInFront();
}

// The keyboard.

bool NotchWindowController::openWithKeyboard() {
    if (!m_window || m_viewModel.items().isEmpty())
        return false;
    m_hasKeyboard = true;
    m_viewModel.setHovering(true);
    applyFrame();
    applyMousePassThrough();
    orderFront();
    m_window->takeKeyboard();
    m_leavingMonitor = m_ports.eventMonitors.addGlobalMonitor(eventMask::leftMouseDown | eventMask::rightMouseDown,
                                                              [this](const InputEvent & /*event*/) { dismiss(); });
    return true;
}

void NotchWindowController::dismiss() {
    if (!std::exchange(m_hasKeyboard, false))
        return;
    // A turn later: it may be this monitor that tells of it.
    m_time.async(this, [this] {
        if (!m_hasKeyboard)
            m_leavingMonitor.reset();
    });
    if (m_window)
        m_window->returnKeyboard();
    updateHovering(m_ports.screens.mouseLocation());
}

// The mouse.

void NotchWindowController::startMonitors() {
    if (std::exchange(m_isMonitoringActive, true))
        return;
    stopMonitors();
    ++m_monitorRestartCount;
    print(QStringLiteral("Starting mouse monitoring (restart #%1)").arg(m_monitorRestartCount));
    addMonitors();
    m_pollingTimer = m_ports.screens.watchPointer(m_time, notch::pollInterval, [this] { poll(); });
    watchPointerClosely();
    m_lastMouseCheckTime = m_time.now();
    m_isMonitoringActive = false;
}

void NotchWindowController::stopMonitors() {
    m_mouseMonitor.reset();
    m_localMouseMonitor.reset();
    m_pollingTimer.reset();
}

void NotchWindowController::addMonitors() {
    m_mouseMonitor =
        m_ports.eventMonitors.addGlobalMonitor(watched, [this](const InputEvent &event) { mouseEvent(event); });
    m_localMouseMonitor = m_ports.eventMonitors.addLocalMonitor(watched, [this](const InputEvent &event) {
        mouseEvent(event);
        return false;
    });
}

void NotchWindowController::mouseEvent(const InputEvent &event) {
    m_lastMouseCheckTime = m_time.now();
    handleForFileDrags(event.type);
    updateHovering(m_ports.screens.mouseLocation());
}

/// At rest nothing follows from a pointer that rests. While something is open, what follows from it may change without
/// it.
void NotchWindowController::watchPointerClosely() {
    if (m_pollingTimer)
        m_pollingTimer->setTellsAll(m_viewModel.isFileDragActive() || m_viewModel.isDragTargetActive() ||
                                    m_viewModel.isHovering());
}

/// One question, two checks, and no memory.
void NotchWindowController::poll() {
    const PointerReading pointer = m_ports.screens.pointer();
    // A release that no monitor saw.
    if (m_viewModel.isFileDragActive() && pointer.pressedButtons == 0)
        completeDrag();
    updateHovering(pointer.location);
}

void NotchWindowController::updateHovering(const QPointF &mouse) {
    m_lastMouseCheckTime = m_time.now();
    const QRectF &screen = m_pinnedScreen.frame;
    bool isInside = m_hasKeyboard || isInHoverBand(mouse, screen);
    if (!isInside && m_viewModel.isHovering() && m_window)
        isInside = isNear(mouse, m_window->frame().united(targetFrame(m_viewModel, screen)));
    if (isInside != m_viewModel.isHovering())
        m_time.async(this, [this, isInside] { setHovering(isInside); });
}

void NotchWindowController::setHovering(bool isHovering) {
    if (isHovering && !m_viewModel.isHovering())
        orderFront();
    m_viewModel.setHovering(isHovering || m_hasKeyboard);
}

// Drags.

void NotchWindowController::handleForFileDrags(quint32 eventType) {
    if (m_viewModel.isShelfItemDragActive())
        return;
    if (eventType & mouseUp)
        completeDrag();
    else if (eventType & mouseDragged)
        dragged();
}

/// What was dragged last stays on the pasteboard: a stroke that drags nothing has the count of a drag that is over.
void NotchWindowController::dragged() {
    if (!m_dragPasteboard || !m_dragPasteboard->holdsFileReference())
        return;
    const int changeCount = m_dragPasteboard->changeCount();
    if (!m_viewModel.isFileDragActive() && changeCount == m_lastCompletedFileDragPasteboardChangeCount)
        return;
    m_activeFileDragPasteboardChangeCount = changeCount;
    setFileDrag(true);
}

/// A drag opens the shelf though the pointer rests after its first step, and ends also by Escape or with its program.
void NotchWindowController::dragPasteboardChanged() {
    if (m_dragPasteboard->isDragging()) {
        applyMousePassThrough();
        orderFront();
        handleForFileDrags(eventMask::leftMouseDragged);
        return;
    }
    if (!m_viewModel.isShelfItemDragActive())
        completeDrag();
    m_viewModel.endDrag();
    modelChanged();
}

void NotchWindowController::completeDrag() {
    if (m_activeFileDragPasteboardChangeCount)
        m_lastCompletedFileDragPasteboardChangeCount = *m_activeFileDragPasteboardChangeCount;
    else if (m_dragPasteboard && !m_dragPasteboard->isDragging())
        // A release that is heard of late must not complete the drag that has begun since; its own end will.
        m_lastCompletedFileDragPasteboardChangeCount = m_dragPasteboard->changeCount();
    m_activeFileDragPasteboardChangeCount.reset();
    setFileDrag(false);
}

void NotchWindowController::setFileDrag(bool isActive) {
    if (m_viewModel.isFileDragActive() == isActive)
        return;
    m_viewModel.setFileDragActive(isActive);
    if (!isActive)
        m_viewModel.setDragTargetActive(false);
}

// What may hurt the sources.

void NotchWindowController::checkHealth() {
    const bool areMonitorsLost = !m_mouseMonitor || !m_localMouseMonitor;
    const bool isPollingLost = !m_pollingTimer;
    const Date lastCheck =
        isPollingLost ? m_lastMouseCheckTime : std::max(m_lastMouseCheckTime, m_pollingTimer->lastLook());
    const bool isStuck = m_time.now() - lastCheck > notch::stuckThreshold;
    if (areMonitorsLost || isPollingLost || isStuck) {
        print(QStringLiteral("Health check: Restarting monitors (monitors lost: %1, polling lost: %2, stuck: %3)")
                  .arg(claim(areMonitorsLost), claim(isPollingLost), claim(isStuck)));
        startMonitors();
    }
    comeBackToTheFront();
}

void NotchWindowController::sessionNotice(SessionNotice notice) {
    switch (notice) {
    case SessionNotice::didWake:
    case SessionNotice::screensDidWake:
    case SessionNotice::activeSpaceDidChange:
        print(QStringLiteral("System event detected, restarting monitors"));
        break;
    case SessionNotice::didBecomeActive:
    case SessionNotice::didUnhide:
        print(QStringLiteral("App event detected, restarting monitors"));
        break;
    case SessionNotice::screenIsUnlocked:
        print(QStringLiteral("Screen unlocked, restarting monitors"));
        startMonitors();
        return;
    }
    startMonitors();
    comeBackToTheFront();
}

void NotchWindowController::screensChanged() {
    print(QStringLiteral("Screen configuration changed"));
    repin();
    startMonitors();
    applyFrame();
    orderFront();
}

void NotchWindowController::pin(const std::optional<Screen> &screen) {
    m_pinnedScreen = screen.value_or(Screen());
    m_notchRect = restingFrame(m_pinnedScreen.frame);
}

/// The shelf stays on its screen, whatever becomes of that screen's size, until it is gone.
void NotchWindowController::repin() {
    const auto screens = m_ports.screens.screens();
    for (const Screen &screen : screens)
        if (screen.number == m_pinnedScreen.number) {
            pin(screen);
            return;
        }
    if (screens.isEmpty())
        return;
    pin(m_ports.screens.mainScreen());
    print(QStringLiteral("Pinned display disconnected, re-pinned to ") + m_pinnedScreen.localizedName);
}

} // namespace tavrine
