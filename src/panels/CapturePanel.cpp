#include "panels/CapturePanel.h"

#include "base/Time.h"
#include "ports/Screens.h"

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr Seconds frameLength{1.0 / 60};

/// The left and the right neighbour share an edge, which belongs to the right one.
bool holds(const QRectF &frame, QPointF point) {
    return point.x() >= frame.x() && point.x() < frame.x() + frame.width() && point.y() >= minY(frame) &&
           point.y() <= maxY(frame);
}

bool isSound(const QRectF &frame) {
    return std::isfinite(frame.x()) && std::isfinite(frame.y()) && std::isfinite(frame.width()) &&
           std::isfinite(frame.height()) && frame.width() > 0 && frame.height() > 0;
}

/// Ease-in: the cubic curve from (0,0) to (1,1) with the control points (0.42,0) and (1,1), at the part `x` of the
/// time.
double easedIn(double x) {
    double low = 0;
    double high = 1;
    for (int i = 0; i < 30; ++i) {
        const double t = (low + high) / 2;
        const double at = 3 * (1 - t) * (1 - t) * t * 0.42 + 3 * (1 - t) * t * t + t * t * t;
        (at < x ? low : high) = t;
    }
    return 3 * (1 - low) * low * low + low * low * low;
}

double easedOut(double x) {
    return 1 - easedIn(1 - x);
}

} // namespace

std::optional<Screen> screenForTool(const Screens &screens) {
    const QList<Screen> all = screens.screens();
    const QPointF pointer = screens.mouseLocation();
    for (const Screen &screen : all)
        if (holds(screen.frame, pointer))
            return screen;
    return mainOrFirstScreen(screens);
}

std::optional<Screen> mainOrFirstScreen(const Screens &screens) {
    if (auto main = screens.mainScreen())
        return main;
    const QList<Screen> all = screens.screens();
    return all.isEmpty() ? std::nullopt : std::optional(all.first());
}

QRectF usableFrame(const Screen &screen) {
    if (isSound(screen.visibleFrame))
        return screen.visibleFrame;
    return isSound(screen.frame) ? screen.frame : QRectF();
}

struct CapturePanel::Leaving {
    std::unique_ptr<PanelWindow> window;
    double startedAt = 0;
    double startAlpha = 1;
    std::unique_ptr<Timer> timer;
};

CapturePanel::CapturePanel(Ports ports, PanelDescription description, Placement placement)
    : m_ports(ports), m_description(std::move(description)), m_placement(std::move(placement)) {}

CapturePanel::~CapturePanel() = default;

void CapturePanel::show(QWidget *content) {
    dismiss(Dismissal::atOnce);
    m_window = m_ports.windows.makePanel(m_description);
    m_window->setContentView(content);
    place();
    const bool fades = m_ports.windows.isComposited();
    m_window->setAlpha(fades ? 0.0 : 1.0);
    if (m_description.canBecomeKey)
        m_window->makeKeyAndOrderFront();
    else
        m_window->orderFrontRegardless();
    if (fades)
        m_fadeIn = m_ports.time.repeat(
            frameLength, [this, startedAt = m_ports.time.systemUptime().count()] { fadeInStep(startedAt); });
    m_screenChanges = m_ports.screens.onChange([this] { keepOnScreen(); });
}

void CapturePanel::place() {
    const auto screen = screenForTool(m_ports.screens);
    const QRectF usable = screen ? usableFrame(*screen) : QRectF();
    m_window->setFrame(QRectF(m_placement(usable), m_description.contentSize));
}

/// A screen that goes takes no window with it, and one that shrinks leaves none outside.
void CapturePanel::keepOnScreen() {
    if (!m_window)
        return;
    const QList<Screen> all = m_ports.screens.screens();
    const QRectF frame = m_window->frame();
    if (std::none_of(all.begin(), all.end(), [&](const Screen &s) { return usableFrame(s).contains(frame); }))
        place();
}

void CapturePanel::fadeInStep(double startedAt) {
    const double part = (m_ports.time.systemUptime().count() - startedAt) / fadeIn.count();
    m_window->setAlpha(part < 1 ? easedOut(part) : 1.0);
    if (part >= 1)
        m_fadeIn.reset();
}

void CapturePanel::dismiss(Dismissal dismissal) {
    if (!m_window)
        return;
    m_fadeIn.reset();
    m_screenChanges.reset();
    std::unique_ptr<PanelWindow> window = std::move(m_window);
    if (dismissal == Dismissal::atOnce || !m_ports.windows.isComposited()) {
        tearDown(std::move(window));
        return;
    }
    auto leaving = std::make_unique<Leaving>();
    leaving->startedAt = m_ports.time.systemUptime().count();
    leaving->startAlpha = window->alpha();
    leaving->window = std::move(window);
    leaving->timer = m_ports.time.repeat(frameLength, [this, faded = leaving.get()] { fadeOutStep(*faded); });
    m_ports.time.asyncAfter(fadeOut, this, [this, faded = leaving.get()] {
        const auto found = std::find_if(m_leaving.begin(), m_leaving.end(),
                                        [&](const auto &candidate) { return candidate.get() == faded; });
        const std::unique_ptr<Leaving> gone = std::move(*found);
        m_leaving.erase(found);
        gone->timer.reset();
        gone->window->setAlpha(0);
        tearDown(std::move(gone->window));
    });
    m_leaving.push_back(std::move(leaving));
}

void CapturePanel::fadeOutStep(Leaving &leaving) {
    const double part = std::min(1.0, (m_ports.time.systemUptime().count() - leaving.startedAt) / fadeOut.count());
    leaving.window->setAlpha(leaving.startAlpha * (1 - easedIn(part)));
}

void CapturePanel::tearDown(std::unique_ptr<PanelWindow> window) {
    window->orderOut();
    const std::shared_ptr<PanelWindow> last = std::move(window);
    m_ports.time.async(this, [last] { last->setContentView(nullptr); });
}

} // namespace tavrine
