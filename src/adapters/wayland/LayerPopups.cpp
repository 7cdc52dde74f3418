#include "adapters/wayland/LayerPopups.h"

#include "adapters/stream/ToolkitPoints.h"
#include "adapters/wayland/ClickCatchers.h"
#include "adapters/wayland/LayerHost.h"
#include "adapters/wayland/LayerRole.h"
#include "adapters/wayland/LayerShell.h"
#include "adapters/wayland/PopupRole.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int levelOfQuestions = 2000; ///< over every panel

void closeSoon(QWidget &widget) {
    QMetaObject::invokeMethod(
        qApp,
        [closing = QPointer(&widget)] {
            if (closing)
                closing->close();
        },
        Qt::QueuedConnection);
}

QWidget *widgetOf(const QWindow *window) {
    const auto widgets = QApplication::topLevelWidgets();
    const auto found = std::find_if(widgets.begin(), widgets.end(),
                                    [=](const QWidget *each) { return each->windowHandle() == window; });
    return window && found != widgets.end() ? *found : nullptr;
}

const LayerRole *floatingRoleOf(const QWindow *window) {
    const auto *host = dynamic_cast<const LayerHost *>(widgetOf(window));
    return host ? host->role() : nullptr;
}

bool isPopup(const QWidget &widget) {
    const Qt::WindowType type = widget.windowType();
    return type == Qt::Popup || type == Qt::ToolTip;
}

/// A window that is bare is somebody's own matter, as a panel is.
bool isBare(const QWidget &widget) {
    return widget.windowFlags().testFlag(Qt::BypassWindowManagerHint);
}

} // namespace

struct LayerPopups::Popup {
    QWidget *widget;
    std::unique_ptr<PopupRole> role;
};

struct LayerPopups::Question {
    QWidget *widget;
    std::unique_ptr<LayerRole> role;
    LayerStack::Place standing;
};

LayerPopups::LayerPopups(LayerShell &shell, LayerStack &stack) : m_shell(shell), m_stack(stack) {
    QCoreApplication::instance()->installEventFilter(this); // of a program without widgets too
}

LayerPopups::~LayerPopups() = default;

bool LayerPopups::closeMenus() {
    const QWidget *last = nullptr;
    for (QWidget *innermost = QApplication::activePopupWidget(); innermost && innermost != last;
         innermost = QApplication::activePopupWidget()) {
        last = innermost;
        innermost->close();
    }
    return last;
}

bool LayerPopups::eventFilter(QObject *object, QEvent *event) {
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
        if (object->isWindowType() && !ClickCatchers::isCatcher(object))
            m_lastUsed = static_cast<QWindow *>(object);
        break;
    case QEvent::Show: // before the toolkit shows it
        if (object->isWidgetType() && static_cast<QWidget *>(object)->isWindow() && !event->spontaneous())
            appears(*static_cast<QWidget *>(object));
        break;
    default:
        break;
    }
    return false;
}

const LayerPopups::Popup *LayerPopups::popupOf(const QWindow *window) const {
    const auto found = std::find_if(m_popups.begin(), m_popups.end(),
                                    [=](const auto &popup) { return popup->widget->windowHandle() == window; });
    return found == m_popups.end() ? nullptr : found->get();
}

QWindow *LayerPopups::parentOf(const QWidget &widget) const {
    const QWindow *window = widget.windowHandle();
    QWindow *parent = window ? window->transientParent() : nullptr;
    if (!parent && widget.parentWidget())
        parent = widget.parentWidget()->window()->windowHandle();
    return parent || !isPopup(widget) ? parent : m_lastUsed.data();
}

void LayerPopups::appears(QWidget &widget) {
    QWindow *window = widget.windowHandle();
    if (!window || isBare(widget))
        return;
    QWindow *parent = parentOf(widget);
    const bool isOfPanel = parent && (floatingRoleOf(parent) || popupOf(parent));
    if (isPopup(widget) && !isOfPanel)
        return;
    const bool isQuestion = isOfPanel && widget.isModal() && qobject_cast<QDialog *>(&widget);
    if (isPopup(widget) || isQuestion) {
        window->setFlag(Qt::BypassWindowManagerHint);
        (void)m_shell.surfaceOf(*window); // which it can no longer get once it counts as visible
    }
    // At that moment its place is the last, and its surface is there before it is shown and after it is hidden.
    disconnect(window, &QWindow::visibleChanged, this, nullptr);
    connect(window, &QWindow::visibleChanged, this, [this, &widget, isQuestion, of = QPointer(parent)](bool isVisible) {
        if (!isVisible)
            vanishes(widget);
        else if (isQuestion)
            ask(widget);
        else if (!isPopup(widget))
            opens(widget);
        else if (of)
            openPopup(widget, *of);
    });
}

void LayerPopups::opens(QWidget &widget) {
    m_ordinary.push_back(&widget);
    m_stack.setYields(true);
}

void LayerPopups::openPopup(QWidget &widget, QWindow &parent) {
    PopupRole::Parent of;
    QPoint corner = parent.geometry().topLeft();
    if (const Popup *popup = popupOf(&parent))
        of.popup = popup->role->surface();
    else
        of.layer = floatingRoleOf(&parent)->role();
    auto role = std::make_unique<PopupRole>(
        m_shell, *widget.windowHandle(), of,
        toolkitPoints::toCompositor(widget.geometry().translated(-corner), toolkitPoints::factor(parent.screen())),
        [closing = QPointer(&widget)] {
            if (closing)
                closeSoon(*closing);
        });
    if (!role->isGiven()) // what is painted on it then would be the end of the connection
        return closeSoon(widget);
    m_popups.push_back(std::make_unique<Popup>(Popup{&widget, std::move(role)}));
    m_shell.setTaken(&widget, widget.geometry());
}

void LayerPopups::ask(QWidget &widget) {
    QWindow &window = *widget.windowHandle();
    QScreen *screen = window.transientParent() ? window.transientParent()->screen() : window.screen();
    auto question = std::make_unique<Question>();
    question->widget = &widget;
    Question *const asked = question.get();
    const auto stand = [asked](const LayerStack::Standing &standing) {
        if (asked->role)
            asked->role->setPlace({asked->widget->geometry(), standing.takesKeyboard, standing.isOverFullScreen});
    };
    question->standing =
        m_stack.add({.level = levelOfQuestions, .rect = widget.geometry(), .wantsKeyboard = true, .stand = stand});
    question->role = std::make_unique<LayerRole>(
        m_shell, window, *screen, LayerPlace{widget.geometry(), question->standing->standing.takesKeyboard}, [] {});
    if (!question->role->isGiven()) {
        m_stack.remove(question->standing);
        return closeSoon(widget);
    }
    m_questions.push_back(std::move(question));
}

void LayerPopups::vanishes(QWidget &widget) {
    if (std::erase_if(m_popups, [&](const auto &popup) { return popup->widget == &widget; }) > 0)
        m_shell.setTaken(&widget, {});
    const auto asked = std::find_if(m_questions.begin(), m_questions.end(),
                                    [&](const auto &question) { return question->widget == &widget; });
    if (asked != m_questions.end()) {
        m_stack.remove((*asked)->standing);
        m_questions.erase(asked);
    }
    if (std::erase(m_ordinary, &widget) > 0 && m_ordinary.empty())
        m_stack.setYields(false);
}

} // namespace tavrine
