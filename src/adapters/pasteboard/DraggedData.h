#pragma once

#include "ports/Dragging.h"

#include <QByteArray>
#include <QMimeData>

#include <future>
#include <span>

namespace tavrine {

/// What the toolkit says that was done with a drag.
[[nodiscard]] quint32 operationOf(Qt::DropAction action);

/// An item that is dragged out, in the forms in which other programs ask for it. A picture is packed on a thread of its
/// own while the pointer is on its way. Main thread; the toolkit keeps it until who takes it has it.
class DraggedData final : public QMimeData {
    Q_OBJECT

public:
    explicit DraggedData(const DraggedItem &item);

    [[nodiscard]] QStringList formats() const override;
    [[nodiscard]] bool hasFormat(const QString &type) const override { return formats().contains(type); }
    /// The targets under which programs ask for it.
    [[nodiscard]] std::span<const char *const> forms() const;
    /// The item as one of them.
    [[nodiscard]] QByteArray bytes(const char *target) const;
    /// As a drop of it within this program.
    [[nodiscard]] DroppedContent dropped() const;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &type, QMetaType preferred) const override;

private:
    const DraggedItem m_item;
    std::shared_future<QByteArray> m_png;
};

} // namespace tavrine
