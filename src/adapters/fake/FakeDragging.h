#pragma once

#include "base/Time.h"
#include "ports/Dragging.h"

#include <QMimeData>

#include <optional>
#include <utility>
#include <vector>

namespace tavrine {

/// Drops and drags that a test decides. Without its word a drop holds what was offered, and is read at once, and a drag
/// ends where all that is offered is taken.
class FakeDragging final : public Dragging {
public:
    explicit FakeDragging(Time &time) : m_time(time) {}

    void readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) override {
        ++m_reads;
        const DroppedContent content = m_content ? *m_content : contentOf(offered);
        if (m_isSlow)
            m_time.async([completion = std::move(completion), content] { completion(content); });
        else
            completion(content);
    }
    [[nodiscard]] Qt::KeyboardModifiers heldModifiers() const override { return m_held; }
    [[nodiscard]] quint32 beginDragging(QWidget &source, const DraggedItem &item,
                                        std::function<quint32()> mask) override {
        if (std::exchange(m_isDragging, true))
            return dragOperation::none;
        m_items.push_back(item);
        m_source = &source;
        m_masks.clear();
        if (m_during)
            m_during([this, &mask] { m_masks.push_back(mask()); });
        m_masks.push_back(mask());
        m_isDragging = false;
        return m_operation.value_or(m_masks.back());
    }

    /// What the next drops hold.
    void setDroppedContent(const DroppedContent &content) { m_content = content; }
    /// Programs that drag take longer with their answer than the drop's event.
    void beSlow() { m_isSlow = true; }
    void setHeldModifiers(Qt::KeyboardModifiers held) { m_held = held; }
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
    [[nodiscard]] static DroppedContent contentOf(const QMimeData &offered) {
        DroppedContent content{
            .types = offered.formats(), .fileUrls = {}, .fileUrlString = {}, .images = {}, .string = {}};
        for (const QUrl &url : offered.urls())
            if (url.isLocalFile())
                content.fileUrls.append(url);
        if (!content.fileUrls.isEmpty())
            return content;
        if (const auto image = QImage::fromData(offered.data(QStringLiteral("image/png"))); !image.isNull())
            content.images.append(image);
        if (offered.hasFormat(QStringLiteral("text/plain")))
            content.string = offered.text();
        return content;
    }

    Time &m_time;
    std::optional<DroppedContent> m_content;
    std::function<void(const std::function<void()> &)> m_during;
    std::vector<DraggedItem> m_items;
    std::vector<quint32> m_masks;
    const QWidget *m_source = nullptr;
    std::optional<quint32> m_operation;
    Qt::KeyboardModifiers m_held;
    int m_reads = 0;
    bool m_isSlow = false;
    bool m_isDragging = false;
};

} // namespace tavrine
