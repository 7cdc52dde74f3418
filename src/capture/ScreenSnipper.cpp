#include "capture/ScreenSnipper.h"

#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/Uuid.h"
#include "capture/PictureScale.h"
#include "capture/SnipPreferences.h"
#include "ports/TaskLauncher.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPointer>

#include <mutex>

namespace tavrine {
namespace {

/// Null for what is no picture. A pipe or a device is not opened: reading it might never end.
QImage pictureIn(const QString &path) {
    if (!QFileInfo(path).isFile())
        return {};
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    return withScaleOfItsFile(reader.read(), PictureSource::captureTool); // half a file is no picture
}

} // namespace

struct ScreenSnipper::CurrentTask {
    std::mutex mutex;
    std::shared_ptr<Task> task;

    std::shared_ptr<Task> exchange(std::shared_ptr<Task> next) {
        const std::lock_guard lock(mutex);
        return std::exchange(task, std::move(next));
    }
    [[nodiscard]] std::shared_ptr<Task> get() {
        const std::lock_guard lock(mutex);
        return task;
    }
};

ScreenSnipper::ScreenSnipper(Ports ports, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_currentTask(std::make_shared<CurrentTask>()) {}

ScreenSnipper::~ScreenSnipper() = default;

void ScreenSnipper::startCapture() {
    if (const auto running = m_currentTask->get(); running && running->isRunning())
        running->terminate();
    m_isSnipping = true;

    makePrivateFolder(m_ports.temporaryDirectory); // without one the tool fails, as when its disk is full
    const QString path =
        m_ports.temporaryDirectory + QStringLiteral("/tavrine-snip-") + freshUuidString() + QStringLiteral(".png");
    m_currentCapturePath = path;
    QStringList arguments{QStringLiteral("-i")};
    if (preference::snipMuteSound.get(m_ports.defaults))
        arguments << QStringLiteral("-x");
    arguments << path;

    const auto task = m_ports.launcher.makeTask(QLatin1String(launchPath), arguments);
    task->setTerminationHandler([self = QPointer(this), current = std::weak_ptr(m_currentTask), &time = m_ports.time,
                                 path](int terminationStatus) {
        const QImage picture = terminationStatus == 0 ? pictureIn(path) : QImage();
        time.async([self, picture, path] {
            if (self)
                self->handleEnd(picture, path);
        });
        if (const auto holder = current.lock())
            holder->exchange(nullptr);
    });
    m_currentTask->exchange(task);
    if (task->launch()) {
        QFile::remove(path);
        m_currentCapturePath.reset();
        m_isSnipping = false;
        if (m_onEnd)
            m_onEnd();
    }
}

void ScreenSnipper::handleEnd(const QImage &picture, const QString &path) {
    if (!picture.isNull() && m_onSnipComplete)
        m_onSnipComplete(picture);
    QFile::remove(path);
    m_currentCapturePath.reset();
    m_isSnipping = false;
    if (m_onEnd)
        m_onEnd();
}

} // namespace tavrine
