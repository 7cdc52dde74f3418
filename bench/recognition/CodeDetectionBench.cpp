#include "adapters/linux/ReaderProcess.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <functional>
#include <map>

using namespace tavrine;

namespace {

constexpr QSize pageSize(1280, 800);
constexpr int picturesOfAKind = 10;

QImage code(const QString &payload, int pixelsOfModule, int quietModules) {
    QProcess program;
    program.start(QStringLiteral("qrencode"),
                  {QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-s"), QString::number(pixelsOfModule),
                   QStringLiteral("-m"), QString::number(quietModules), payload});
    if (!program.waitForFinished() || program.exitCode() != 0)
        qFatal("qrencode does not run");
    return QImage::fromData(program.readAllStandardOutput()).convertToFormat(QImage::Format_RGB32);
}

/// How the codes of a kind are shown.
struct Kind {
    const char *name;
    int codes = 1;
    int pixelsOfModule = 4;
    int quietModules = 4;
    double degrees = 0;
    bool isInverted = false;
    bool isBusy = false;
    QColor ground = Qt::white;
};

struct Page {
    QImage image;
    QStringList payloads;
};

void paintBusy(QPainter &painter, QRandomGenerator &random) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    painter.setFont(font);
    for (int i = 0; i < 260; ++i) {
        const QPoint place(random.bounded(pageSize.width()), random.bounded(pageSize.height()));
        const QColor colour = QColor::fromHsv(random.bounded(360), random.bounded(255), random.bounded(255));
        if (i % 3 == 0)
            painter.fillRect(QRect(place, QSize(random.bounded(8, 90), random.bounded(4, 60))), colour);
        else
            painter.setPen(colour);
        painter.drawText(place, QStringLiteral("Lorem ipsum %1 [#|#] dolor").arg(random.generate()));
    }
}

Page pageOf(const Kind &kind, QRandomGenerator &random) {
    Page page{QImage(pageSize, QImage::Format_RGB32), {}};
    page.image.fill(kind.ground);
    QPainter painter(&page.image);
    if (kind.isBusy)
        paintBusy(painter, random);
    const int columns = kind.codes > 3 ? 5 : std::max(1, kind.codes);
    const int rows = (kind.codes + columns - 1) / columns;
    for (int i = 0; i < kind.codes; ++i) {
        const QString payload = QStringLiteral("https://example.org/%1/%2").arg(random.generate()).arg(i);
        QImage picture = code(payload, kind.pixelsOfModule, kind.quietModules);
        if (kind.isInverted)
            picture.invertPixels();
        const QSize cell(pageSize.width() / columns, pageSize.height() / std::max(1, rows));
        const double reach = kind.degrees == 0 ? picture.width() : picture.width() * std::sqrt(2.0);
        const QPointF spare(std::max(0.0, cell.width() - reach), std::max(0.0, cell.height() - reach));
        painter.save();
        // On whole pixels: a screen shows codes that way.
        painter.translate(std::round(cell.width() * (i % columns) + reach / 2 + random.generateDouble() * spare.x()),
                          std::round(cell.height() * (i / columns) + reach / 2 + random.generateDouble() * spare.y()));
        painter.rotate(kind.degrees);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, kind.degrees != 0);
        painter.drawImage(-picture.width() / 2, -picture.height() / 2, picture);
        painter.restore();
        page.payloads.append(payload);
    }
    return page;
}

