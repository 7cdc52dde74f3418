#pragma once

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "support/ReadOnlyFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::HasSubstr;
using Array = UserDefaults::Array;
using Value = UserDefaults::Value;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

class UserDefaultsTest : public testing::Test {
protected:
    UserDefaultsTest() {
        changes = center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                     [this](const Notification &) { ++changeCount; });
        open();
    }

    void open() { defaults = std::make_unique<UserDefaults>(path, time, center); }

    /// Ends this program and starts the next.
    void reopen() {
        defaults.reset();
        open();
    }

    static QByteArray contentOf(const QString &file) {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(none)");
    }
    [[nodiscard]] QByteArray content() const { return contentOf(path); }

    static void writeFile(const QString &file, const QByteArray &bytes) {
        QDir().mkpath(QFileInfo(file).absolutePath());
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        ASSERT_EQ(f.write(bytes), bytes.size());
    }

    static QByteArray plist(const QByteArray &entries) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>" +
               entries + "</dict>\n</plist>\n";
    }

    [[nodiscard]] QStringList setAside() const {
        return QDir(QFileInfo(path).absolutePath())
            .entryList({QStringLiteral("*.unreadable-*")}, QDir::AllEntries | QDir::System, QDir::Name);
    }

    /// Lets the notices of the operating system and the work that they hand in come, until `condition` holds.
    bool wait(const std::function<bool()> &condition) {
        return QTest::qWaitFor([&] {
            time.runPending();
            return condition();
        });
    }

    /// Long enough for a notice that must not come; the notices of a change take a millisecond or two.
    void letNoticesCome() {
        for (int i = 0; i < 10; ++i) {
            QTest::qWait(10);
            time.runPending();
        }
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("config/com.veltrane.Tavrine.plist"));
    VirtualTime time;
    NotificationCenter center;
    NotificationCenter::Token changes;
    int changeCount = 0;
    std::unique_ptr<UserDefaults> defaults;
    const QString key = QStringLiteral("key");
};

} // namespace tavrine
