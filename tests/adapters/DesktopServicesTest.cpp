// What is asked of the desktop's services over the bus.

#include "adapters/linux/FileManager.h"
#include "support/Eventually.h"

#include <QDBusConnection>
#include <QStringList>

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

TEST(DesktopServices, theFileManagerIsAskedToShowAllFilesAtOnce) {
    const FileManager manager;
    showInFileManager({QUrl::fromLocalFile(QStringLiteral("/a b/c.png")), QUrl::fromLocalFile(QStringLiteral("/d"))});
    ASSERT_TRUE(eventually([&] { return !manager.shown.isEmpty(); }));
    EXPECT_EQ(manager.shown,
              QList<QStringList>({{QStringLiteral("file:///a%20b/c.png"), QStringLiteral("file:///d")}}));
}

} // namespace
} // namespace tavrine::test

#include "DesktopServicesTest.moc"
