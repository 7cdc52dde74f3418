#include "adapters/cast/CastStreamLoop.h"
#include "adapters/gnome/cast/MutterCast.h"
#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/stream/ToolkitPoints.h"
#include "adapters/stream/ToolkitScreenStreams.h"

#include <QScreen>

namespace tavrine {

/// The screens of GNOME under Wayland, cast by its compositor over PipeWire and named as the X server inside names
/// them.
class GnomeScreenStreams final : public ToolkitScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)

public:
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

std::unique_ptr<ScreenStream> GnomeScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                             const ScreenStreamConfiguration &configuration,
                                                             Handlers handlers) {
    QRect display;
    double scale = 1;
    if (const QScreen *const screen = toolkitDisplay(filter.displayID)) {
        scale = screen->devicePixelRatio();
        display = toolkitPoints::onCompositorsPlane(screen); // which is the X server's
    }
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration, display, scale](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<MutterCast>(display, scale), each, configuration,
                                                    session);
        },
        std::move(handlers));
}

} // namespace tavrine

#include "GnomeScreenStreams.moc"
