// Shows the shelf to people, as pictures in a folder: shelf_pictures FOLDER.
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeDragging.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeSystemSounds.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/ThemeFileIcons.h"
#include "look/Look.h"
#include "shelf/DropDetectionView.h"
#include "shelf/NotchShelfView.h"
#include "shelf/NotchViewModel.h"
#include "shelf/ShelfItemDragSourceView.h"
#include "shelf/ShelfRowView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QIcon>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace tavrine;

namespace {

constexpr int resting = 24;

QImage photo(int hue, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor::fromHsv(hue, 90, 250));
    sky.setColorAt(1, QColor::fromHsv((hue + 40) % 360, 180, 120));
    painter.fillRect(image.rect(), sky);
    painter.setBrush(QColor(255, 255, 230));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(size.width() * 0.7, size.height() * 0.3), size.height() / 9.0, size.height() / 9.0);
    return image;
}

/// Somebody's desktop, with a panel at its upper edge.
QImage desktop(const QSize &size, qreal scale, bool isDark) {
    QImage image(size * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, size.width(), size.height());
    sky.setColorAt(0, isDark ? QColor(0x22, 0x2B, 0x3D) : QColor(0x9F, 0xBF, 0xE8));
    sky.setColorAt(1, isDark ? QColor(0x0E, 0x11, 0x18) : QColor(0xF0, 0xE4, 0xD0));
    painter.fillRect(QRect({}, size), sky);
    painter.fillRect(QRect(0, 0, size.width(), resting), isDark ? QColor(0x1C, 0x1C, 0x20) : QColor(0xF4, 0xF4, 0xF6));
    return image;
}

struct Studio {
    QString folder;
    bool isDark;
    VirtualTime &time;
    FileIcons &icons;
    FakeSystemSounds sounds{};
    FakeDragging dragging{time};
    FakePasteboard pasteboard{};
    FakeUrlOpener urls{};

    [[nodiscard]] QString suffix() const { return isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png"); }

    /// Fills a shelf, brings it into a state, and shows it as the window would be.
    template <class Fill, class Prepare>
    void show(const char *name, QSize size, Fill fill, Prepare prepare, double after = 1) {
        NotchViewModel model(
            {.time = time,
             .sounds = sounds,
             .icons = icons,
             .fileExists = [](const QString &, const std::function<void(bool)> &answer) { answer(true); }});
        DropDetectionView view(model, time, dragging);
        auto *shelf = new NotchShelfView(model, {time, icons, dragging, pasteboard, urls}, [] {});
        view.setContent(shelf);
        fill(model);
        time.runPending();
        view.resize(size);
        view.setAttribute(Qt::WA_ShowWithoutActivating);
        view.show();
        QApplication::processEvents();
        shelf->row().clearFocus(); // the window has no keyboard
        prepare(model, *shelf);
        time.runPending();
        settle();
        time.advance(Seconds{after});
        save(view, name);
    }

private:
    static void settle() {
        QEventLoop loop;
        QTest::qWait(400); // small pictures are read on threads
        loop.processEvents();
    }
    void save(QWidget &view, const char *name) const {
        const qreal scale = view.devicePixelRatioF();
        QImage picture(view.size() * scale, QImage::Format_ARGB32_Premultiplied);
        picture.setDevicePixelRatio(scale);
        picture.fill(Qt::transparent);
        view.render(&picture, {}, {}, QWidget::DrawChildren);
        QImage image = desktop({620, 270}, scale, isDark);
        QPainter(&image).drawImage(QPointF((620 - view.width()) / 2, 0), picture);
        image.save(folder + u'/' + QLatin1String(name) + suffix());
    }
};

QUrl url(const QString &name) {
    return QUrl::fromLocalFile(name);
}

void hover(NotchViewModel &model, NotchShelfView &) {
    model.setHovering(true);
}

void showPrompts(Studio &studio, const auto &none) {
    studio.show("1-rest", {300, resting}, none, [](NotchViewModel &, NotchShelfView &) {});
    studio.show("2-hint", {300, resting + 55}, none,
                [](NotchViewModel &model, NotchShelfView &) { model.setFileDragActive(true); });
    studio.show("3-drop", {300, resting + 55}, none, [](NotchViewModel &model, NotchShelfView &) {
        model.setFileDragActive(true);
        model.setDragTargetActive(true);
    });
    studio.show(
        "3-drop-swollen", {300, resting + 55}, none,
        [](NotchViewModel &model, NotchShelfView &) { model.setDragTargetActive(true); }, 0.8);
    studio.show("4-empty-hover", {300, resting}, none, hover);
    studio.show(
        "5-drag-over-full", {300, resting + 55}, [](NotchViewModel &model) { model.addText(QStringLiteral("x")); },
        [](NotchViewModel &model, NotchShelfView &) { model.setFileDragActive(true); });
}

void showItems(Studio &studio, const QDir &home) {
    const auto nine = [&](NotchViewModel &model) {
        for (const char *name : {"report.pdf", "holiday.jpg", "Projects", "song.mp3", "film.mp4", "archive.tar.gz",
                                 "notes.txt", "script.py", "table.ods"})
            model.addFile(url(home.filePath(QString::fromUtf8(name))));
    };
    const QSize open(300, resting + 200);
    const QSize wide(550, resting + 200);
    studio.show(
        "6-one", open, [&](NotchViewModel &model) { model.addFile(url(home.filePath(QStringLiteral("report.pdf")))); },
        hover);
    const auto three = [&](NotchViewModel &model) {
        model.addFile(url(home.filePath(QStringLiteral("holiday.jpg"))));
        model.addText(QStringLiteral("https://example.org/a/page"));
        model.addImage(photo(20, {640, 400}));
    };
    studio.show("7-three", open, three, hover);
    studio.show("7-three-hovered", open, three, [](NotchViewModel &model, NotchShelfView &shelf) {
        model.setHovering(true);
        auto *tile = shelf.row().findChildren<ShelfItemDragSourceView *>().at(1);
        QEnterEvent enter(QPointF(70, 14), QPointF(), QPointF());
        QApplication::sendEvent(tile, &enter);
    });
    studio.show("7-three-keyboard", open, three, [](NotchViewModel &model, NotchShelfView &shelf) {
        model.setHovering(true);
        shelf.row().setFocus(Qt::TabFocusReason);
        shelf.row().setCurrent(1);
    });
    studio.show("8-nine", wide, nine, hover);
    studio.show("8-nine-middle", wide, nine, [](NotchViewModel &model, NotchShelfView &shelf) {
        model.setHovering(true);
        shelf.row().setCurrent(8);
        shelf.row().setCurrent(2);
    });
    studio.show(
        "8-nine-arriving", wide, nine,
        [&](NotchViewModel &model, NotchShelfView &) {
            model.setHovering(true);
            model.removeItem(model.items().at(8).id);
            model.addText(QStringLiteral("Just dropped"));
        },
        0.08);
}

void showStrangeItems(Studio &studio, const QDir &home) {
    const QSize wide(550, resting + 200);
    studio.show(
        "9-long-names", {465, resting + 200},
        [&](NotchViewModel &model) {
            for (const char *name :
                 {"Quarterly report for the board 2026, final version 3 (reviewed).docx",
                  "IMG_20260131_120000_HDR_portrait.jpeg", "averyveryverylongnamewithoutanyblankatall.txt",
                  "ein längerer Name mit Umlauten äöü.odt", "写真の長い名前はここで終わりません.png"})
                model.addFile(url(home.filePath(QString::fromUtf8(name))));
        },
        hover);
    studio.show(
        "9-extensions", wide,
        [&](NotchViewModel &model) {
            for (const char *name : {"notes1.properties", "averylongnamewithoutanyblank.properties",
                                     "A long name of a backup.tar.gz", "דוח שנתי ארוך מאוד לשנת הכספים.docx",
                                     "README without an extension that is long", ".a hidden file with a long name"})
                model.addFile(url(home.filePath(QString::fromUtf8(name))));
        },
        hover);
    studio.show(
        "9-texts", {465, resting + 200},
        [](NotchViewModel &model) {
            for (const char *text : {"Short", "Twenty-five characters or so, and more", "שלום עולם, זה טקסט ארוך",
                                     "🎉 Party tonight 🎂 at ten", "Two\nlines of it"})
                model.addText(QString::fromUtf8(text));
        },
        hover);
    studio.show(
        "9-pictures", {465, resting + 200},
        [](NotchViewModel &model) {
            for (const QSize size : {QSize(1600, 200), QSize(200, 1600), QSize(12, 12), QSize(4000, 3000), QSize(1, 1)})
                model.addImage(photo(size.width() % 360, size));
        },
        hover);
    QElapsedTimer timer;
    timer.start();
    studio.show(
        "9-ten-thousand", wide,
        [&](NotchViewModel &model) {
            for (int i = 0; i < 10'000; ++i)
                model.addFile(url(home.filePath(QStringLiteral("file %1.txt").arg(i))));
        },
        [](NotchViewModel &model, NotchShelfView &shelf) {
            model.setHovering(true);
            std::printf("%lld tiles\n",
                        static_cast<long long>(shelf.row().findChildren<ShelfItemDragSourceView *>().size()));
        });
    std::printf("10,000 items: %lld ms\n", static_cast<long long>(timer.elapsed()));
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = QApplication::arguments().value(1);
    QDir().mkpath(folder);
    QTemporaryDir temporary;
    const QDir home(temporary.path());
    home.mkpath(QStringLiteral("Projects"));
    photo(200, {1600, 1000}).save(home.filePath(QStringLiteral("holiday.jpg")));
    photo(300, {900, 1600}).save(home.filePath(QStringLiteral("IMG_20260131_120000_HDR_portrait.jpeg")));
    const auto none = [](NotchViewModel &) {};
    for (const bool isDark : {false, true}) {
        VirtualTime time;
        FakeAppearance appearance;
        appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(time, &appearance);
        look.setCompositing(true);
        // In the dark as on a desktop without any theme.
        QIcon::setThemeSearchPaths(isDark ? QStringList() : QStringList(QStringLiteral("/usr/share/icons")));
        ThemeFileIcons icons([isDark] {
            return DesktopThemes{.icons = isDark ? QStringLiteral("none") : QStringLiteral("Adwaita"), .sounds = {}};
        });
        Studio studio{.folder = folder, .isDark = isDark, .time = time, .icons = icons};
        showPrompts(studio, none);
        showItems(studio, home);
        showStrangeItems(studio, home);
    }
    return 0;
}
