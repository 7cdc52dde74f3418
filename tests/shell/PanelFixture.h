#pragma once

#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeEventPoster.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardItem.h"
#include "shell/PanelController.h"
#include "shell/PasteBack.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine::testing {

using namespace std::chrono_literals;

/// A desktop of fakes with the panels on it; a text editor is in front.
class PanelFixture : public ::testing::Test {
protected:
    using Window = FakePanelWindows::Window;

    PanelFixture() {
        pasteBack.listen();
        activator.setOwn(ours);
        workspace.setFrontmost(editor);
        for (const char *name : {"floatingPanelOpened", "clipboardSearchPanelOpened", "emojiPickerPanelOpened"})
            observers.push_back(notifications.addObserver(
                QLatin1String(name), [this](const Notification &notification) { posted << notification.name; }));
    }

    [[nodiscard]] Window *classic() const { return static_cast<Window *>(controller.classicPanel()); }
    [[nodiscard]] Window *search() const { return static_cast<Window *>(controller.searchPanel()); }
    [[nodiscard]] Window *emoji() const { return static_cast<Window *>(controller.emojiPanel()); }

    void clickAt(QPointF place, quint32 button = eventMask::leftMouseDown) {
        screens.setMouseLocation(place);
        monitors.mouseDown(button, false);
    }

    const RunningApplication editor{QStringLiteral("org.example.Editor"), QStringLiteral("Editor"), 100, 1};
    const RunningApplication browser{QStringLiteral("org.example.Browser"), QStringLiteral("Browser"), 200, 2};
    const RunningApplication ours{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("Tavrine"),
                                  QCoreApplication::applicationPid(), 3};

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter notifications;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, notifications};
    FakePanelWindows windows;
    FakeEventMonitors monitors;
    FakeEventPoster poster;
    FakeScreens screens;
    FakeWorkspace workspace;
    PasteBack pasteBack{workspace, time};
    FakeApplicationActivator activator{workspace};
    FakePasteboard pasteboard;
    bool opensSearchPanel = true;
    bool isTrusted = true;
    int trustQuestions = 0;
    int searchContents = 0;
    QStringList copied;
    QStringList toasts;
    QStringList posted;
    std::vector<NotificationCenter::Token> observers;
    PanelController controller{
        {.windows = windows,
         .monitors = monitors,
         .poster = poster,
         .screens = screens,
         .workspace = workspace,
         .pasteBack = pasteBack,
         .activator = activator,
         .pasteboard = pasteboard,
         .defaults = defaults,
         .center = notifications,
         .time = time},
        {.classic = [] { return nullptr; },
         .search =
             [this] {
                 ++searchContents;
                 return nullptr;
             },
         .emoji = [] { return nullptr; }},
        {.opensSearchPanel = [this] { return opensSearchPanel; },
         .copyToPasteboard = [this](const ClipboardItem &item) { copied << item.content; },
         .showToast = [this](const QString &message,
                             const QString &icon) { toasts << message + QLatin1Char('|') + icon; },
         .isAccessibilityTrusted =
             [this] {
                 ++trustQuestions;
                 return isTrusted;
             }}};
};

} // namespace tavrine::testing
