#pragma once

#include "adapters/fake/FakeDesktop.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "shell/AppDelegate.h"
#include "shell/StatusMenu.h"

#include <QTemporaryDir>

#include <list>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// Writes down how the shell drives a tool, and lets the tool that stands behind it, if any, do its work.
class RecordingTool final : public Tool {
public:
    using Note = std::function<void(const std::string &call)>;

    RecordingTool(std::string name, Tool *tool, Note note)
        : m_name(std::move(name)), m_tool(tool), m_note(std::move(note)) {}

    void launch(bool isOn) override {
        m_note(m_name + (isOn ? " launched" : " launched off"));
        if (m_tool)
            m_tool->launch(isOn);
    }
    void setOn(bool isOn) override {
        m_note(m_name + (isOn ? " on" : " off"));
        if (m_tool)
            m_tool->setOn(isOn);
    }
    void open(Trigger trigger) override {
        m_note(m_name + " opened");
        if (m_tool)
            m_tool->open(trigger);
    }

private:
    std::string m_name;
    Tool *m_tool;
    Note m_note;
};

/// A whole program over a desktop of fakes, with real preferences and a real database in a home of its own.
class ShellTest : public testing::Test {
protected:
    ShellTest() { defaults.set(text("ClipboardMySaveSeeded"), true); }
    ~ShellTest() override { desktop.hotKeys().setOnInstallation({}); }

    /// Makes the program, with the preferences as they are.
    void construct() {
        delegate.reset();
        delegate = std::make_unique<AppDelegate>(Shell::Parts{desktop, defaults, center, database});
    }

    /// Has what the shell asks of its tools written down from now on. Tools that are not built yet take part.
    void record() {
        const RecordingTool::Note note = [this](const std::string &call) { calls.push_back(call); };
        for (const FeatureText &each : featureTexts) {
            Tool *&tool = delegate->tools()[each.feature];
            tool = &recorders.emplace_back(each.property, tool, note);
        }
        desktop.hotKeys().setOnInstallation([note] { note("hot keys"); });
    }

    /// Makes and launches the program, as a person's who has seen the welcome window, and lets it come to rest.
    void launch() {
        defaults.set(text("hasCompletedOnboarding"), true);
        desktop.access().setAccessibilityTrusted(true);
        construct();
        static_cast<void>(outputOf([this] {
            delegate->applicationDidFinishLaunching();
            desktop.time().advance(1s);
        }));
    }

    /// What is printed meanwhile.
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }
    void quietly(const std::function<void()> &work) { static_cast<void>(outputOf(work)); }

    void set(Feature feature, bool isOn) { delegate->shell().flags().set(feature, isOn); }
    [[nodiscard]] std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }
    [[nodiscard]] ClipboardManager &manager() { return delegate->shell().clipboardManager(); }
    [[nodiscard]] LargeWindows &largeWindows() { return delegate->shell().largeWindows(); }
    [[nodiscard]] QWidget *window(LargeWindows::Kind kind) { return largeWindows().window(kind); }

    QWidget *showWindow(LargeWindows::Kind kind) {
        largeWindows().becomeRegular();
        largeWindows().keep(kind, std::make_unique<QWidget>());
        largeWindows().bringForward(kind);
        return window(kind);
    }

    QTemporaryDir home;
    FakeDesktop desktop{{.applicationSupport = home.filePath(text("data")),
                         .home = home.path(),
                         .documents = home.filePath(text("Documents")),
                         .temporary = home.filePath(text("tmp")),
                         .preferences = home.filePath(text("config")),
                         .programs = home.filePath(text("bin")),
                         .resources = home.filePath(text("share"))}};
    VirtualTime &time = desktop.time();
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("com.veltrane.Tavrine.plist")), time, center};
    ClipboardDatabase database{home.filePath(text("data/Tavrine/clipboard.db"))};
    std::vector<std::string> calls;
    std::list<RecordingTool> recorders;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace tavrine
