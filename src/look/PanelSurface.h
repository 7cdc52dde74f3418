#pragma once

#include "look/Metrics.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QKeyEvent;

namespace tavrine::look {

/// The content of a panel that fills a clear window: a rounded ground with a hairline round it. Where no compositor
/// runs it masks the corners of its window, which would show as black otherwise.
class PanelSurface : public QWidget {
    Q_OBJECT
public:
    explicit PanelSurface(qreal cornerRadius = radius::panel, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void shapeWindow();

    qreal m_radius;
    QSize m_masked; ///< the size for which the window has its mask
};

/// Sees every key that goes to the window of a view before any widget there does, while it is on. Owned by the view.
class PanelKeys : public QObject {
    Q_OBJECT
public:
    /// A key as the panels' models are told of it. True swallows it.
    using Handler = std::function<bool(const QString &windowTitle, int keyCode, bool isCommandHeld)>;

    PanelKeys(QWidget *view, Handler handler);
    void setOn(bool isOn);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    QWidget *m_view;
    Handler m_handler;
    bool m_isOn = false;
};

/// The position on an ANSI keyboard; -1 for none. Keys that are called the same on every keyboard are known by their
/// name, wherever a person has put them; all others by their place, whatever is printed on them.
[[nodiscard]] int virtualKeyOf(const QKeyEvent &event);

} // namespace tavrine::look
