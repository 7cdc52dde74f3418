#pragma once

#include "panels/FloatingPanel.h"

#include <QSizeF>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <stop_token>

class QWidget;

namespace tavrine {

class Application;
class ApplicationActivator;
class CodeDetector;
class ConcurrentQueue;
class ClearedScreen;
class Task;
class TaskLauncher;

/// Reads QR codes off the screen: a region is captured with the system's tool, looked through, and what was found is
/// shown in a small panel, with which the program is in the task bar. Lives on the main thread, as long as the process.
///
/// A capture that the person gives up leaves no file, and nothing is shown; nor is anything for a picture that cannot
/// be read. A picture without codes is shown as one.
class QRScanner {
public:
    /// All of them outlive the scanner.
    struct Ports {
        TaskLauncher &launcher;
        CodeDetector &detector;
        ConcurrentQueue &detectionQueue;
        PanelWindows &windows;
        Screens &screens;
        Application &application;
        ApplicationActivator &activator;
        ClearedScreen &screen;
        Time &time;
        QString temporaryFolder;
    };
    struct Content {
        QWidget *view = nullptr;
        QSizeF fittingSize;
    };
    struct Actions {
        /// The view of the codes, which calls `onDismiss` to be closed.
        std::function<Content(const QStringList &codes, std::function<void()> onDismiss)> makeView;
        /// Whether another window keeps the program in the task bar.
        std::function<bool()> hasOtherVisibleWindow;
    };

    QRScanner(const Ports &ports, Actions actions);
    ~QRScanner();
    QRScanner(const QRScanner &) = delete;
    QRScanner &operator=(const QRScanner &) = delete;

    /// A scan that is under way gives way.
    void startScan();
    /// What follows the capture into the file at `path`, which is removed.
    void scan(const QString &path);
    void showResults(const QStringList &codes);
    void dismissResults();

    /// Null while none is open.
    [[nodiscard]] PanelWindow *resultPanel() const { return m_resultPanel.window(); }

private:
    void launchTool();

    Ports m_ports;
    Actions m_actions;
    std::shared_ptr<Task> m_currentTask;
    FloatingPanel m_resultPanel;
    bool m_isStarting = false; ///< the tool comes in a moment
    std::stop_source m_unwanted;
    std::shared_ptr<int> m_alive = std::make_shared<int>();
};

} // namespace tavrine
