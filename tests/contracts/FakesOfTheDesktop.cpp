// The fakes of the desktop's ports, and the real ones that need no desktop, under their contracts.

#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeStatusItem.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/linux/QtApplication.h"
#include "adapters/linux/XdgAutostart.h"
#include "contracts/ApplicationContract.h"
#include "contracts/LoginItemContract.h"
#include "contracts/StatusItemContract.h"
#include "contracts/WorkspaceContract.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

namespace tavrine::test {
namespace {

struct FakeDesk {
    FakeDesk() { fake.setTrayRunning(false); }
    StatusItem &item() { return fake; }
    void startTray() { fake.setTrayRunning(true); }
    void endTray() { fake.setTrayRunning(false); }
    bool isInTray() { return fake.isShown(); }
    QSize sizeInTray() { return fake.render(2).size(); }
    QString toolTipInTray() { return fake.toolTip(); }
    QPoint click() {
        fake.press({7, 9});
        return {7, 9};
    }
    FakeStatusItem fake;
};

struct FakeWindows {
    Workspace &workspace() { return fake; }
    void show(const QString &program, quint32 window) {
        fake.setFrontmost(RunningApplication{program, program, qint64(qHash(program)), window});
    }
    void open(const QString &program) {
        show(program, 1);
        running.append(program);
        tell();
    }
    void activate(const QString &program) { show(program, 1); }
    void openSecondWindow(const QString &program) { show(program, 2); }
    void close(const QString &program) {
        fake.setFrontmost(std::nullopt);
        running.removeOne(program);
        tell();
    }
    void tell() {
        QList<RunningApplication> all;
        for (const QString &program : running)
            all.append({program, program, qint64(qHash(program)), 1});
        fake.setRunning(all);
    }
    FakeWorkspace fake;
    QStringList running;
};

struct FakeSession {
    LoginItem &item() { return fake; }
    void refuse() { fake.failNext(); }
    void switchOutside(bool isEnabled) { fake.setEnabledOutside(isEnabled); }
    FakeLoginItem fake;
};

struct AutostartFolder {
    LoginItem &item() { return real; }
    void refuse() {
        QFile inPlace(folder);
        ASSERT_TRUE(inPlace.open(QIODevice::WriteOnly)); // a file where the folder should be
    }
    void switchOutside(bool isEnabled) {
        QFile entry(folder + QStringLiteral("/com.veltrane.Tavrine.desktop"));
        ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
        QByteArray text = entry.readAll();
        entry.close();
        text.replace(isEnabled ? "Autostart-enabled=false" : "Autostart-enabled=true",
                     isEnabled ? "Autostart-enabled=true" : "Autostart-enabled=false");
        ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write(text);
    }
    QTemporaryDir home;
    QString folder = home.filePath(QStringLiteral("config/autostart"));
    XdgAutostart real{(QDir().mkpath(home.filePath(QStringLiteral("config"))), folder),
                      QStringLiteral("/usr/bin/tavrine")};
};

struct FakeProcess {
    Application &application() { return fake; }
    template <class Action>
    bool endsAfter(Action action) {
        action();
        return fake.isTerminated();
    }
    FakeApplication fake;
};

struct QtProcess {
    Application &application() { return real; }
    template <class Action>
    bool endsAfter(Action action) {
        bool isTooLate = false;
        QTimer::singleShot(0, action);
        QTimer::singleShot(200, [&] {
            isTooLate = true;
            QCoreApplication::exit();
        });
        QCoreApplication::exec();
        return !isTooLate;
    }
    QtApplication real;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, StatusItemContract, FakeDesk);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceContract, FakeWindows);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LoginItemContract, FakeSession);
INSTANTIATE_TYPED_TEST_SUITE_P(XdgAutostart, LoginItemContract, AutostartFolder);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ApplicationContract, FakeProcess);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ApplicationContract, QtProcess);

} // namespace tavrine::test
