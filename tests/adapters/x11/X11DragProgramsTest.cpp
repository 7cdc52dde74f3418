// Drops of real programs, and drags into them.
#include "adapters/x11/DropView.h"
#include "adapters/x11/ForeignDrag.h"
#include "adapters/x11/TestPictures.h"

#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <cstdio>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::ForeignDrag;
using testing::movePointer;
using testing::waitUntil;

const QPoint atEdge(640, 50);
DraggedItem file(const char *path) {
    DraggedItem item;
    item.url = QUrl::fromLocalFile(QString::fromUtf8(path));
    item.draggingImage = QPixmap(50, 50);
    item.draggingImage.fill(Qt::red);
    item.hotSpot = QPoint(25, 25);
    return item;
}

constexpr auto files = "file:///tmp/one%20file.txt\nfile:///tmp/%D7%90.png\n";

class X11DragPrograms : public ::testing::Test {
protected:
    X11DragPrograms() {
        window->setContentView(view);
        const QRectF screen = screens.screens().first().frame;
        window->setFrame({screen.center().x() - 150, maxY(screen) - 100, 300, 100}, 0ms);
        window->setIgnoresMouseEvents(false);
        window->orderFrontRegardless();
    }
    void TearDown() override {
        if (isPressed)
            desktop.keyboard.release(1);
    }

