#include "shell/LargeWindows.h"

#include "base/Time.h"
#include "look/FittingWindow.h"
#include "ports/Application.h"
#include "ports/ApplicationActivator.h"

#include <QEvent>

#include <algorithm>

namespace tavrine {

LargeWindows::LargeWindows(Application &application, Time &time, Activator activator, QObject *parent)
    : QObject(parent), m_application(application), m_time(time), m_activator(std::move(activator)) {}

LargeWindows::~LargeWindows() {
    for (const QPointer<QWidget> &window : m_windows)
        delete window;
}

void LargeWindows::keep(Kind kind, std::unique_ptr<QWidget> window) {
    QWidget *kept = window.release();
    kept->setAttribute(Qt::WA_DeleteOnClose);
    kept->installEventFilter(this);
    fitToScreen(*kept);
    m_windows[index(kind)] = kept;
}

void LargeWindows::becomeRegular() {
    m_application.setActivationPolicy(ActivationPolicy::regular);
}

void LargeWindows::bringForward(Kind kind) {
    if (QWidget *shown = window(kind)) {
        shown->show();
        m_activator().bringForward(static_cast<quint32>(shown->winId()));
    }
}

void LargeWindows::activateApplication() {
    m_activator().activateIgnoringOtherApps();
}

void LargeWindows::close(Kind kind) {
    if (QWidget *closing = window(kind))
        closing->close();
    m_windows[index(kind)] = nullptr;
}

QPointer<QWidget> LargeWindows::detach(Kind kind) {
    return std::exchange(m_windows[index(kind)], nullptr);
}

void LargeWindows::orderOutAll() {
    for (const QPointer<QWidget> &window : m_windows)
        if (window)
            window->hide();
}

void LargeWindows::windowWillClose(QWidget *window) {
    const auto found = std::find(m_windows.begin(), m_windows.end(), window);
    if (!window || found == m_windows.end())
        return;
    *found = nullptr;
    m_time.asyncAfter(policyDelay, this, [this] { restoreAccessoryPolicy(); });
}

bool LargeWindows::isAnyVisible() const {
    return std::any_of(m_windows.begin(), m_windows.end(),
                       [](const auto &window) { return window && window->isVisible(); });
}

void LargeWindows::restoreAccessoryPolicy() {
    if (!isAnyVisible())
        m_application.setActivationPolicy(ActivationPolicy::accessory);
}

bool LargeWindows::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    if (event->spontaneous() && watched == window(Kind::welcome)) {
        event->ignore(); // it has no close button; a window manager may have another way to close it
        return true;
    }
    // The window is asked first: one that stays open is still ours.
    const QPointer closing(qobject_cast<QWidget *>(watched));
    watched->event(event);
    if (event->isAccepted())
        windowWillClose(closing);
    return true;
}

} // namespace tavrine
