#pragma once

#include "base/Time.h"
#include "ports/Dragging.h"

#include <utility>
#include <vector>

namespace tavrine {

/// Drops and drags that a test decides.
class FakeDragging final : public Dragging {
public:
    explicit FakeDragging(Time &time) : m_time(time) {}

    void readDrop(const QMimeData & /*offered*/, std::function<void(const DroppedContent &)> completion) override {
        ++m_reads;
        m_time.async([completion = std::move(completion), content = m_content] { completion(content); });
    }
    [[nodiscard]] quint32 beginDragging(QWidget &source, const DraggedItem &item,
                                        std::function<quint32()> mask) override {
        m_items.push_back(item);
        m_source = &source;
        m_masks.clear();
        if (m_during)
            m_during([this, &mask] { m_masks.push_back(mask()); });
        m_masks.push_back(mask());
        return m_operation;
    }

    /// What the next drops hold.
    void setDroppedContent(const DroppedContent &content) { m_content = content; }
    /// How the next drags end.
    void setOperation(quint32 operation) { m_operation = operation; }
    /// Called while an item is dragged, with a way to have it ask for its mask.
    void setDuring(std::function<void(const std::function<void()> &askForMask)> during) {
        m_during = std::move(during);
    }

    [[nodiscard]] int reads() const { return m_reads; }
    [[nodiscard]] const std::vector<DraggedItem> &items() const { return m_items; }
    /// What was offered in the course of the last drag.
    [[nodiscard]] const std::vector<quint32> &masks() const { return m_masks; }
    /// The view that the last drag came out of; it may be gone.
    [[nodiscard]] const QWidget *source() const { return m_source; }

private:
    Time &m_time;
    DroppedContent m_content;
    std::function<void(const std::function<void()> &)> m_during;
    std::vector<DraggedItem> m_items;
    std::vector<quint32> m_masks;
    const QWidget *m_source = nullptr;
    quint32 m_operation = dragOperation::copy;
    int m_reads = 0;
};

} // namespace tavrine