QStringList payloadsOfCommand(const QString &program, const QStringList &arguments, const QString &prefix) {
    QProcess command;
    command.start(program, arguments);
    if (!command.waitForStarted() || !command.waitForFinished(60'000))
        qFatal("%s does not run", qPrintable(program));
    QStringList payloads;
    const QStringList lines = QString::fromUtf8(command.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const QString &line : lines)
        if (line.startsWith(prefix) && line.size() > prefix.size())
            payloads.append(line.mid(prefix.size()).remove(QLatin1Char('"')));
    return payloads;
}

struct Reader {
    const char *name;
    std::function<QStringList(const QImage &image, const QString &file)> read;
};

struct Count {
    int found = 0;
    int wrong = 0;
    double milliseconds = 0;
};

void add(Count &count, QStringList wanted, const QStringList &found, double took) {
    for (const QString &payload : found) {
        if (wanted.removeOne(payload))
            ++count.found;
        else
            ++count.wrong;
    }
    count.milliseconds += took;
}

} // namespace

/// Shows codes in many ways to our two detectors and to the commands of their libraries, and prints what each found.
int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    const QString folder = QCoreApplication::applicationDirPath();
    ProcessCodeDetector screen(folder, ProcessCodeDetector::screenPlugin);
    ProcessCodeDetector picture(folder, ProcessCodeDetector::picturePlugin);
    const auto ours = [](ProcessCodeDetector &detector) {
        return [&detector](const QImage &image, const QString &) {
            QStringList payloads;
            const CodeDetector::Result result = detector.detect(image);
            if (const auto *codes = std::get_if<QList<DetectedCode>>(&result))
                for (const DetectedCode &found : *codes)
                    payloads.append(found.payload);
            return payloads;
        };
    };
    const Reader readers[] = {{"screen (ZBar)", ours(screen)},
                              {"zbarimg",
                               [](const QImage &, const QString &file) {
                                   return payloadsOfCommand(QStringLiteral("zbarimg"),
                                                            {QStringLiteral("-q"), QStringLiteral("--raw"),
                                                             QStringLiteral("-Sdisable"),
                                                             QStringLiteral("-Sqrcode.enable"), file},
                                                            {});
                               }},
                              {"editor (ZXing)", ours(picture)},
                              {"ZXingReader", [](const QImage &, const QString &file) {
                                   return payloadsOfCommand(QStringLiteral("ZXingReader"),
                                                            {QStringLiteral("-format"), QStringLiteral("QRCode"), file},
                                                            QStringLiteral("Text:       "));
                               }}};
    const Kind kinds[] = {
        {.name = "one code"},
        {.name = "three codes", .codes = 3},
        {.name = "ten codes", .codes = 10},
        {.name = "three, 2 pixels a module", .codes = 3, .pixelsOfModule = 2},
        {.name = "three, 1 pixel a module", .codes = 3, .pixelsOfModule = 1},
        {.name = "three, turned by 15°", .codes = 3, .degrees = 15},
        {.name = "three, turned by 45°", .codes = 3, .degrees = 45},
        {.name = "three inverted", .codes = 3, .isInverted = true, .ground = QColor(0x1E, 0x1E, 0x1E)},
        {.name = "three without quiet zone, on grey",
         .codes = 3,
         .quietModules = 0,
         .ground = QColor(0x70, 0x70, 0x70)},
        {.name = "three without quiet zone, on black", .codes = 3, .quietModules = 0, .ground = Qt::black},
        {.name = "three on a busy page", .codes = 3, .isBusy = true},
        {.name = "a busy page without codes", .codes = 0, .isBusy = true}};
    const QTemporaryDir temporary;
    const QString file = temporary.filePath(QStringLiteral("page.png"));
    std::printf("| Codes found (wrong), ms a page |");
    for (const Reader &reader : readers)
        std::printf(" %s |", reader.name);
    std::printf("\n|---|---|---|---|---|\n");
    QRandomGenerator random(20260131); // the same pages every time
    for (const Kind &kind : kinds) {
        std::map<const char *, Count> counts;
        for (int i = 0; i < picturesOfAKind; ++i) {
            const Page page = pageOf(kind, random);
            page.image.save(file);
            for (const Reader &reader : readers) {
                QElapsedTimer timer;
                timer.start();
                const QStringList found = reader.read(page.image, file);
                add(counts[reader.name], page.payloads, found, static_cast<double>(timer.nsecsElapsed()) / 1e6);
            }
        }
        std::printf("| %s, of %d |", kind.name, kind.codes * picturesOfAKind);
        for (const Reader &reader : readers) {
            const Count &count = counts[reader.name];
            std::printf(" %d (%d), %.0f |", count.found, count.wrong, count.milliseconds / picturesOfAKind);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    return 0;
}
