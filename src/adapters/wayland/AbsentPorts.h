#pragma once

#include "ports/DragPasteboard.h"
#include "ports/EventTap.h"

/// What stands where a desktop has nothing for a port: it is asked, and nothing happens.
namespace tavrine::absent {

/// No program of a Wayland session may keep keys from others.
class NoEventTaps final : public EventTaps {
public:
    [[nodiscard]] bool areThere() const override { return false; }
    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> /*onChange*/) override { return nullptr; }
};

class NoDragPasteboards final : public DragPasteboards {
public:
    [[nodiscard]] std::unique_ptr<DragPasteboard> watch() override { return std::make_unique<Nothing>(); }

private:
    class Nothing final : public DragPasteboard {
    public:
        [[nodiscard]] int changeCount() const override { return 0; }
        [[nodiscard]] bool holdsFileReference() const override { return false; }
        [[nodiscard]] bool isDragging() const override { return false; }
        void setOnChange(std::function<void()> /*onChange*/) override {}
    };
};

} // namespace tavrine::absent
