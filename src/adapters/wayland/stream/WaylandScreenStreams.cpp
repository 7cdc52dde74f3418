#include "adapters/wayland/stream/WaylandScreenStreams.h"

#include "adapters/stream/ToolkitDisplays.h"
#include "adapters/wayland/stream/OutputStreamLoop.h"

#include <QTimer>

namespace tavrine {

void WaylandScreenStreams::getShareableContent(ContentAnswer answer) {
    QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(toolkitDisplays()); });
}

std::unique_ptr<ScreenStream> WaylandScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                               const ScreenStreamConfiguration &configuration,
                                                               Handlers handlers) {
    return std::make_unique<ThreadedScreenStream>(
        planOfOutput(filter.displayID, configuration),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<OutputStreamLoop>(each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine
