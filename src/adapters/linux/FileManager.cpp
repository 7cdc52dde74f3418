#include "adapters/linux/FileManager.h"

#include "adapters/linux/SessionBus.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QProcess>
#include <QSet>

namespace tavrine {
namespace {

void openFolders(const QList<QUrl> &urls) {
    QSet<QUrl> opened;
    for (const QUrl &url : urls) {
        const QUrl folder = url.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
        if (opened.contains(folder))
            continue;
        opened.insert(folder);
        QProcess::startDetached(QStringLiteral("xdg-open"), {folder.toLocalFile()});
    }
}

} // namespace

void showInFileManager(const QList<QUrl> &urls) {
    if (urls.isEmpty())
        return;
    QObject *const mainThread = QCoreApplication::instance();
    sessionBus::whenOpen(mainThread, [urls, mainThread](const QDBusConnection &bus) {
        if (!bus.isConnected()) {
            openFolders(urls);
            return;
        }
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
        call << QUrl::toStringList(urls, QUrl::FullyEncoded) << QString();
        sessionBus::ask(bus, call, mainThread, [urls](const QDBusPendingCall &reply) {
            // One that is slow to start will show the files yet; a second window would be one too many.
            const bool isSlow = reply.error().type() == QDBusError::NoReply;
            if (reply.isError() && !isSlow)
                openFolders(urls);
        });
    });
}

} // namespace tavrine
