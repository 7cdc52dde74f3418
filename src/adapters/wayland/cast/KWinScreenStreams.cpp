#include "adapters/cast/CastStreamLoop.h"
#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/stream/ToolkitScreenStreams.h"
#include "adapters/wayland/cast/KWinCast.h"

namespace tavrine {

/// The outputs of KWin, cast by it over PipeWire.
class KWinScreenStreams final : public ToolkitScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)

public:
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

std::unique_ptr<ScreenStream> KWinScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                            const ScreenStreamConfiguration &wanted,
                                                            Handlers handlers) {
    const ScreenStreamConfiguration configuration = inCompositorsPoints(filter.displayID, wanted);
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<KWinCast>(), each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine

#include "KWinScreenStreams.moc"
