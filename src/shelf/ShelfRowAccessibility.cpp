#include "shelf/ShelfItemDragSourceView.h"
#include "shelf/ShelfRowView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

namespace tavrine {
namespace {

const QString removeAction = QStringLiteral("Remove");
const QString copyAction = QStringLiteral("Copy");

QString kindOf(const ShelfItem &item) {
    switch (item.type) {
    case ItemType::file:
        return QStringLiteral("file");
    case ItemType::text:
        return QStringLiteral("text");
    case ItemType::image:
        break;
    }
    return QStringLiteral("image");
}

/// What the screen reader has done happens in a later turn: it waits for the answer.
class ItemInterface final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ItemInterface(ShelfRowView *row, int index) : m_row(row), m_index(index) {}

    [[nodiscard]] bool isValid() const override { return m_row && m_index < m_row->items().size(); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(m_row); }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (!isValid())
            return {};
        const ShelfItem &item = m_row->items().at(m_index);
        if (kind == QAccessible::Name)
            return wholeName(item);
        return kind == QAccessible::Description ? kindOf(item) : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QRect rect() const override {
        if (!isValid())
            return {};
        const QRect inRow = m_row->slot(m_index).toAlignedRect();
        return {m_row->mapToGlobal(inRow.topLeft()), inRow.size()};
    }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.selectable = state.focusable = true;
        state.selected = state.focused = m_row->hasFocus() && m_row->current() == m_index;
        state.offscreen = !m_row->slot(m_index).intersects(m_row->rect());
        return state;
    }
    [[nodiscard]] int index() const { return m_index; }

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override {
        if (!isValid())
            return {};
        QStringList names{copyAction, removeAction, setFocusAction()};
        if (m_row->items().at(m_index).url)
            names.prepend(pressAction());
        return names;
    }
    void doAction(const QString &name) override {
        if (!isValid())
            return;
        QMetaObject::invokeMethod(
            m_row,
            [row = m_row.data(), index = m_index, name] {
                if (name == pressAction())
                    row->open(index);
                else if (name == copyAction)
                    row->copy(index);
                else if (name == removeAction)
                    row->remove(index);
                else if (name == setFocusAction())
                    row->setCurrent(index);
            },
            Qt::QueuedConnection);
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QPointer<ShelfRowView> m_row;
    int m_index;
};

/// The tiles themselves are nothing to a screen reader: it is told of all items, those out of sight too.
class RowInterface final : public QAccessibleWidget {
public:
    explicit RowInterface(ShelfRowView *row) : QAccessibleWidget(row, QAccessible::List) {}
    ~RowInterface() override {
        for (const QAccessible::Id id : std::as_const(m_items))
            QAccessible::deleteAccessibleInterface(id);
    }

    [[nodiscard]] int childCount() const override { return row() ? static_cast<int>(row()->items().size()) : 0; }
    [[nodiscard]] QAccessibleInterface *child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        const auto known = m_items.constFind(index);
        if (known != m_items.constEnd())
            return QAccessible::accessibleInterface(*known);
        auto *made = new ItemInterface(row(), index);
        m_items.insert(index, QAccessible::registerAccessibleInterface(made));
        return made;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override {
        const auto *item = dynamic_cast<const ItemInterface *>(child);
        return item ? item->index() : -1;
    }
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override {
        return row() ? child(row()->itemAt(row()->mapFromGlobal(QPoint(x, y)))) : nullptr;
    }
    [[nodiscard]] QAccessibleInterface *focusChild() const override {
        return row() && row()->hasFocus() ? child(row()->current()) : nullptr;
    }

private:
    [[nodiscard]] ShelfRowView *row() const { return qobject_cast<ShelfRowView *>(object()); }

    // Made when a screen reader asks, an item at a time.
    mutable QHash<int, QAccessible::Id> m_items;
};

QAccessibleInterface *makeInterface(const QString &, QObject *object) {
    auto *row = qobject_cast<ShelfRowView *>(object);
    return row ? new RowInterface(row) : nullptr;
}

} // namespace

void installShelfRowAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

} // namespace tavrine
