#pragma once

#include "look/Control.h"
#include "shell/ShellTest.h"
#include "shell/menu/StatusMenuView.h"
#include "shell/menu/TrayMenu.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWindow>

namespace tavrine {

/// The whole menu within a whole program, on a desktop of fakes: one screen of 1440 by 900 with a bar of 24 on top.
class TrayMenuTest : public ShellTest {
protected:
    void SetUp() override { launch(); }

    StatusMenuPanel &panel() { return delegate->trayMenu().panel(); }
    void press(QPoint place = {1300, 12}) { desktop.statusItem().press(place); }
    /// The menu's content, which the fake panel does not show.
    StatusMenuView &view() {
        for (QWidget *widget : QApplication::allWidgets()) {
            if (auto *found = qobject_cast<StatusMenuView *>(widget))
                return *found;
        }
        ADD_FAILURE() << "no menu";
        std::abort();
    }
    look::Control &control(const char *name) {
        for (auto *each : view().findChildren<look::Control *>()) {
            const bool isIt =
                each->text() == QString::fromUtf8(name) || each->accessibleName() == QString::fromUtf8(name);
            if (isIt && !each->isHidden())
                return *each;
        }
        ADD_FAILURE() << name;
        std::abort();
    }
    bool shows(const char *name) {
        return std::ranges::any_of(view().findChildren<look::Control *>(), [name](const look::Control *each) {
            return each->text() == QString::fromUtf8(name) && !each->isHidden();
        });
    }
    void show() {
        view().resize(view().sizeHint());
        view().show();
    }
    /// As the window gets it from the desktop, over the middle of a control.
    void held(QEvent::Type type, const look::Control &over) {
        const QPoint place = over.mapTo(view().window(), over.rect().center());
        const bool isRelease = type == QEvent::MouseButtonRelease;
        QMouseEvent event(type, place, over.mapToGlobal(over.rect().center()),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          isRelease ? Qt::NoButton : Qt::LeftButton, {});
        QCoreApplication::sendEvent(view().window()->windowHandle(), &event);
    }
};

} // namespace tavrine
