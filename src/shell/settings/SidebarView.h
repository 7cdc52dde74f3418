#pragma once

#include "shell/settings/SidebarItem.h"

#include <QWidget>

#include <optional>
#include <vector>

class QKeyEvent;

namespace tavrine {

namespace look {
class Label;
class ScrollPane;
} // namespace look

/// The pages of the settings window, one under the other in their groups. One of them is selected, or none. Belongs to
/// the window; main thread.
///
/// A narrow bar shows the symbols alone, and tells their titles by tool tips.
///
/// The whole bar is one stop of the Tab key. Within it the arrows, Home and End move the selection, and letters that
/// are typed lead to the next page whose title begins with them.
class SidebarView final : public QWidget {
    Q_OBJECT

public:
    enum class Kind { wide, narrow };
    [[nodiscard]] static constexpr int widthOf(Kind kind) { return kind == Kind::wide ? 212 : 60; }

    explicit SidebarView(QWidget *parent = nullptr);
    ~SidebarView() override;

    [[nodiscard]] std::optional<SidebarItem> selection() const { return m_selection; }
    [[nodiscard]] Kind kind() const { return m_kind; }
    void setKind(Kind kind);
    /// Does not emit.
    void setSelection(std::optional<SidebarItem> item);
    /// The pages from the top to the bottom.
    [[nodiscard]] static std::vector<SidebarItem> order();

Q_SIGNALS:
    /// A person chose another page.
    void selected(tavrine::SidebarItem item);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Row;

    [[nodiscard]] bool takeKey(const QKeyEvent &event);
    [[nodiscard]] bool typeAhead(const QKeyEvent &event);
    void choose(std::size_t index);
    [[nodiscard]] std::size_t index() const;

    std::optional<SidebarItem> m_selection;
    Kind m_kind = Kind::wide;
    std::vector<Row *> m_rows;
    std::vector<look::Label *> m_headings;
    look::ScrollPane *m_pane = nullptr;
    QString m_typed;
    quint64 m_typedAt = 0;
};

} // namespace tavrine
