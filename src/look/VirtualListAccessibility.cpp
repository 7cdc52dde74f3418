#include "look/VirtualList.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

namespace tavrine::look {
namespace {

class RowInterface final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    RowInterface(VirtualList *list, int row) : m_list(list), m_row(row) {}

    [[nodiscard]] bool isValid() const override { return m_list && m_row < m_list->count(); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *parent() const override {
        return QAccessible::queryAccessibleInterface(m_list);
    }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? m_list->accessibleText(m_row) : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QRect rect() const override {
        if (!isValid())
            return {};
        const QRect inList = m_list->rowRect(m_row).toAlignedRect();
        return {m_list->mapToGlobal(inList.topLeft()), inList.size()};
    }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.selectable = true;
        state.focusable = true;
        state.selected = state.focused = m_list->selectedRow() == m_row;
        state.offscreen = !m_list->rowRect(m_row).intersects(m_list->rect());
        return state;
    }
    [[nodiscard]] int row() const { return m_row; }

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override {
        return isValid() ? m_list->actionNames(m_row) : QStringList();
    }
    void doAction(const QString &name) override {
        if (isValid())
            m_list->act(m_row, int(actionNames().indexOf(name)));
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QPointer<VirtualList> m_list;
    int m_row;
};

class ListInterface final : public QAccessibleWidget {
public:
    explicit ListInterface(VirtualList *list) : QAccessibleWidget(list, QAccessible::List) {}
    ~ListInterface() override {
        for (const QAccessible::Id id : std::as_const(m_rows))
            QAccessible::deleteAccessibleInterface(id);
    }

    [[nodiscard]] int childCount() const override { return list() ? list()->count() : 0; }
    [[nodiscard]] QAccessibleInterface *child(int row) const override {
        if (row < 0 || row >= childCount())
            return nullptr;
        const auto known = m_rows.constFind(row);
        if (known != m_rows.constEnd())
            return QAccessible::accessibleInterface(*known);
        auto *made = new RowInterface(list(), row);
        m_rows.insert(row, QAccessible::registerAccessibleInterface(made));
        return made;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override {
        const auto *row = dynamic_cast<const RowInterface *>(child);
        return row ? row->row() : -1;
    }
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override {
        return list() ? child(list()->rowAt(list()->mapFromGlobal(QPoint(x, y)).y())) : nullptr;
    }
    [[nodiscard]] QAccessibleInterface *focusChild() const override {
        return list() ? child(list()->selectedRow()) : nullptr;
    }

private:
    [[nodiscard]] VirtualList *list() const { return qobject_cast<VirtualList *>(object()); }

    // Made when a screen reader asks, a row at a time.
    mutable QHash<int, QAccessible::Id> m_rows;
};

QAccessibleInterface *makeInterface(const QString &, QObject *object) {
    auto *list = qobject_cast<VirtualList *>(object);
    return list ? new ListInterface(list) : nullptr;
}

} // namespace

void installVirtualListAccessibility() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

} // namespace tavrine::look
