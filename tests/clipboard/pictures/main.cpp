// Paints both clipboard panels into files, for people to look at, and tells how long they take.
//
// usage: clipboard_pictures FOLDER
#include "adapters/fake/FakeAlerts.h"
#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardSearchView.h"
#include "clipboard/ContentView.h"
#include "look/Look.h"
#include "look/ModalAlerts.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

#include <cstdio>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

QImage photograph() {
    QImage image(480, 320, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, 320);
    sky.setColorAt(0, QColor(0x3A, 0x6E, 0xC8));
    sky.setColorAt(1, QColor(0xF6, 0xB2, 0x6B));
    painter.fillRect(image.rect(), sky);
    painter.setBrush(QColor(0x24, 0x36, 0x2C));
    painter.drawPolygon(QPolygon({{0, 320}, {140, 150}, {240, 260}, {340, 120}, {480, 320}}));
    return image;
}

struct Desk {
    Desk() { defaults.set(QStringLiteral("ClipboardMySaveSeeded"), true); }
    void start() {
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, catalog, coder, movies, loginItem, folders, database});
        manager->cacheThumbnail(photograph(), QStringLiteral("a.png"));
        manager->cacheThumbnail(photograph().mirrored(), QStringLiteral("r.mp4"));
    }
    void add(const QString &content, bool isPinned = false, bool isSaved = false,
             const std::optional<QString> &file = std::nullopt) {
        age += 1000;
        database.save({QUuid::createUuid(), content, time.now() - Seconds(age), isPinned, isSaved, file});
    }
    void addOfEachKind() {
        add(QStringLiteral("Thank you for your message. I will come back to you by Thursday at the latest, and "
                           "until then please send everything that is urgent to my colleague."),
            true);
        add(QStringLiteral("ssh -L 5432:localhost:5432 build@host"), true);
        add(QStringLiteral("https://www.debian.org/releases/bookworm/"));
        add(QStringLiteral("Copied Image"), false, false, QStringLiteral("a.png"));
        add(QStringLiteral("mira.lindqvist@example.org"));
        add(QStringLiteral("שלום עולם, this line begins in Hebrew and ends in Latin letters"));
        add(QStringLiteral("مرحبا بالعالم"));
        add(QStringLiteral(
            "👩‍👩‍👧‍👦 family trip 🏔️ — packing list: 🧦🧦 socks, 🍫 chocolate"));
        add(QStringLiteral("Screen Recording"), false, false, QStringLiteral("r.mp4"));
        add(QStringLiteral("Copied Image"), false, false, QStringLiteral("gone.png"));
        add(QStringLiteral("for (int i = 0; i < 10; ++i) {\n\tstd::puts(names[i].c_str());\n}"));
        add(QStringLiteral("Kept for good: the address of the workshop"), false, true);
        add(QStringLiteral("Kept and pinned: message of thanks"), true, true);
    }
    /// Of recordings alone: wide, high, pinned, saved, and one whose file is gone.
    void addRecordings() {
        const std::array sizes{QSize(480, 270), QSize(200, 480), QSize(480, 40), QSize(480, 300)};
        for (size_t i = 0; i < sizes.size(); ++i) {
            const QString file = QStringLiteral("recording_%1.mp4").arg(i);
            add(QStringLiteral("[Screen Recording] recording %1").arg(i), i == 2, i == 3, file);
            manager->cacheThumbnail(photograph().scaled(sizes.at(i)), file);
        }
        add(QStringLiteral("[Screen Recording] gone"), false, false, QStringLiteral("gone.mp4"));
        manager->reloadHistory();
    }
    void addMany(int count) {
        for (int i = 0; i < count; ++i)
            add(QStringLiteral("message %1: a line of text of a length that is common").arg(i));
    }

    QTemporaryDir home;
    Folders folders{home.path() + QStringLiteral("/share"), home.path(), home.path() + QStringLiteral("/Documents"),
                    home.path() + QStringLiteral("/tmp")};
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + QStringLiteral("/defaults.plist"), time, center};
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeApplicationCatalog catalog;
    FakeImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    FakeAlerts alerts;
    ClipboardDatabase database{folders.applicationSupport + QStringLiteral("/clipboard.db")};
    std::unique_ptr<ClipboardManager> manager;
    double age = 0;
};

/// The panel's window, on a ground like a desktop's.
struct Panel {
    Panel(QWidget *content, const char *title, const QSize &size) : view(content) {
        window.setAttribute(Qt::WA_TranslucentBackground);
        window.setWindowTitle(QString::fromUtf8(title));
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(view);
        window.resize(size);
    }
    void show() {
        window.show();
        window.activateWindow();
        QCoreApplication::processEvents();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    void type(const QString &text) { QTest::keyClicks(field(), text); }
    QLineEdit *field() { return window.findChild<look::SearchField *>()->lineEdit(); }
    look::VirtualList *list() { return window.findChild<look::VirtualList *>(); }

    QWidget window;
    QWidget *view;
};

void write(QWidget &window, const QString &path, bool isDark) {
    const QPixmap shown = window.grab();
    QPixmap image(shown.size() + QSize(80, 80));
    image.setDevicePixelRatio(shown.devicePixelRatio());
    image.fill(isDark ? QColor(0x12, 0x14, 0x1A) : QColor(0xD8, 0xDE, 0xE8));
    QPainter painter(&image);
    painter.drawPixmap(QPointF(40, 40) / shown.devicePixelRatio(), shown);
    painter.end();
    image.save(path);
}

ClipboardSearchView *searchView(Desk &desk) {
    return new ClipboardSearchView(
        {*desk.manager, desk.alerts, desk.center, desk.time}, [] {}, [](const ClipboardItem &) {});
}
ContentView *classicView(Desk &desk) {
    return new ContentView(
        *desk.manager, desk.center, [] {}, [](const ClipboardItem &) {});
}
void openSearch(Desk &desk) {
    desk.center.post(QStringLiteral("clipboardSearchPanelOpened"));
    desk.time.runPending();
}

void paintSearch(Desk &desk, const QString &folder, bool isDark) {
    const QString end = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
    Panel panel(searchView(desk), "Clipboard Search", {680, 500});
    panel.show();
    openSearch(desk);
    write(panel.window, folder + QStringLiteral("/search") + end, isDark);
    const QRectF row = panel.list()->rowRect(4);
    QTest::mouseMove(panel.list(), look::rowActionRects(row, 3)[1].center().toPoint());
    write(panel.window, folder + QStringLiteral("/search-hover") + end, isDark);
    QTest::mouseMove(panel.list(), QPoint(1, 1));
    panel.type(QStringLiteral("message"));
    write(panel.window, folder + QStringLiteral("/search-query") + end, isDark);
    panel.type(QStringLiteral("x"));
    write(panel.window, folder + QStringLiteral("/search-nothing") + end, isDark);
    openSearch(desk);
    panel.press(Qt::Key_Right);
    write(panel.window, folder + QStringLiteral("/search-saved") + end, isDark);
    openSearch(desk);
    for (int i = 0; i < 7; ++i)
        panel.press(Qt::Key_Down);
    desk.time.advance(2s);
    write(panel.window, folder + QStringLiteral("/search-scrolled") + end, isDark);
}

void paintClassic(Desk &desk, const QString &folder, bool isDark) {
    const QString end = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
    Panel panel(classicView(desk), "Classic Clipboard", {320, 450});
    panel.show();
    desk.center.post(QStringLiteral("floatingPanelOpened"));
    write(panel.window, folder + QStringLiteral("/classic") + end, isDark);
    panel.list()->scrollTo(300, false);
    QTest::mouseMove(panel.list(), panel.list()->rect().center());
    write(panel.window, folder + QStringLiteral("/classic-scrolled") + end, isDark);
    panel.type(QStringLiteral("nothing of this"));
    write(panel.window, folder + QStringLiteral("/classic-nothing") + end, isDark);
}

void paintRecordings(const QString &folder, bool isDark) {
    const QString end = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
    Desk desk;
    desk.start();
    desk.addRecordings();
    Panel search(searchView(desk), "Clipboard Search", {680, 500});
    search.show();
    openSearch(desk);
    write(search.window, folder + QStringLiteral("/search-recordings") + end, isDark);
    Panel classic(classicView(desk), "Classic Clipboard", {320, 450});
    classic.show();
    desk.center.post(QStringLiteral("floatingPanelOpened"));
    write(classic.window, folder + QStringLiteral("/classic-recordings") + end, isDark);
}

void paintAlert(const QString &folder, bool isDark) {
    look::AlertWindow alert({QStringLiteral("Add to My Saved"),
                             QStringLiteral("Create a custom clipboard item you use often."),
                             {QStringLiteral("Save"), QStringLiteral("Cancel")}},
                            {360, 120});
    alert.show();
    alert.activateWindow();
    QCoreApplication::processEvents();
    alert.textEdit()->insertPlainText(QStringLiteral("Kind regards,\nMira"));
    write(alert, folder + (isDark ? QStringLiteral("/alert-dark.png") : QStringLiteral("/alert-light.png")), isDark);
}

void measure() {
    Desk desk;
    desk.addMany(1000);
    desk.start();
    QElapsedTimer clock;
    const auto tell = [&clock](const char *what, int times = 1) {
        std::printf("%-44s %7.2f ms\n", what, double(clock.nsecsElapsed()) / 1e6 / times);
    };
    clock.start();
    Panel panel(searchView(desk), "Clipboard Search", {680, 500});
    tell("search panel, built");
    clock.restart();
    panel.show();
    openSearch(desk);
    panel.window.grab();
    tell("search panel, first show and paint");
    constexpr int times = 20;
    clock.restart();
    for (int i = 0; i < times; ++i) {
        panel.window.hide();
        panel.show();
        openSearch(desk);
        panel.window.repaint();
    }
    tell("search panel, later show and paint", times);
    clock.restart();
    for (int i = 0; i < times; ++i) {
        panel.type(i % 2 == 0 ? QStringLiteral("m") : QStringLiteral("e"));
        panel.window.repaint();
        if (i % 2 == 1)
            panel.field()->clear();
    }
    tell("key to repaint, 1000 rows", times);
    openSearch(desk);
    clock.restart();
    for (int i = 0; i < times; ++i) {
        panel.press(Qt::Key_Down);
        panel.window.repaint();
    }
    tell("arrow to repaint, 1000 rows", times);
    clock.restart();
    Panel classic(classicView(desk), "Classic Clipboard", {320, 450});
    classic.show();
    desk.center.post(QStringLiteral("floatingPanelOpened"));
    classic.window.repaint();
    tell("classic panel, built, shown and painted");
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = application.arguments().value(1, QStringLiteral("."));
    QDir().mkpath(folder);
    for (const bool isDark : {false, true}) {
        Desk desk;
        desk.addOfEachKind();
        desk.addMany(30);
        desk.start();
        look::Look look(desk.time);
        look.setCompositing(true);
        QPalette palette;
        palette.setColor(QPalette::Window, isDark ? QColor(0x20, 0x20, 0x20) : Qt::white);
        palette.setColor(QPalette::WindowText, isDark ? Qt::white : Qt::black);
        QApplication::setPalette(palette);
        paintSearch(desk, folder, isDark);
        paintClassic(desk, folder, isDark);
        paintAlert(folder, isDark);
        paintRecordings(folder, isDark);
        Desk bare;
        bare.start();
        Panel panel(searchView(bare), "Clipboard Search", {680, 500});
        panel.show();
        write(panel.window,
              folder + (isDark ? QStringLiteral("/search-empty-dark.png") : QStringLiteral("/search-empty-light.png")),
              isDark);
    }
    measure();
    return 0;
}
