// What is asked of the desktop's services over the bus.

#include "adapters/linux/FileManager.h"
#include "adapters/linux/NoFeedUpdater.h"
#include "support/Eventually.h"

#include <QDBusConnection>
#include <QStringList>
#include <QVariantMap>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    FileManager() {
        m_bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }
    ~FileManager() override { QDBusConnection::disconnectFromBus(QStringLiteral("test-files")); }
    QList<QStringList> shown;

public Q_SLOTS:
    void ShowItems(const QStringList &urls, const QString &) { shown.append(urls); }

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-files"));
};

class Notifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    Notifications() {
        m_bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    ~Notifications() override { QDBusConnection::disconnectFromBus(QStringLiteral("test-notifications")); }
    QStringList told;

public Q_SLOTS:
    uint Notify(const QString &, uint, const QString &, const QString &title, const QString &text, const QStringList &,
                const QVariantMap &, int) {
        told.append(title + u'|' + text);
        return 1;
    }

private:
    QDBusConnection m_bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-notifications"));
};

TEST(DesktopServices, theFileManagerIsAskedToShowAllFilesAtOnce) {
    const FileManager manager;
    showInFileManager({QUrl::fromLocalFile(QStringLiteral("/a b/c.png")), QUrl::fromLocalFile(QStringLiteral("/d"))});
    ASSERT_TRUE(eventually([&] { return !manager.shown.isEmpty(); }));
    EXPECT_EQ(manager.shown,
              QList<QStringList>({{QStringLiteral("file:///a%20b/c.png"), QStringLiteral("file:///d")}}));
}

TEST(DesktopServices, aLookForUpdatesIsAnsweredByANotification) {
    const Notifications notifications;
    NoFeedUpdater updater(NoFeedUpdater::byDesktopNotification());
    updater.start();
    updater.checkForUpdates();
    ASSERT_TRUE(eventually([&] { return !notifications.told.isEmpty(); }));
    EXPECT_EQ(notifications.told,
              QStringList{QStringLiteral("Tavrine|This copy of Tavrine does not look for updates by itself. New "
                                         "versions come the way it was installed.")});
}

} // namespace
} // namespace tavrine::test

#include "DesktopServicesTest.moc"