    QString inFile(const QByteArray &bytes) {
        QFile file(folder.filePath(QStringLiteral("content")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    /// Of a toolkit, dragging `kind` out of a file.
    std::unique_ptr<ForeignDrag> program(const QString &toolkit, const char *kind, const QByteArray &bytes) {
        const QString what = QLatin1String(kind);
        const QString clients = QStringLiteral(TAVRINE_CLIENTS);
        auto started =
            toolkit == QLatin1String("qt6")
                ? std::make_unique<ForeignDrag>(QStringLiteral(TAVRINE_QT_DRAG), QStringList{what, inFile(bytes)})
            : toolkit == QLatin1String("qt5")
                ? std::make_unique<ForeignDrag>(clients + QStringLiteral("/qt-drag"), QStringList{what, inFile(bytes)})
                : std::make_unique<ForeignDrag>(clients + QStringLiteral("/gtk-drag"),
                                                QStringList{toolkit.right(1), what, inFile(bytes)});
        EXPECT_TRUE(started->says(QStringLiteral("ready")));
        EXPECT_TRUE(waitUntil([&] { return foreign() != 0; }));
        desktop.move(foreign(), QPoint(100, 400));
        EXPECT_TRUE(waitUntil([&] { return place().x() < 400 && place().y() > 350; }));
        return started;
    }
    [[nodiscard]] quint32 foreign() const {
        const auto all =
            desktop.windowsMatching([](const QString &title) { return title.endsWith(QLatin1String("-drag")); });
        return all.empty() ? 0 : all.front();
    }
    [[nodiscard]] QPoint place() const { return desktop.geometry(foreign()).center(); }

    /// Out of the foreign window and over this one's, with the button still down.
    void dragIn(ForeignDrag &source) {
        const QPoint from = place();
        desktop.keyboard.movePointer(from.x(), from.y());
        desktop.keyboard.press(1);
        isPressed = true;
        movePointer(desktop, from, from + QPoint(30, -30));
        ASSERT_TRUE(waitUntil([&] { return source.hasSaid(QStringLiteral("begin")); }));
        movePointer(desktop, from + QPoint(30, -30), atEdge);
        ASSERT_TRUE(waitUntil([&] {
            desktop.keyboard.movePointer(atEdge.x() + (nudge ^= 1), atEdge.y());
            return view->entered > 0;
        }));
        (void)waitUntil([] { return false; }, 60ms); // what it answered has come there
    }
    void release() {
        desktop.keyboard.release(1);
        isPressed = false;
    }
    /// Out of this window to a place of another, by a hand of its own: the drag's loop runs on this thread. With
    /// `during` in between, over the place.
    void dragOut(const DraggedItem &item, QPoint to, const std::function<void(testing::TestKeyboard &)> &during = {}) {
        view->item = item;
        view->done.reset();
        std::atomic<bool> isOver = false;
        std::thread hand([&] {
            testing::TestKeyboard fingers;
            const auto pause = [](int milliseconds) {
                std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            };
            fingers.movePointer(atEdge.x(), atEdge.y());
            fingers.press(1);
            for (int i = 1; i <= 20; ++i) {
                const QPoint at = atEdge + (to - atEdge) * i / 20;
                fingers.movePointer(at.x(), at.y());
                pause(i < 3 ? 60 : 15);
            }
            if (during)
                during(fingers);
            for (int i = 0; i < 6; ++i) { // a hand is never quite still
                fingers.movePointer(to.x() + i % 2, to.y());
                pause(50);
            }
            fingers.release(1);
            isOver = true;
        });
        (void)waitUntil([&] { return isOver && (view.isNull() || view->done); });
        hand.join();
    }

    QTemporaryDir folder;
    testing::Desktop desktop;
    X11Dragging dragging;
    X11ApplicationActivator activator;
    X11EdgeWindows windows{activator};
    X11Screens screens;
    std::unique_ptr<EdgeWindow> window =
        windows.makeEdgeWindow({.title = QStringLiteral("drops"), .largestSize = {550, 224}, .outline = {}});
    QPointer<DropView> view = new DropView(dragging);
    bool isPressed = false;
    int nudge = 0;
};

class EveryToolkit : public X11DragPrograms, public ::testing::WithParamInterface<const char *> {};
INSTANTIATE_TEST_SUITE_P(Drags, EveryToolkit, ::testing::Values("gtk3", "gtk4", "qt5", "qt6"),
                         [](const auto &toolkit) { return std::string(toolkit.param); });

TEST_P(EveryToolkit, itsFilesAreDroppedAndCopied) {
    const auto source = program(QLatin1String(GetParam()), "files", files);
    ASSERT_NO_FATAL_FAILURE(dragIn(*source));
    release();
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    QStringList urls;
    for (const QUrl &url : view->content->fileUrls)
        urls.append(QString::fromLatin1(url.toEncoded()));
    EXPECT_EQ(urls.join(QLatin1Char('\n')).toStdString() + "\n", files);
    EXPECT_TRUE(view->isWithinEvent);
    std::printf("%s: files in %.2f ms\n", GetParam(), view->blockedMs);
    EXPECT_TRUE(source->says(QStringLiteral("dropped copy"))) << source->said().join(QLatin1Char(' ')).toStdString();
}

/// What each toolkit gives besides; a longer run, left out of every day's.
class EveryToolkitAtLength : public EveryToolkit {};
INSTANTIATE_TEST_SUITE_P(Drags, EveryToolkitAtLength, ::testing::Values("gtk3", "gtk4", "qt5", "qt6"),
                         [](const auto &toolkit) { return std::string(toolkit.param); });

TEST_P(EveryToolkitAtLength, itsTextIsDropped) {
    const auto source = program(QLatin1String(GetParam()), "text", "caf\xC3\xA9 \xE6\xBC\xA2");
    ASSERT_NO_FATAL_FAILURE(dragIn(*source));
    release();
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    EXPECT_EQ(view->content->string, QStringLiteral("café 漢"));
    EXPECT_TRUE(source->says(QStringLiteral("dropped copy")));
}

TEST_P(EveryToolkitAtLength, itsPictureIsDropped) {
    const auto source = program(QLatin1String(GetParam()), "picture", pngOf(coloured(40, 30)));
    ASSERT_NO_FATAL_FAILURE(dragIn(*source));
    release();
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    ASSERT_EQ(view->content->images.size(), 1)
        << view->content->types.join(QLatin1Char('|')).toStdString() << ' ' << view->blockedMs;
    EXPECT_EQ(view->content->images[0].size(), QSize(40, 30));
    std::printf("%s: picture in %.2f ms\n", GetParam(), view->blockedMs);
}

/// The fifth Qt takes as the sixth does.
class EveryTarget : public X11DragPrograms, public ::testing::WithParamInterface<const char *> {};
INSTANTIATE_TEST_SUITE_P(Drags, EveryTarget, ::testing::Values("gtk3", "gtk4", "qt6"),
                         [](const auto &toolkit) { return std::string(toolkit.param); });

TEST_P(EveryTarget, filesTextAndPicturesAreDraggedIntoIt) {
    const auto target = program(QLatin1String(GetParam()), "files", files);
    const auto takes = [&](const DraggedItem &item, const char *what) {
        dragOut(item, place());
        EXPECT_TRUE(target->says(QStringLiteral("took copy ") + QString::fromUtf8(what)))
            << target->said().join(QLatin1Char('|')).toStdString();
        EXPECT_EQ(view->done, dragOperation::copy);
    };
    takes(file("/tmp/a b%.txt"), "file:///tmp/a%20b%25.txt");
    DraggedItem text;
    text.string = QStringLiteral("café 漢");
    takes(text, "café 漢");
    DraggedItem picture;
    picture.image = coloured(40, 30);
    takes(picture, "40x30");
}

TEST_F(X11DragPrograms, theOperationIsTheOneThatTheMaskSaysAtTheEndAndFollowsTheKeys) {
    const auto target = program(QStringLiteral("gtk3"), "files", files);
    view->mask = [this] {
        return desktop.keyboard.isDown(testing::key::leftControl) ? dragOperation::move : dragOperation::copy;
    };
    dragOut(file("/tmp/a"), place(), [](testing::TestKeyboard &fingers) { fingers.down(testing::key::leftControl); });
    desktop.keyboard.up(testing::key::leftControl);
    EXPECT_EQ(view->done, dragOperation::move);
    EXPECT_TRUE(target->says(QStringLiteral("took move"))) << target->said().join(QLatin1Char('|')).toStdString();
    target->forget();
    desktop.keyboard.down(testing::key::leftControl);
    dragOut(file("/tmp/b"), place(), [](testing::TestKeyboard &fingers) { fingers.up(testing::key::leftControl); });
    EXPECT_EQ(view->done, dragOperation::copy);
    EXPECT_TRUE(target->says(QStringLiteral("took copy"))) << target->said().join(QLatin1Char('|')).toStdString();
}

TEST_F(X11DragPrograms, escapeEndsADragWhoeverHasTheKeyboard) {
    const auto target = program(QStringLiteral("gtk3"), "files", files);
    dragOut(file("/tmp/a"), place(), [](testing::TestKeyboard &fingers) { fingers.tap(testing::key::escape); });
    EXPECT_EQ(view->done, dragOperation::none);
    EXPECT_FALSE(target->hasSaid(QStringLiteral("took")));
    EXPECT_TRUE(desktop.keyboard.grabKeyboard()) << "it was given back";
    desktop.keyboard.ungrabKeyboard();
}

TEST_F(X11DragPrograms, aDragGoesOnWithoutTheWindowThatItBeganIn) {
    const auto target = program(QStringLiteral("gtk3"), "files", files);
    dragOut(file("/tmp/a"), place(), [this](testing::TestKeyboard &) {
        QMetaObject::invokeMethod(
            qApp, [this] { window.reset(); }, Qt::QueuedConnection);
        std::this_thread::sleep_for(100ms);
    });
    EXPECT_TRUE(view.isNull());
    EXPECT_TRUE(target->says(QStringLiteral("took copy file:///tmp/a")));
}

TEST_F(X11DragPrograms, whatIsDroppedWhereItCameFromIsTakenAsWell) {
    dragOut(file("/tmp/a b"), atEdge + QPoint(40, 10));
    ASSERT_TRUE(view->content);
    EXPECT_THAT(view->content->fileUrls, ::testing::ElementsAre(QUrl::fromLocalFile(QStringLiteral("/tmp/a b"))));
    EXPECT_EQ(view->done, dragOperation::copy);
}

} // namespace
} // namespace tavrine
