#pragma once

#include "shell/ShellTest.h"
#include "shell/settings/MainAppView.h"
#include "shell/settings/SidebarView.h"

#include <QAbstractButton>
#include <QTest>

namespace tavrine {

/// The settings window within a whole program, on a desktop of fakes.
class SettingsWindowTest : public ShellTest {
protected:
    void SetUp() override {
        launch();
        delegate->openSettings();
    }
    MainAppView &view() { return *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings)); }
    SidebarView &sidebar() { return *view().findChild<SidebarView *>(); }
    void go(SidebarItem item) {
        view().setSelection(item);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    template <class T>
    T *find(const char *name) {
        for (T *each : view().page()->template findChildren<T *>()) {
            if (each->accessibleName() == text(name) || buttonText(each) == text(name))
                return each;
        }
        return nullptr;
    }
    static QString buttonText(const QWidget *widget) {
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        return button ? button->text() : QString();
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget *target = view().focusWidget() ? view().focusWidget() : &view();
        QTest::keyClick(target, Qt::Key(key), modifiers);
    }
};

} // namespace tavrine
