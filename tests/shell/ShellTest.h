#pragma once

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeStatusItem.h"
#include "adapters/fake/FakeUpdater.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "shell/AppDelegate.h"
#include "shell/FeatureFlags.h"
#include "shell/StatusMenu.h"
#include "shell/ToolHooks.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// Tools that keep their state and write down each call of AppDelegate.
class RecordingHooks final : public ToolHooks {
public:
    bool hasNotch() const override { return m_hasNotch; }
    void showNotch() override {
        m_hasNotch = true;
        note("showNotch");
    }
    void closeNotch() override {
        m_hasNotch = false;
        note("closeNotch");
    }
    void registerHotkeys() override { note("registerHotkeys"); }
    void toggleClipboardPanel() override { note("toggleClipboardPanel"); }
    void toggleEmojiPanel() override { note("toggleEmojiPanel"); }
    void removePanelMonitors() override { note("removePanelMonitors"); }
    void orderOutClipboardPanels() override { note("orderOutClipboardPanels"); }
    void orderOutFloatingPanels() override { note("orderOutFloatingPanels"); }
    void unloadClipboardPanels() override { note("unloadClipboardPanels"); }
    void unloadEmojiPanel() override { note("unloadEmojiPanel"); }
    void startSpeedObservers() override { note("startSpeedObservers"); }
    void startMeter() override { note("startMeter"); }
    void stopMeter() override { note("stopMeter"); }
    void updateStatusItem() override { note("updateStatusItem"); }
    bool isWaitingForCapture() const override { return isWaiting; }
    void clearWaitingForCapture() override { isWaiting = false; }
    void showPreviewCard(const ClipboardItem &item) override { previews.push_back(item); }
    void setOnSnipComplete(const std::function<void(const QImage &)> &handler) override {
        onSnipComplete = handler;
        note("setOnSnipComplete");
    }
    void presentSnip(const QImage &) override { note("presentSnip"); }
    void startSnip() override { note("startSnip"); }
    void startCapture() override { note("startCapture"); }
    void unloadScreenRecorder() override { note("unloadScreenRecorder"); }
    KeepAwakeState keepAwakeState() const override { return keepAwake; }
    void setOnKeepAwakeChange(const std::function<void()> &handler) override {
        onKeepAwakeChange = handler;
        note("setOnKeepAwakeChange");
    }
    void setOnShowAdvancedPanelChange(const std::function<void()> &handler) override {
        onShowAdvancedPanelChange = handler;
        note("setOnShowAdvancedPanelChange");
    }
    void hideAdvancedPanel() override { note("hideAdvancedPanel"); }
    void turnOffKeepAwakeIfAwake() override { note("turnOffKeepAwakeIfAwake"); }
    void stopCleaningIfCleaning() override { note("stopCleaningIfCleaning"); }
    void stopLofi() override { note("stopLofi"); }
    void pickColor() override { note("pickColor"); }
    void openMainWindow(const QString &item) override { note("openMainWindow " + item.toStdString()); }
    void openEditor(const std::optional<QImage> &image) override { note(image ? "openEditor image" : "openEditor"); }
    void showOnboarding() override { note("showOnboarding"); }
    void remeasureQuickActions() override { note("remeasureQuickActions"); }
    void animateQuickActionsHeight(Seconds length) override {
        note(QStringLiteral("animateQuickActionsHeight %1").arg(length.count()).toStdString());
    }
    bool accessibilityTrusted(bool promptAllowed) override {
        note(promptAllowed ? "accessibilityTrusted, prompt allowed" : "accessibilityTrusted");
        return isTrusted;
    }

    void note(const std::string &call) { calls.push_back(call); }
    [[nodiscard]] std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::vector<ClipboardItem> previews;
    KeepAwakeState keepAwake;
    bool isWaiting = false;
    bool isTrusted = true;
    std::function<void(const QImage &)> onSnipComplete;
    std::function<void()> onKeepAwakeChange;
    std::function<void()> onShowAdvancedPanelChange;

private:
    bool m_hasNotch = false;
};

/// A whole program but for its tools, over fakes, real preferences and a real database in a home of its own.
class ShellTest : public testing::Test {
protected:
    ShellTest() { defaults.set(text("ClipboardMySaveSeeded"), true); }

    /// Makes the program, with the preferences as they are.
    void construct() {
        flags = std::make_unique<FeatureFlags>(defaults);
        experience = std::make_unique<ClipboardExperienceSettings>(defaults);
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, coder, movies, loginItem, folders, database});
        delegate = std::make_unique<AppDelegate>(AppDelegate::Ports{
            time, defaults, center, workspace, statusItem, application, updater, *manager, *flags, *experience, hooks});
    }

    /// Makes and launches the program, as a person's who has seen the welcome window, and lets it come to rest.
    void launch() {
        defaults.set(text("hasCompletedOnboarding"), true);
        construct();
        testing::internal::CaptureStdout();
        delegate->applicationDidFinishLaunching();
        time.advance(1s);
        testing::internal::GetCapturedStdout();
        hooks.calls.clear();
    }

    /// What is printed while `time` advances.
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }

    void set(Feature feature, bool isOn) { flags->set(feature, isOn); }

    QWidget *showWindow(void (AppDelegate::*setWindow)(QWidget *)) {
        auto *window = new QWidget;
        (delegate.get()->*setWindow)(window);
        application.setActivationPolicy(ActivationPolicy::regular);
        window->show();
        return window;
    }

    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("com.veltrane.Tavrine.plist")), time, center};
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    FakeStatusItem statusItem;
    FakeApplication application;
    FakeUpdater updater;
    Folders folders{.applicationSupport = home.filePath(text("data")),
                    .home = home.path(),
                    .documents = home.filePath(text("Documents")),
                    .temporary = home.filePath(text("tmp"))};
    ClipboardDatabase database{home.filePath(text("data/Tavrine/clipboard.db"))};
    RecordingHooks hooks;
    std::unique_ptr<FeatureFlags> flags;
    std::unique_ptr<ClipboardExperienceSettings> experience;
    std::unique_ptr<ClipboardManager> manager;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace tavrine
