#pragma once

#include "ports/Screens.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

class QScreen;

namespace tavrine {

/// Who wants to hear that the screens have changed. Follows the toolkit's screens by itself; what else changes them is
/// told by their owner. Main thread.
class ScreenChanges final : public QObject {
public:
    ScreenChanges();

    /// A turn later all are called, once for whatever came until then: one re-arrangement comes as many notices.
    void tell();
    [[nodiscard]] Screens::Token add(std::function<void()> handler);

private:
    void watch(QScreen *screen);

    std::vector<std::weak_ptr<std::function<void()>>> m_listeners;
    bool m_isPosted = false;
};

} // namespace tavrine
