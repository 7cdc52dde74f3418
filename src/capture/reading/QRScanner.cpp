#include "capture/reading/QRScanner.h"

#include "base/ConcurrentQueue.h"
#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "capture/ClearedScreen.h"
#include "panels/Placement.h"
#include "ports/Application.h"
#include "ports/ApplicationActivator.h"
#include "ports/CodeDetector.h"
#include "ports/TaskLauncher.h"

#include <QFile>

#include <cmath>
#include <optional>

namespace tavrine {
namespace {

constexpr QLatin1String captureTool("/usr/sbin/screencapture");

/// None for a file that is no picture, and for a picture that could not be looked at: nothing is known of its codes.
std::optional<QStringList> codesIn(CodeDetector &detector, const QString &path, const std::stop_token &stop) {
    const QImage image(path);
    if (image.isNull())
        return std::nullopt;
    const CodeDetector::Result found = detector.detect(image, stop);
    if (const auto *failure = std::get_if<CodeDetector::Failure>(&found)) {
        if (!stop.stop_requested())
            printLine(QStringLiteral("Failed to read codes: ") + failure->reason);
        return std::nullopt;
    }
    QStringList codes;
    for (const DetectedCode &code : std::get<QList<DetectedCode>>(found))
        codes.append(code.payload);
    return codes;
}

std::optional<QRectF> inTheMiddle(const Screens &screens, QSizeF size) {
    const auto screen = screenForTool(screens);
    return screen ? std::optional(centredIn(usableFrame(*screen), size)) : std::nullopt;
}

} // namespace

QRScanner::QRScanner(const Ports &ports, Actions actions)
    : m_ports(ports), m_actions(std::move(actions)),
      m_resultPanel({ports.windows, ports.screens, ports.time}, {.description = {.title = QStringLiteral("QR Codes"),
                                                                                 .contentSize = {},
                                                                                 .level = windowLevel::floating,
                                                                                 .hasShadow = true,
                                                                                 .isMovableByBackground = true,
                                                                                 .isInTaskBar = true},
                                                                 .placement = inTheMiddle}) {
    m_resultPanel.setOnClosed([this] { dismissResults(); });
}

// What it would capture, nobody would read; nor what is being read.
QRScanner::~QRScanner() {
    m_unwanted.request_stop();
    if (m_currentTask && m_currentTask->isRunning())
        m_currentTask->terminate();
}

void QRScanner::startScan() {
    if (std::exchange(m_isStarting, true))
        return;
    m_ports.screen.clearFor([this, alive = std::weak_ptr<int>(m_alive)] {
        if (!alive.expired())
            launchTool();
    });
}

void QRScanner::launchTool() {
    m_isStarting = false;
    if (m_currentTask && m_currentTask->isRunning())
        m_currentTask->terminate();
    static_cast<void>(makePrivateFolder(m_ports.temporaryFolder));
    const auto seconds = static_cast<qint64>(std::floor(m_ports.time.now().secondsSince1970));
    const QString path = QStringLiteral("%1/tavrine_qr_%2.png").arg(m_ports.temporaryFolder).arg(seconds);
    // Always silent: nobody wants to hear a camera when reading a code.
    m_currentTask = m_ports.launcher.makeTask(captureTool, {QStringLiteral("-i"), QStringLiteral("-x"), path});
    m_currentTask->setTerminationHandler([this, time = &m_ports.time, alive = std::weak_ptr<int>(m_alive), path](int) {
        time->async([this, alive, path] {
            if (alive.expired())
                return;
            scan(path);
            m_ports.screen.lookEnded();
        });
    });
    if (m_currentTask->launch())
        m_ports.screen.lookEnded(); // without the tool nothing happens, and nothing is said
}

void QRScanner::scan(const QString &path) {
    m_currentTask.reset();
    if (!QFile::exists(path))
        return;
    m_unwanted.request_stop(); // of pictures that are read side by side the newer one's codes are shown
    m_unwanted = {};
    m_ports.detectionQueue.async([this, detector = &m_ports.detector, time = &m_ports.time,
                                  alive = std::weak_ptr<int>(m_alive), stop = m_unwanted.get_token(), path] {
        const auto codes = codesIn(*detector, path, stop);
        time->async([this, alive, stop, codes, path] {
            if (codes && !stop.stop_requested() && !alive.expired())
                showResults(*codes);
            QFile::remove(path);
        });
    });
}

void QRScanner::showResults(const QStringList &codes) {
    m_resultPanel.release(Dismissal::atOnce);
    const Content content = m_actions.makeView(codes, [this] { dismissResults(); });
    m_resultPanel.build(content.view, content.fittingSize);
    m_ports.application.setActivationPolicy(ActivationPolicy::regular);
    m_resultPanel.show();
    m_ports.activator.activateIgnoringOtherApps();
}

void QRScanner::dismissResults() {
    if (!m_resultPanel.isBuilt())
        return;
    m_resultPanel.release(Dismissal::atOnce);
    if (!m_actions.hasOtherVisibleWindow())
        m_ports.application.setActivationPolicy(ActivationPolicy::accessory);
}

} // namespace tavrine
