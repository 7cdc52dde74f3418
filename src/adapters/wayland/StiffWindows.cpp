#include "adapters/wayland/StiffWindows.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace tavrine {
namespace {

constexpr QSize framesOfCompositors(16, 48); ///< with a title; they draw them outside a window that floats

/// Until the window has been painted for the first time.
class Release final : public QObject {
public:
    explicit Release(QWidget &window) : QObject(&window), m_window(window) {
        QWindow *const handle = window.windowHandle();
        handle->installEventFilter(this);
        const QSize room = handle->screen()->availableSize() - framesOfCompositors;
        window.resize(window.size().boundedTo(room).expandedTo(window.minimumSize()));
        handle->setMinimumSize(window.size());
        handle->setMaximumSize(window.size());
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::Expose && static_cast<QWindow *>(object)->isExposed()) {
            object->removeEventFilter(this);
            // The toolkit paints it within this event, and with its first picture it is there.
            QMetaObject::invokeMethod(
                this, [this] { release(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void release() {
        if (QWindow *const handle = m_window.windowHandle()) {
            handle->setMinimumSize(m_window.minimumSize());
            handle->setMaximumSize(m_window.maximumSize());
        }
        deleteLater();
    }

    QWidget &m_window;
};

} // namespace

StiffWindows::StiffWindows() {
    qApp->installEventFilter(this);
}

bool StiffWindows::isStiff(const QWidget &window) {
    const QSize least = window.minimumSize() * 2;
    return least.width() > window.width() && least.height() > window.height();
}

bool StiffWindows::eventFilter(QObject *object, QEvent *event) {
    if (event->type() != QEvent::Show || event->spontaneous() || !object->isWidgetType())
        return false;
    auto &window = *static_cast<QWidget *>(object);
    const bool isOwnMatter = window.windowFlags().testFlag(Qt::BypassWindowManagerHint);
    if (window.windowType() == Qt::Window && window.windowHandle() && !isOwnMatter && isStiff(window))
        new Release(window);
    return false;
}

} // namespace tavrine
