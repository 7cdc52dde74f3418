#include "capture/editor/EditorFlow.h"

#include "base/Print.h"
#include "base/Time.h"
#include "look/FittingWindow.h"
#include "panels/Placement.h"
#include "ports/Application.h"
#include "ports/Screens.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr double singleWidth = 900;
constexpr double singleHeight = 600;
constexpr double landingWidth = 960;
constexpr double landingHeight = 660;
constexpr double titleRoom = 40; // for the frame that the desktop puts round it, whose size is known too late

void debug(const char *text) {
    printLine(QStringLiteral("DEBUG: AppDelegate - ") + QLatin1String(text));
}

} // namespace

EditorFlow::EditorFlow(Ports ports, Windows windows, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_windows(std::move(windows)) {}

QRectF EditorFlow::centredFrame(double width, double height, bool isUnderMouse) const {
    const Screens &desk = m_ports.screens();
    const std::optional<Screen> screen = isUnderMouse ? screenForTool(desk) : mainOrFirstScreen(desk);
    const QRectF usable = screen ? usableFrame(*screen) : QRectF();
    const QPointF middle = usable.isNull() ? QPointF(width / 2, height / 2) : usable.center();
    const QRectF centred(middle.x() - width / 2, middle.y() - height / 2, width, height);
    // The window hangs from the upper edge of its frame, so that its title takes its room below.
    return fitted(centred, usable.adjusted(0, std::min(titleRoom, usable.height() / 2), 0, 0));
}

void EditorFlow::openEditorDirectly(const QImage &image) {
    debug("openEditorDirectly called");
    openSingle(image);
}

void EditorFlow::openEditorForItem(const QString &fileName) {
    if (const std::optional<QImage> image = m_windows.loadImage(fileName))
        openSingle(*image);
}

void EditorFlow::closeWindow() {
    if (m_windows.hasWindow())
        m_windows.closeWindow();
}

void EditorFlow::openSingle(const QImage &image) {
    closeWindow();
    m_ports.application.setActivationPolicy(ActivationPolicy::regular);
    m_windows.makeWindow({.title = QStringLiteral("Tavrine Snap Editor"),
                          .frame = centredFrame(singleWidth, singleHeight, true),
                          .image = image,
                          .hasLanding = false});
    m_windows.bringWindowForward();
    m_windows.activateApplication();
}

void EditorFlow::openTavrineEditor(const std::optional<QImage> &image) {
    closeWindow();
    m_windows.makeWindow({.title = QStringLiteral("Tavrine Editor"),
                          .frame = centredFrame(landingWidth, landingHeight, false),
                          .image = image,
                          .hasLanding = true});
    m_ports.application.setActivationPolicy(ActivationPolicy::regular);
    m_ports.time.asyncAfter(frontDelay, this, [this] {
        if (!m_windows.hasWindow())
            return;
        // Again: the window that was closed for this one has left the task bar by now, and the program with it.
        m_ports.application.setActivationPolicy(ActivationPolicy::regular);
        m_windows.activateApplication();
        m_windows.bringWindowForward();
    });
    debug("Editor window opened!");
}

} // namespace tavrine
