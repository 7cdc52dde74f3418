#pragma once

#include "base/NotificationCenter.h"
#include "ports/Access.h"
#include "ports/ApplicationActivator.h"
#include "ports/ColorSampler.h"
#include "ports/DragPasteboard.h"
#include "ports/Dragging.h"
#include "ports/EdgeWindow.h"
#include "ports/EventMonitors.h"
#include "ports/EventPoster.h"
#include "ports/EventTap.h"
#include "ports/HotKeys.h"
#include "ports/SessionNotices.h"
#include "ports/Workspace.h"

#include <QTimer>
#include <QWidget>

/// What stands where a desktop has nothing for a port: it is asked, and nothing happens.
namespace tavrine::absent {

class NoSessionNotices final : public SessionNotices {
public:
    [[nodiscard]] Token follow(std::function<void(SessionNotice)> /*handler*/) override { return {}; }
};

class NoWorkspace final : public Workspace {
public:
    [[nodiscard]] NotificationCenter &notificationCenter() override { return m_center; }
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override { return std::nullopt; }
    [[nodiscard]] QList<RunningApplication> runningApplications() const override { return {}; }
    void activateFileViewerSelecting(const QList<QUrl> & /*urls*/) override {}

private:
    NotificationCenter m_center;
};

class NoApplicationActivator final : public ApplicationActivator {
public:
    [[nodiscard]] bool isRunning(const RunningApplication & /*application*/) const override { return false; }
    bool activate(const RunningApplication & /*application*/) override { return false; }
    void activateIgnoringOtherApps() override {}
    void bringForward(quint32 /*window*/) override {}
    void hide() override {}
};

class NoEdgeWindows final : public EdgeWindows {
public:
    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription & /*description*/) override {
        return std::make_unique<Window>();
    }

private:
    class Window final : public EdgeWindow {
    public:
        [[nodiscard]] qint64 windowNumber() const override { return 0; }
        [[nodiscard]] bool isVisible() const override { return false; }
        [[nodiscard]] QRectF frame() const override { return m_frame; }
        void setFrame(const QRectF &frame, std::chrono::milliseconds /*duration*/) override { m_frame = frame; }
        [[nodiscard]] bool ignoresMouseEvents() const override { return true; }
        void setIgnoresMouseEvents(bool /*ignores*/) override {}
        void orderFrontRegardless() override {}
        void orderOut() override {}
        void takeKeyboard() override {}
        void returnKeyboard() override {}
        void setContentView(QWidget *content) override { m_content.reset(content); }

    private:
        QRectF m_frame;
        std::unique_ptr<QWidget> m_content;
    };
};

class NoColorSamplers final : public ColorSamplers {
public:
    [[nodiscard]] std::shared_ptr<ColorSampler> makeSampler() override { return std::make_shared<Sampler>(); }

private:
    class Sampler final : public ColorSampler {
    public:
        void showSampler(std::function<void(std::optional<QColor>)> selection) override {
            QTimer::singleShot(0, [selection = std::move(selection)] { selection(std::nullopt); });
        }
    };
};

class NoHotKeys final : public HotKeys {
public:
    void installHandler(Handler /*handler*/) override {}
    void removeHandler() override {}
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int /*keyCode*/, quint32 /*modifiers*/,
                                                          HotKeyId /*id*/) override {
        return std::nullopt;
    }
    void unregisterHotKey(HotKeyRef /*ref*/) override {}
};

class NoEventMonitors final : public EventMonitors {
public:
    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 /*mask*/, GlobalHandler /*handler*/) override {
        return std::make_unique<EventMonitor>();
    }
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 /*mask*/, LocalHandler /*handler*/) override {
        return std::make_unique<EventMonitor>();
    }
};

class NoEventPoster final : public EventPoster {
public:
    void postKeyboardEvent(int /*keyCode*/, bool /*isKeyDown*/, quint32 /*flags*/) override {}
};

/// No program of a Wayland session may keep keys from others.
class NoEventTaps final : public EventTaps {
public:
    [[nodiscard]] std::unique_ptr<EventTap> create(std::function<void()> /*onChange*/) override { return nullptr; }
};

class NoDragPasteboards final : public DragPasteboards {
public:
    [[nodiscard]] std::unique_ptr<DragPasteboard> watch() override { return std::make_unique<Nothing>(); }

private:
    class Nothing final : public DragPasteboard {
    public:
        [[nodiscard]] int changeCount() const override { return 0; }
        [[nodiscard]] bool holdsFileReference() const override { return false; }
        [[nodiscard]] bool isDragging() const override { return false; }
        void setOnChange(std::function<void()> /*onChange*/) override {}
    };
};

class NoDragging final : public Dragging {
public:
    void readDrop(const QMimeData & /*offered*/, std::function<void(const DroppedContent &)> completion) override {
        completion({});
    }
    [[nodiscard]] quint32 beginDragging(QWidget & /*source*/, const DraggedItem & /*item*/,
                                        std::function<quint32()> /*mask*/) override {
        return dragOperation::none;
    }
};

class NoAccess final : public Access {
public:
    [[nodiscard]] bool isAccessibilityTrusted() const override { return false; }
    bool requestAccessibility() override { return false; }
    [[nodiscard]] bool isScreenCaptureGranted() const override { return false; }
    bool requestScreenCapture() override { return false; }
    void probeScreenCapture(std::function<void(std::optional<QString>)> completion) override {
        QTimer::singleShot(0, [completion = std::move(completion)] {
            completion(QStringLiteral("This desktop does not show its screen."));
        });
    }
    [[nodiscard]] MicrophoneAuthorization microphoneAuthorization() const override {
        return MicrophoneAuthorization::authorized;
    }
    void requestMicrophone(std::function<void(bool)> completion) override {
        QTimer::singleShot(0, [completion = std::move(completion)] { completion(true); });
    }
};

} // namespace tavrine::absent
