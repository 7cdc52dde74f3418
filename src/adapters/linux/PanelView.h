#pragma once

#include "ports/PanelWindow.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace tavrine {

/// The toolkit's window of a panel, as every desktop has it: its content, room round it for its shadow, and what is
/// done with it while it is hidden. Owned by its panel; main thread.
class PanelView : public QWidget {
public:
    PanelView(const PanelDescription &description, Qt::WindowFlags flags);

    /// In the toolkit's coordinates, without the room for the shadow.
    [[nodiscard]] const QRect &frame() const { return m_frame; }
    [[nodiscard]] QMargins room() const { return m_room; }
    /// Takes it over; null for none.
    void setContent(QWidget *content);
    /// A question that stands before this panel goes, unanswered.
    void withdrawQuestion();

    std::function<void()> onMoved;
    std::function<void()> onClosed;

protected:
    void setRoom(const QMargins &room);
    [[nodiscard]] QWidget *content() const { return m_content; }
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

    const PanelDescription m_description;
    QRect m_frame;

private:
    void rest();

    QMargins m_room;
    QTimer m_restsSoon; ///< runs from the moment at which it was hidden
    QPointer<QWidget> m_content;
};

} // namespace tavrine
