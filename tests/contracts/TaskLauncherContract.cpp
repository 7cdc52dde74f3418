// Programs that are started, under one contract over the fake and over real processes.

#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/linux/PosixTaskLauncher.h"
#include "support/Eventually.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <csignal>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine::test {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakePrograms {
    std::shared_ptr<Task> exiting(int status) {
        auto task = launcher.makeTask(text("/bin/tool"), {});
        m_status.push_back(status);
        return task;
    }
    std::shared_ptr<Task> waiting() {
        m_status.push_back(-1);
        return launcher.makeTask(text("/bin/tool"), {});
    }
    std::shared_ptr<Task> missing() {
        m_status.push_back(-1);
        launcher.failNextLaunch(text("no such file"));
        return launcher.makeTask(text("/bin/missing"), {});
    }
    void killLast() { launcher.tasks().last()->finish(128 + SIGKILL); }
    template <class Condition>
    bool comesTrue(Condition condition) {
        for (qsizetype i = 0; i < launcher.tasks().size(); ++i)
            if (const int status = m_status.at(size_t(i)); status >= 0)
                launcher.tasks().at(i)->finish(status);
        launcher.deliverSignals();
        return condition();
    }
    FakeTaskLauncher launcher;

private:
    std::vector<int> m_status;
};

struct Processes {
    std::shared_ptr<Task> shell(const QString &script) {
        return launcher.makeTask(text("/bin/sh"), {text("-c"), script});
    }
    std::shared_ptr<Task> exiting(int status) { return shell(text("exit %1").arg(status)); }
    std::shared_ptr<Task> waiting() { return shell(text("echo $$ >%1/pid; exec sleep 30").arg(folder.path())); }
    std::shared_ptr<Task> missing() { return launcher.makeTask(folder.filePath(text("missing")), {}); }
    void killLast() {
        QByteArray pid;
        ASSERT_TRUE(eventually([&] {
            QFile file(folder.filePath(text("pid")));
            if (file.open(QIODevice::ReadOnly))
                pid = file.readAll().trimmed();
            return !pid.isEmpty();
        }));
        kill(pid.toInt(), SIGKILL);
    }
    template <class Condition>
    bool comesTrue(Condition condition) {
        return eventually(condition);
    }
    QTemporaryDir folder;
    PosixTaskLauncher launcher{folder.path()};
};

/// What every launcher keeps.
template <class Programs>
class TaskLauncherContract : public testing::Test {
protected:
    void watch(Task &task) {
        task.setTerminationHandler([this](int terminationStatus) {
            isOnMainThread = std::this_thread::get_id() == mainThread;
            status = terminationStatus;
            ++ends;
        });
    }
    Programs programs;
    std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<bool> isOnMainThread = false;
    std::atomic<int> status = -1;
    std::atomic<int> ends = 0;
};

using Launchers = testing::Types<FakePrograms, Processes>;
TYPED_TEST_SUITE(TaskLauncherContract, Launchers);

TYPED_TEST(TaskLauncherContract, aProgramThatEndsTellsItsStatusOnAThreadThatIsNotTheMainOne) {
    for (const int expected : {0, 1, 3, 127}) {
        const auto task = this->programs.exiting(expected);
        this->watch(*task);
        this->ends = 0;
        ASSERT_EQ(task->launch(), std::nullopt);
        ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
        EXPECT_EQ(this->status, expected);
        EXPECT_FALSE(this->isOnMainThread);
        EXPECT_FALSE(task->isRunning());
    }
}

TYPED_TEST(TaskLauncherContract, aProgramRunsFromTheLaunchToItsEnd) {
    const auto task = this->programs.waiting();
    this->watch(*task);
    EXPECT_FALSE(task->isRunning());
    ASSERT_EQ(task->launch(), std::nullopt);
    EXPECT_TRUE(task->isRunning());
    task->terminate();
    ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
    EXPECT_FALSE(task->isRunning());
    EXPECT_EQ(this->status, 128 + SIGTERM);
}

TYPED_TEST(TaskLauncherContract, aProgramThatIsKilledTellsTheSignal) {
    const auto task = this->programs.waiting();
    this->watch(*task);
    ASSERT_EQ(task->launch(), std::nullopt);
    this->programs.killLast();
    ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
    EXPECT_EQ(this->status, 128 + SIGKILL);
}

TYPED_TEST(TaskLauncherContract, aProgramThatIsNotThereSaysSoAndNeverEnds) {
    const auto task = this->programs.missing();
    this->watch(*task);
    const auto failure = task->launch();
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->isEmpty());
    EXPECT_FALSE(task->isRunning());
    task->terminate();
    EXPECT_TRUE(this->programs.comesTrue([] { return true; }));
    EXPECT_EQ(this->ends, 0);
}

TYPED_TEST(TaskLauncherContract, terminatingWhatDoesNotRunIsNothing) {
    const auto task = this->programs.exiting(0);
    this->watch(*task);
    task->terminate();
    ASSERT_EQ(task->launch(), std::nullopt);
    ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
    EXPECT_EQ(this->status, 0);
    task->terminate();
    EXPECT_EQ(this->ends, 1);
}

TYPED_TEST(TaskLauncherContract, aTaskIsLaunchedOnce) {
    const auto task = this->programs.waiting();
    this->watch(*task);
    ASSERT_EQ(task->launch(), std::nullopt);
    EXPECT_TRUE(task->launch());
    EXPECT_TRUE(task->isRunning());
    task->terminate();
    ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
}

TYPED_TEST(TaskLauncherContract, aDroppedTaskStillTellsItsEnd) {
    auto task = this->programs.exiting(5);
    this->watch(*task);
    ASSERT_EQ(task->launch(), std::nullopt);
    task.reset();
    ASSERT_TRUE(this->programs.comesTrue([&] { return this->ends == 1; }));
    EXPECT_EQ(this->status, 5);
}

TYPED_TEST(TaskLauncherContract, aProgramWithoutAHandlerMayEnd) {
    const auto task = this->programs.exiting(0);
    ASSERT_EQ(task->launch(), std::nullopt);
    EXPECT_TRUE(this->programs.comesTrue([&] { return !task->isRunning(); }));
}

// Real processes alone.

class PosixTaskLauncherTest : public testing::Test {
protected:
    void makeProgram(const QString &name, const QByteArray &script) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    int run(const QString &launchPath, const QStringList &arguments = {}) {
        std::atomic<int> status = -1;
        const auto task = launcher.makeTask(launchPath, arguments);
        task->setTerminationHandler([&](int terminationStatus) { status = terminationStatus; });
        EXPECT_EQ(task->launch(), std::nullopt);
        EXPECT_TRUE(eventually([&] { return status >= 0; }));
        return status;
    }
    QByteArray output() {
        QFile file(folder.filePath(text("out")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no output");
    }
    QTemporaryDir folder;
    PosixTaskLauncher launcher{folder.path()};
    QByteArray out = folder.filePath(text("out")).toUtf8();
};

TEST_F(PosixTaskLauncherTest, aBareNameIsTheProgramBesideOurOwn) {
    makeProgram(text("tool"), "exit 7\n");
    EXPECT_EQ(run(text("tool")), 7);
}

TEST_F(PosixTaskLauncherTest, theCaptureToolIsTheOneThatComesWithUs) {
    EXPECT_EQ(launcher.programAt(text("/usr/sbin/screencapture")), folder.filePath(text("screencapture")));
    EXPECT_EQ(launcher.programAt(text("/usr/sbin/screencapture2")), text("/usr/sbin/screencapture2"));
    EXPECT_EQ(launcher.programAt(text("/bin/sh")), text("/bin/sh"));
    EXPECT_EQ(launcher.programAt(text("./tool")), text("./tool"));
}

TEST_F(PosixTaskLauncherTest, theArgumentsArriveAsTheyAre) {
    const QStringList arguments{text("-i"), text(""), text("a b"), text("\"$HOME\" `x` *\n\\"), text("Bücher 🎉")};
    makeProgram(text("tool"), "printf '%s|' \"$#\" \"$@\" >" + out + "\n");
    EXPECT_EQ(run(text("tool"), arguments), 0);
    EXPECT_EQ(QString::fromUtf8(output()), text("5|") + arguments.join(QLatin1Char('|')) + QLatin1Char('|'));
}

TEST_F(PosixTaskLauncherTest, theProgramGetsNoInput) {
    makeProgram(text("tool"), "read line && exit 9; exit 0\n");
    EXPECT_EQ(run(text("tool")), 0);
}

TEST_F(PosixTaskLauncherTest, theProgramGetsNoneOfOurFiles) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0); // as a careless library leaves one open
    makeProgram(text("tool"), "exec ls -1 /proc/self/fd >" + out + "\n");
    EXPECT_EQ(run(text("tool")), 0);
    EXPECT_EQ(output(), "0\n1\n2\n3\n"); // the last is the folder that ls reads
    close(ends[0]);
    close(ends[1]);
}

TEST_F(PosixTaskLauncherTest, theProgramHasTheSignalsOfALogin) {
    const auto before = std::signal(SIGPIPE, SIG_IGN); // as our own entry does
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    sigset_t old;
    pthread_sigmask(SIG_BLOCK, &blocked, &old);
    makeProgram(text("tool"), "grep SigBlk /proc/self/status >" + out + "\nkill -PIPE $$\nexit 0\n");
    EXPECT_EQ(run(text("tool")), 128 + SIGPIPE);
    EXPECT_EQ(output(), "SigBlk:\t0000000000000000\n");
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    std::signal(SIGPIPE, before);
}

TEST_F(PosixTaskLauncherTest, whatIsNoProgramIsNotStarted) {
    QFile file(folder.filePath(text("plain")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    for (const QString &path : {file.fileName(), folder.path(), text("missing"), QString()})
        EXPECT_TRUE(launcher.makeTask(path, {})->launch()) << qPrintable(path);
}

TEST_F(PosixTaskLauncherTest, anArgumentListLongerThanTheSystemTakesIsRefused) {
    makeProgram(text("tool"), "exit 0\n");
    EXPECT_TRUE(launcher.makeTask(text("tool"), {QString(4 * 1024 * 1024, QLatin1Char('x'))})->launch());
}

TEST_F(PosixTaskLauncherTest, aProgramEndsWithTheProcessThatStartedIt) {
    makeProgram(text("tool"), "echo $$ >" + out + "; exec sleep 30\n");
    const pid_t starter = fork();
    ASSERT_GE(starter, 0);
    if (starter == 0) {
        static_cast<void>(launcher.makeTask(text("tool"), {})->launch());
        for (;;)
            pause();
    }
    ASSERT_TRUE(eventually([this] { return output().endsWith('\n'); }));
    const QString process = text("/proc/") + QString::fromLatin1(output().trimmed());
    EXPECT_TRUE(QFile::exists(process));
    kill(starter, SIGKILL);
    waitpid(starter, nullptr, 0);
    EXPECT_TRUE(eventually([&process] { // nobody may be there who takes its status
        QFile status(process + text("/status"));
        return !status.open(QIODevice::ReadOnly) || status.readAll().contains("State:\tZ");
    }));
}

TEST_F(PosixTaskLauncherTest, manyProgramsAtOnceAllTellTheirEnd) {
    makeProgram(text("tool"), "exit $1\n");
    std::atomic<int> sum = 0;
    std::atomic<int> ends = 0;
    for (int i = 1; i <= 20; ++i) {
        const auto task = launcher.makeTask(text("tool"), {QString::number(i)});
        task->setTerminationHandler([&](int status) {
            sum += status;
            ++ends;
        });
        ASSERT_EQ(task->launch(), std::nullopt);
    }
    EXPECT_TRUE(eventually([&] { return ends == 20; }));
    EXPECT_EQ(sum, 210);
}

} // namespace
} // namespace tavrine::test
