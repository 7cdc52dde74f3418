#pragma once

#include "ports/DragPasteboard.h"
#include "ports/Dragging.h"
#include "ports/EdgeWindow.h"
#include "ports/EventTap.h"

#include <QWidget>

/// What stands where a desktop has nothing for a port: it is asked, and nothing happens.
namespace tavrine::absent {

class NoEdgeWindows final : public EdgeWindows {
public:
    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription & /*description*/) override {
        return std::make_unique<Window>();
    }

private:
    class Window final : public EdgeWindow {
    public:
        [[nodiscard]] qint64 windowNumber() const override { return 0; }
        [[nodiscard]] bool isVisible() const override { return false; }
        [[nodiscard]] QRectF frame() const override { return m_frame; }
        void setFrame(const QRectF &frame, std::chrono::milliseconds /*duration*/) override { m_frame = frame; }
        [[nodiscard]] bool ignoresMouseEvents() const override { return true; }
        void setIgnoresMouseEvents(bool /*ignores*/) override {}
        void orderFrontRegardless() override {}
        void orderOut() override {}
        void takeKeyboard() override {}
        void returnKeyboard() override {}
        void setContentView(QWidget *content) override { m_content.reset(content); }

    private:
        QRectF m_frame;
        std::unique_ptr<QWidget> m_content;
    };
};

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
