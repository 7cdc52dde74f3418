// A program of this toolkit that copies rich text and a picture, says "ready", and stays until its input ends. Run by
// the tests of foreign programs.

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

int main(int argc, char **argv) {
    const QGuiApplication application(argc, argv);
    auto *data = new QMimeData;
    data->setText(QStringLiteral("Qt: Grüße 🌍"));
    data->setHtml(QStringLiteral("<b>Qt</b>"));
    if (argc > 1 && qstrcmp(argv[1], "image") == 0) {
        QImage image(33, 22, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        data->setImageData(image);
    }
    if (argc > 1 && qstrcmp(argv[1], "secret") == 0)
        data->setData(QStringLiteral("x-kde-passwordManagerHint"), "secret");
    QGuiApplication::clipboard()->setMimeData(data);
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    QMetaObject::invokeMethod(
        qApp,
        [] {
            std::puts("ready");
            std::fflush(stdout);
        },
        Qt::QueuedConnection);
    return QGuiApplication::exec();
}
