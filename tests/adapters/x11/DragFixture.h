#pragma once

#include "adapters/x11/DropView.h"
#include "adapters/x11/ForeignDrag.h"

#include <QDrag>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace tavrine {

using testing::ForeignDrag;
using testing::movePointer;
using testing::waitUntil;

inline const QPoint atEdge(640, 50);
inline DraggedItem file(const QString &path) {
    DraggedItem item;
    item.url = QUrl::fromLocalFile(path);
    item.draggingImage = QPixmap(50, 50);
    item.draggingImage.fill(Qt::red);
    item.hotSpot = QPoint(25, 25);
    return item;
}

inline constexpr auto files = "file:///tmp/one%20file.txt\nfile:///tmp/%D7%90.png\n";

/// A window at the edge that takes drops and has something to drag out, and a foreign program beside it.
class X11DragPrograms : public ::testing::Test {
protected:
    X11DragPrograms() {
        window->setContentView(view);
        const QRectF screen = screens.screens().first().frame;
        window->setFrame({screen.center().x() - 150, maxY(screen) - 100, 300, 100}, {});
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
        (void)waitUntil([] { return false; }, std::chrono::milliseconds(60)); // what it answered has come there
    }
    void release() {
        desktop.keyboard.release(1);
        isPressed = false;
    }
    /// Out of this window to a place of another, by a hand of its own: the drag's loop runs on this thread. With
    /// `during` in between, over the place; the button is released once the place would do what is `wanted`.
    void dragOut(const DraggedItem &item, QPoint to, Qt::DropAction wanted = Qt::CopyAction,
                 const std::function<void(testing::TestKeyboard &)> &during = {}) {
        view->item = item;
        view->done.reset();
        std::atomic<bool> isOver = false;
        std::atomic<bool> isWanted = wanted == Qt::IgnoreAction;
        QList<QPointer<QDrag>> known;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, qApp, [&] {
            for (QDrag *drag : qApp->findChildren<QDrag *>(QString(), Qt::FindDirectChildrenOnly)) {
                if (known.contains(drag))
                    continue;
                known.append(drag);
                QObject::connect(drag, &QDrag::actionChanged, &look,
                                 [&, wanted](Qt::DropAction action) { isWanted = isWanted || action == wanted; });
            }
        });
        look.start(2);
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
            for (int i = 0; i < 4 || (!isWanted && i < 200); ++i) { // a hand is never quite still
                fingers.movePointer(to.x() + i % 2, to.y());
                pause(50);
            }
            fingers.release(1);
            isOver = true;
        });
        (void)waitUntil([&] { return isOver && (view.isNull() || view->done); }, std::chrono::seconds(20));
        hand.join();
    }

    QTemporaryDir folder;
    testing::Desktop desktop;
    X11Dragging dragging;
    X11ApplicationActivator activator;
    X11EdgeWindows windows{[this]() -> X11ApplicationActivator & { return activator; }};
    X11Screens screens;
    std::unique_ptr<EdgeWindow> window =
        windows.makeEdgeWindow({.title = QStringLiteral("drops"), .largestSize = {550, 224}, .outline = {}});
    QPointer<DropView> view = new DropView(dragging);
    bool isPressed = false;
    int nudge = 0;
};

} // namespace tavrine
