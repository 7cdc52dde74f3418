#include "adapters/portal/PortalScreenStreams.h"

#include "adapters/cast/CastStreamLoop.h"
#include "adapters/portal/PortalCast.h"
#include "adapters/stream/ToolkitDisplays.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace tavrine {

void PortalScreenStreams::getShareableContent(ContentAnswer answer) {
    QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(toolkitDisplays()); });
}

std::unique_ptr<ScreenStream> PortalScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                              const ScreenStreamConfiguration &configuration,
                                                              Handlers handlers) {
    PortalScreen shown;
    if (const QScreen *const screen = toolkitDisplay(filter.displayID))
        shown = {screen->name(), screen->geometry(), QGuiApplication::screens().size() == 1};
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration, shown](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            auto cast =
                std::make_unique<PortalCast>(shown, CastTokens(CastTokens::usualPath()), PortalCast::Patience());
            return std::make_unique<CastStreamLoop>(std::move(cast), each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine
