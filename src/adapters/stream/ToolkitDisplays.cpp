#include "adapters/stream/ToolkitDisplays.h"

#include "adapters/stream/ToolkitPoints.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace tavrine {
namespace {

quint32 numberOf(const QScreen &screen) {
    return static_cast<quint32>(qHash(screen.name()));
}

} // namespace

ShareableContent toolkitDisplays() {
    ShareableContent content;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        content.displays.append(ShareableDisplay{numberOf(*screen)});
    return content;
}

const QScreen *toolkitDisplay(quint32 number) {
    const auto screens = QGuiApplication::screens();
    const auto found = std::find_if(screens.begin(), screens.end(),
                                    [number](const QScreen *each) { return numberOf(*each) == number; });
    return found == screens.end() ? nullptr : *found;
}

ScreenStreamConfiguration inCompositorsPoints(quint32 display, ScreenStreamConfiguration configuration) {
    const double factor = toolkitPoints::factor(toolkitDisplay(display));
    const QRectF &source = configuration.sourceRect;
    configuration.sourceRect = QRectF(source.topLeft() * factor, source.size() * factor);
    return configuration;
}

std::optional<StreamPlan> planOfOutput(quint32 number, const ScreenStreamConfiguration &configuration) {
    const QScreen *const screen = toolkitDisplay(number);
    if (!screen)
        return std::nullopt;
    return StreamPlan{.area = QRect(0, 0, configuration.width, configuration.height),
                      .keptOut = {},
                      .showsPointer = configuration.showsCursor,
                      .interval = configuration.minimumFrameInterval,
                      .queueDepth = configuration.queueDepth,
                      .output = screen->name()};
}

} // namespace tavrine
