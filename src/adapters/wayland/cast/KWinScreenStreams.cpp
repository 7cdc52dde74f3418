#include "adapters/wayland/cast/KWinScreenStreams.h"

#include "adapters/cast/CastStreamLoop.h"
#include "adapters/wayland/cast/KWinCast.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace tavrine {
namespace {

/// The same as `Screens` gives.
quint32 numberOf(const QScreen &screen) {
    return static_cast<quint32>(qHash(screen.name()));
}

} // namespace

void KWinScreenStreams::getShareableContent(ContentAnswer answer) {
    ShareableContent content;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        content.displays.append(ShareableDisplay{numberOf(*screen)});
    QTimer::singleShot(0, this, [content, answer = std::move(answer)] { answer(content); });
}

std::unique_ptr<ScreenStream> KWinScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                            const ScreenStreamConfiguration &configuration,
                                                            Handlers handlers) {
    std::optional<StreamPlan> plan;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        if (numberOf(*screen) == filter.displayID)
            plan = StreamPlan{.area = QRect(0, 0, configuration.width, configuration.height),
                              .keptOut = {},
                              .showsPointer = configuration.showsCursor,
                              .interval = configuration.minimumFrameInterval,
                              .queueDepth = configuration.queueDepth,
                              .output = screen->name()};
    return std::make_unique<ThreadedScreenStream>(
        std::move(plan),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<KWinCast>(), each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine
