#pragma once

#include "ports/TaskLauncher.h"

#include <QList>

#include <functional>
#include <thread>
#include <utility>

namespace tavrine {

/// Programs that run until the test ends them. The termination handler is called on a thread of its own, which has
/// ended when the call that ended the program returns.
class FakeTaskLauncher final : public TaskLauncher {
public:
    class FakeTask final : public Task {
    public:
        FakeTask(FakeTaskLauncher &launcher, QString launchPath, QStringList arguments)
            : m_launcher(launcher), m_launchPath(std::move(launchPath)), m_arguments(std::move(arguments)) {}

        void setTerminationHandler(TerminationHandler handler) override { m_handler = std::move(handler); }
        std::optional<QString> launch() override {
            if (std::exchange(m_wasLaunched, true))
                return QStringLiteral("launched before");
            if (auto failure = std::exchange(m_launcher.m_nextFailure, std::nullopt)) {
                if (const auto before = std::exchange(m_launcher.m_beforeFailure, {}))
                    before(*this);
                return failure;
            }
            m_isRunning = true;
            return std::nullopt;
        }
        [[nodiscard]] bool isRunning() const override { return m_isRunning; }
        /// The program hears of it; it ends with the next `deliverSignals`.
        void terminate() override { m_isTerminated = m_isTerminated || m_isRunning; }

        /// The program ends by itself. Nothing when it does not run.
        void finish(int terminationStatus) {
            if (!std::exchange(m_isRunning, false))
                return;
            if (const auto handler = std::exchange(m_handler, {}))
                std::thread([&] { handler(terminationStatus); }).join();
        }
        [[nodiscard]] const QString &launchPath() const { return m_launchPath; }
        [[nodiscard]] const QStringList &arguments() const { return m_arguments; }
        [[nodiscard]] bool wasLaunched() const { return m_wasLaunched; }
        [[nodiscard]] bool isTerminated() const { return m_isTerminated; }

    private:
        FakeTaskLauncher &m_launcher;
        QString m_launchPath;
        QStringList m_arguments;
        TerminationHandler m_handler;
        bool m_wasLaunched = false;
        bool m_isRunning = false;
        bool m_isTerminated = false;
    };

    [[nodiscard]] std::shared_ptr<Task> makeTask(const QString &launchPath, const QStringList &arguments) override {
        m_tasks.append(std::make_shared<FakeTask>(*this, launchPath, arguments));
        return m_tasks.last();
    }

    /// Every program that was asked to end does, in the order of their making.
    void deliverSignals() {
        const auto tasks = m_tasks;
        for (const auto &task : tasks)
            if (task->isTerminated())
                task->finish(128 + 15);
    }
    /// The next launch is refused; what it has done before that is the caller's.
    void failNextLaunch(const QString &why, std::function<void(const FakeTask &)> before = {}) {
        m_nextFailure = why;
        m_beforeFailure = std::move(before);
    }

    /// All that were made, the oldest first. Kept here as a system keeps a process whose task was dropped.
    [[nodiscard]] const QList<std::shared_ptr<FakeTask>> &tasks() const { return m_tasks; }

private:
    QList<std::shared_ptr<FakeTask>> m_tasks;
    std::optional<QString> m_nextFailure;
    std::function<void(const FakeTask &)> m_beforeFailure;
};

} // namespace tavrine
