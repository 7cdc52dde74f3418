#include "adapters/cast/CastStreamLoop.h"
#include "adapters/portal/PortalCast.h"
#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/stream/ToolkitPoints.h"
#include "adapters/stream/ToolkitScreenStreams.h"

#include <QGuiApplication>
#include <QScreen>

namespace tavrine {

/// The screens that the ScreenCast portal shows, after the person has said so.
class PortalScreenStreams final : public ToolkitScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)

public:
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

std::unique_ptr<ScreenStream> PortalScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                              const ScreenStreamConfiguration &wanted,
                                                              Handlers handlers) {
    // The toolkit's screens are rounded to its own points, which no portal knows.
    const ScreenStreamConfiguration configuration = inCompositorsPoints(filter.displayID, wanted);
    PortalScreen shown;
    if (const QScreen *const screen = toolkitDisplay(filter.displayID))
        shown = {screen->name(), toolkitPoints::onCompositorsPlane(screen), QGuiApplication::screens().size() == 1};
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

#include "PortalScreenStreams.moc"
