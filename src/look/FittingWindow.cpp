#include "look/FittingWindow.h"

#include <QEvent>
#include <QPointer>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

std::function<QRect()> theCoveredPlace;

double fittedStart(double start, double length, double from, double room) {
    return std::clamp(start, from, from + room - length);
}

class Keeper final : public QObject {
public:
    explicit Keeper(QWidget &window) : QObject(&window), m_window(window) { window.installEventFilter(this); }

protected:
    bool eventFilter(QObject *object, QEvent *event) override {
        switch (event->type()) {
        case QEvent::Show:
            m_isPlaced = false;
            watchScreen();
            fitSoon();
            break;
        case QEvent::Move: // the desktop's frame is known with the first of them
            if (!m_isPlaced)
                fitSoon();
            break;
        case QEvent::WindowActivate: // it stands where the desktop has put it; from here on it is the person's
            fitSoon();
            m_isPlaced = true;
            break;
        default:
            break;
        }
        return QObject::eventFilter(object, event);
    }

private:
    // In a turn of its own: within the event the geometry is half the old one.
    void fitSoon() {
        QMetaObject::invokeMethod(
            this, [this] { fit(); }, Qt::QueuedConnection);
    }

    void watchScreen() {
        const QWindow *handle = m_window.windowHandle();
        if (!handle)
            return;
        connect(handle, &QWindow::screenChanged, this, &Keeper::moveTo, Qt::UniqueConnection);
        moveTo(handle->screen());
    }
    void moveTo(QScreen *screen) {
        if (m_screen)
            disconnect(m_screen, nullptr, this, nullptr);
        m_screen = screen;
        if (m_screen)
            connect(m_screen, &QScreen::availableGeometryChanged, this, &Keeper::fitSoon);
        fitSoon();
    }
    void fit() {
        if (!m_window.isVisible() || m_window.isMaximized() || m_window.isFullScreen() || m_window.isMinimized())
            return;
        const QRect usable = m_window.screen()->availableGeometry();
        const QRect frame = m_window.frameGeometry();
        const QSize border = frame.size() - m_window.size();
        const QRect wanted = placeFor(frame, usable);
        m_window.setMinimumSize(m_window.minimumSize().boundedTo(wanted.size() - border));
        if (wanted.size() != frame.size())
            m_window.resize(wanted.size() - border);
        if (wanted.topLeft() != frame.topLeft())
            m_window.move(wanted.topLeft());
    }

    static QRect placeFor(const QRect &frame, QRect usable) {
        const QRect wanted = fitted(frame, usable).toRect();
        const QRect covered = theCoveredPlace ? theCoveredPlace() : QRect();
        if (!covered.intersects(wanted))
            return wanted;
        usable.setTop(covered.bottom() + 1);
        return fitted(frame, usable).toRect();
    }

    QWidget &m_window;
    QPointer<QScreen> m_screen;
    bool m_isPlaced = false;
};

} // namespace

QRectF fitted(const QRectF &frame, const QRectF &usable) {
    if (usable.isEmpty())
        return frame;
    const QSizeF size = frame.size().boundedTo(usable.size());
    return {QPointF(fittedStart(frame.x(), size.width(), usable.x(), usable.width()),
                    fittedStart(frame.y(), size.height(), usable.y(), usable.height())),
            size};
}

void fitToScreen(QWidget &window) {
    new Keeper(window);
}

void setCoveredPlace(std::function<QRect()> place) {
    theCoveredPlace = std::move(place);
}

} // namespace tavrine
