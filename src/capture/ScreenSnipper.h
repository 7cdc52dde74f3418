#pragma once

#include <QImage>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class TaskLauncher;
class Time;
class UserDefaults;

/// Captures a region of the screen: starts the system's interactive tool on a temporary file, waits for its end and
/// hands over the picture that it left there.
///
/// One instance, as long as the process. Main thread, but for the tool's end, which comes on a thread of the launcher:
/// there the picture is read, so that a large one does not hold the main thread up.
///
///  1. A capture that is started during another ends the other's tool first. The end of the first is still handled,
///     with its own file, and drops whatever task is the current one by then: `isSnipping` may be false while the
///     second tool runs, and a third start may not end it.
///  2. No capture leaves its file behind, whatever became of the tool.
///  3. A cancelled capture, a tool that failed and a file that is no picture are the same to everyone: nothing comes.
class ScreenSnipper : public QObject {
    Q_OBJECT

public:
    struct Ports {
        TaskLauncher &launcher;
        UserDefaults &defaults;
        Time &time;
        QString temporaryDirectory;
    };

    static constexpr auto launchPath = "/usr/sbin/screencapture";

    explicit ScreenSnipper(Ports ports, QObject *parent = nullptr);
    ~ScreenSnipper() override;

    void startCapture();

    /// True from the launch of the tool until its end has been handled.
    [[nodiscard]] bool isSnipping() const { return m_isSnipping; }
    /// The file of the capture under way.
    [[nodiscard]] const std::optional<QString> &currentCapturePath() const { return m_currentCapturePath; }

    /// Called on the main thread, only for a capture that gave a picture.
    void setOnSnipComplete(std::function<void(const QImage &)> onSnipComplete) {
        m_onSnipComplete = std::move(onSnipComplete);
    }

    /// Called on the main thread once for each start, when its end has been handled or it could not be launched.
    void setOnEnd(std::function<void()> onEnd) { m_onEnd = std::move(onEnd); }

private:
    struct CurrentTask;

    void handleEnd(const QImage &picture, const QString &path);

    Ports m_ports;
    bool m_isSnipping = false;
    std::shared_ptr<CurrentTask> m_currentTask; ///< cleared on the thread of a task's end
    std::optional<QString> m_currentCapturePath;
    std::function<void(const QImage &)> m_onSnipComplete;
    std::function<void()> m_onEnd;
};

} // namespace tavrine
