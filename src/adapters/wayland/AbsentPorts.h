#pragma once

#include "ports/DragPasteboard.h"

/// What stands where a desktop has nothing for a port: it is asked, and nothing happens.
namespace tavrine::absent {

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
