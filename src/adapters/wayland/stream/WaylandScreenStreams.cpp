#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/stream/ToolkitScreenStreams.h"
#include "adapters/wayland/stream/OutputStreamLoop.h"

namespace tavrine {

/// The outputs of a Wayland compositor, as it copies them.
class WaylandScreenStreams final : public ToolkitScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)

public:
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

std::unique_ptr<ScreenStream> WaylandScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                               const ScreenStreamConfiguration &wanted,
                                                               Handlers handlers) {
    const ScreenStreamConfiguration configuration = inCompositorsPoints(filter.displayID, wanted);
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<OutputStreamLoop>(each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine

#include "WaylandScreenStreams.moc"
