#pragma once

#include "ports/DragPasteboard.h"
#include "ports/Dragging.h"
#include "ports/EventTap.h"

#include <QWidget>

/// What stands where a desktop has nothing for a port: it is asked, and nothing happens.
namespace tavrine::absent {

/// No program of a Wayland session may keep keys from others.
class NoEventTaps final : public EventTaps {
public:
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

class NoDragging final : public Dragging {
public:
    void readDrop(const QMimeData & /*offered*/, std::function<void(const DroppedContent &)> completion) override {
        completion({});
    }
    [[nodiscard]] quint32 beginDragging(QWidget & /*source*/, const DraggedItem & /*item*/,
                                        std::function<quint32()> /*mask*/) override {
        return dragOperation::none;
    }
};

} // namespace tavrine::absent
