#include "adapters/x11/X11DragPasteboards.h"

#include "adapters/x11/DragWatch.h"
#include "adapters/x11/OwnWindows.h"
#include "base/OnMainThread.h"

#include <thread>

#include <pthread.h>

namespace tavrine {
namespace {

class X11DragPasteboard final : public DragPasteboard {
public:
    X11DragPasteboard() {
        m_watch = std::make_shared<DragWatch>(ownWindows(), [told = std::weak_ptr(m_told)](const DragState &state) {
            onMainThread([told, state] {
                if (const auto self = told.lock())
                    (*self)->take(state);
            });
        });
        // Nobody waits for it: another program may hold the server for itself.
        std::thread([watch = m_watch] {
            pthread_setname_np(pthread_self(), "drags");
            watch->run();
        }).detach();
    }
    ~X11DragPasteboard() override { m_watch->stop(); }
    X11DragPasteboard(const X11DragPasteboard &) = delete;
    X11DragPasteboard &operator=(const X11DragPasteboard &) = delete;

    [[nodiscard]] int changeCount() const override { return m_state.changeCount; }
    [[nodiscard]] bool holdsFileReference() const override { return m_state.holdsFileReference; }
    [[nodiscard]] bool isDragging() const override { return m_state.isDragging; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

private:
    void take(const DragState &state) {
        m_state = state;
        if (const auto onChange = m_onChange) // it may destroy the pasteboard
            onChange();
    }

    DragState m_state;
    std::function<void()> m_onChange;
    std::shared_ptr<X11DragPasteboard *> m_told = std::make_shared<X11DragPasteboard *>(this);
    std::shared_ptr<DragWatch> m_watch;
};

} // namespace

std::unique_ptr<DragPasteboard> X11DragPasteboards::watch() {
    return std::make_unique<X11DragPasteboard>();
}

} // namespace tavrine
