// A foreign window that drags and takes drops: qt_drag KIND FILE, as the client gtk-drag.
#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QImage>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <cstdio>

namespace {

void say(const QString &line) {
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

QString nameOf(Qt::DropAction action) {
    return action == Qt::IgnoreAction ? QStringLiteral("none")
           : action == Qt::CopyAction ? QStringLiteral("copy")
           : action == Qt::MoveAction ? QStringLiteral("move")
                                      : QString::number(action);
}

class Window final : public QWidget {
public:
    Window(QString kind, QString file) : m_kind(std::move(kind)), m_file(std::move(file)) { setAcceptDrops(true); }

protected:
    void mouseMoveEvent(QMouseEvent *) override {
        QFile file(m_file);
        if (!file.open(QIODevice::ReadOnly))
            return;
        const QByteArray content = file.readAll();
        auto *mime = new QMimeData;
        if (m_kind == QLatin1String("files")) {
            QList<QUrl> urls;
            for (const QByteArray &line : content.simplified().split(' '))
                urls.append(QUrl::fromEncoded(line));
            mime->setUrls(urls);
        } else if (m_kind == QLatin1String("text")) {
            mime->setText(QString::fromUtf8(content));
        } else {
            mime->setImageData(QImage::fromData(content));
        }
        auto *drag = new QDrag(this);
        drag->setMimeData(mime);
        say(QStringLiteral("begin"));
        say(QStringLiteral("dropped ") + nameOf(drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction)));
    }
    void dragEnterEvent(QDragEnterEvent *event) override { event->acceptProposedAction(); }
    void dropEvent(QDropEvent *event) override {
        event->acceptProposedAction();
        const QMimeData &mime = *event->mimeData();
        QString what = mime.text();
        if (mime.hasUrls()) {
            what.clear();
            for (const QUrl &url : mime.urls())
                what += (what.isEmpty() ? QString() : QStringLiteral(" ")) + QString::fromLatin1(url.toEncoded());
        } else if (mime.hasImage()) {
            const QImage image = qvariant_cast<QImage>(mime.imageData());
            what = QStringLiteral("%1x%2").arg(image.width()).arg(image.height());
        }
        say(QStringLiteral("took %1 %2").arg(nameOf(event->dropAction()), what));
    }

private:
    const QString m_kind;
    const QString m_file;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    Window window(arguments.value(1), arguments.value(2));
    window.setWindowTitle(QStringLiteral("qt-drag"));
    window.resize(300, 200);
    window.show();
    QTimer::singleShot(200, [] { say(QStringLiteral("ready")); });
    return QApplication::exec();
}
