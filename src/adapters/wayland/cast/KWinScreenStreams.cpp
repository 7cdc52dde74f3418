#include "adapters/wayland/cast/KWinScreenStreams.h"

#include "adapters/cast/CastStreamLoop.h"
#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/wayland/cast/KWinCast.h"

#include <QTimer>

namespace tavrine {

void KWinScreenStreams::getShareableContent(ContentAnswer answer) {
    QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(toolkitDisplays()); });
}

std::unique_ptr<ScreenStream> KWinScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                            const ScreenStreamConfiguration &configuration,
                                                            Handlers handlers) {
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<KWinCast>(), each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine
