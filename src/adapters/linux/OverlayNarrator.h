#pragma once

#include "adapters/linux/NarrationProtocol.h"

#include <QObject>

#include <functional>
#include <memory>

namespace tavrine {

/// Stands before screen readers for an overlay that is told in places. Owned by its program, which has nothing else to
/// do; its one thread, with an event loop.
class OverlayNarrator final : public QObject {
    Q_OBJECT

public:
    /// `onNobody` is called in a later turn where no screen reader listens.
    explicit OverlayNarrator(std::function<void()> onNobody);
    ~OverlayNarrator() override;

    void tell(const NarratedPlace &place);
    /// The overlay is over.
    void leave();

private:
    struct Stage;

    std::optional<NarratedPlace> m_screen;
    std::optional<NarratedPlace> m_latest;
    std::unique_ptr<Stage> m_stage; ///< none before somebody listens
};

} // namespace tavrine
