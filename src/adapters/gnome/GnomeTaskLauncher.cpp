#include "adapters/gnome/GnomeTaskLauncher.h"

#include "adapters/gnome/GnomeScreenFile.h"
#include "base/OnMainThread.h"

#include <atomic>
#include <thread>

namespace tavrine {
namespace {

constexpr QLatin1String captureTool("/usr/sbin/screencapture");
constexpr int noPicture = 1; // as the tool says it
constexpr int terminated = 143;

} // namespace

/// The main thread's, but for the end, which comes on a thread of the launcher's and passes itself on.
class GnomeTaskLauncher::Capture final : public QObject, public Task, public std::enable_shared_from_this<Capture> {
public:
    Capture(GnomeTaskLauncher &launcher, QString path, QStringList arguments)
        : m_launcher(launcher), m_path(std::move(path)), m_arguments(std::move(arguments)) {}

    void setTerminationHandler(TerminationHandler handler) override { m_handler = std::move(handler); }

    std::optional<QString> launch() override {
        if (!m_launcher.m_shell.isAttached())
            return QStringLiteral("nobody shows the screens");
        m_isRunning = true;
        const auto before = std::exchange(m_launcher.m_last, weak_from_this()).lock();
        if (before && before->isRunning()) {
            before->m_next = shared_from_this();
            before->terminate();
        } else {
            takePicture();
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isRunning() const override { return m_isRunning; }

    void terminate() override {
        m_isTerminated = true;
        if (m_tool)
            m_tool->terminate();
    }

private:
    void takePicture() {
        takeScreenFile(m_launcher.m_shell, Shrinking::mixed, this,
                       [self = shared_from_this()](const auto &file) { self->start(file); });
    }

    void start(const std::shared_ptr<Descriptor> &file) {
        if (m_isTerminated || !file)
            return endElsewhere(m_isTerminated ? terminated : noPicture);
        m_tool = m_launcher.m_plain.makeTask(m_path, QStringList{QStringLiteral("-f"), pathOf(*file)} + m_arguments);
        m_tool->setTerminationHandler([self = shared_from_this(), file](int status) { self->end(status); });
        if (m_tool->launch())
            return endElsewhere(noPicture);
        watchForEscape();
    }

    void watchForEscape() {
        // The answer is waited for though the tool has ended: a grab that nobody knows of stays.
        m_launcher.m_shell.grabKey(gnomeKey::escape, &m_launcher.m_shell, [self = shared_from_this()](quint32 action) {
            self->m_escape = action;
            if (!self->m_isRunning)
                self->stopWatching();
        });
        connect(&m_launcher.m_shell, &GnomeShell::keyPressed, this, [this](quint32 action) {
            if (action == m_escape && m_escape != 0)
                terminate();
        });
    }

    void stopWatching() {
        if (m_escape != 0)
            m_launcher.m_shell.ungrabKey(std::exchange(m_escape, 0));
    }

    /// Whoever waits for an end expects it on another thread than the main one.
    void endElsewhere(int status) {
        std::thread([self = shared_from_this(), status] { self->end(status); }).detach();
    }

    void end(int status) {
        m_isRunning = false;
        if (const auto handler = std::exchange(m_handler, nullptr))
            handler(status);
        onMainThread([self = shared_from_this()] {
            self->stopWatching();
            self->m_tool.reset();
            if (const auto next = std::exchange(self->m_next, nullptr))
                next->takePicture();
        });
    }

    GnomeTaskLauncher &m_launcher;
    const QString m_path;
    const QStringList m_arguments;
    TerminationHandler m_handler;
    std::shared_ptr<Task> m_tool;
    std::shared_ptr<Capture> m_next; ///< begins when this one has ended
    quint32 m_escape = 0;            ///< the shell's number of the key's grab
    std::atomic<bool> m_isRunning = false;
    bool m_isTerminated = false;
};

std::shared_ptr<Task> GnomeTaskLauncher::makeTask(const QString &launchPath, const QStringList &arguments) {
    if (launchPath != captureTool)
        return m_plain.makeTask(launchPath, arguments);
    return std::make_shared<Capture>(*this, launchPath, arguments);
}

} // namespace tavrine
