#include "adapters/stream/ToolkitScreenStreams.h"

#include "adapters/stream/ToolkitDisplays.h"

#include <QTimer>

namespace tavrine {

void ToolkitScreenStreams::getShareableContent(ContentAnswer answer) {
    QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(toolkitDisplays()); });
}

} // namespace tavrine
