// Drops of real programs, and drags into them.
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/DragFixture.h"

#include <cstdio>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

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
    takes(file(QStringLiteral("/tmp/a b%.txt")), "file:///tmp/a%20b%25.txt");
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
    dragOut(file(QStringLiteral("/tmp/a")), place(), Qt::MoveAction,
            [](testing::TestKeyboard &fingers) { fingers.down(testing::key::leftControl); });
    desktop.keyboard.up(testing::key::leftControl);
    EXPECT_EQ(view->done, dragOperation::move);
    EXPECT_TRUE(target->says(QStringLiteral("took move"))) << target->said().join(QLatin1Char('|')).toStdString();
    target->forget();
    desktop.keyboard.down(testing::key::leftControl);
    dragOut(file(QStringLiteral("/tmp/b")), place(), Qt::CopyAction,
            [](testing::TestKeyboard &fingers) { fingers.up(testing::key::leftControl); });
    EXPECT_EQ(view->done, dragOperation::copy);
    EXPECT_TRUE(target->says(QStringLiteral("took copy"))) << target->said().join(QLatin1Char('|')).toStdString();
}

TEST_F(X11DragPrograms, escapeEndsADragWhoeverHasTheKeyboard) {
    const auto target = program(QStringLiteral("gtk3"), "files", files);
    dragOut(file(QStringLiteral("/tmp/a")), place(), Qt::IgnoreAction,
            [](testing::TestKeyboard &fingers) { fingers.tap(testing::key::escape); });
    EXPECT_EQ(view->done, dragOperation::none);
    EXPECT_FALSE(target->hasSaid(QStringLiteral("took")));
    EXPECT_TRUE(desktop.keyboard.grabKeyboard()) << "it was given back";
    desktop.keyboard.ungrabKeyboard();
}

TEST_F(X11DragPrograms, whatNobodyTookFliesBackToItsBeginningAndIsInNobodysWay) {
    const QPoint to(400, 500);
    DraggedItem item = file(QStringLiteral("/tmp/x"));
    std::vector<QRect> places;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        for (const quint32 flying : desktop.windowsTitled(QStringLiteral("Returning"))) {
            EXPECT_TRUE(desktop.inputOf(flying).isEmpty());
            if (const QRect now = desktop.geometry(flying); !now.isEmpty()) // it may have come there meanwhile
                places.push_back(now);
        }
    });
    look.start(20);
    const auto escape = [](testing::TestKeyboard &fingers) { fingers.tap(testing::key::escape); };
    dragOut(item, to, Qt::IgnoreAction, escape);
    EXPECT_TRUE(places.empty()) << "unless it is wanted";
    item.returnTime = std::chrono::milliseconds(800);
    dragOut(item, to, Qt::IgnoreAction, escape);
    EXPECT_EQ(view->done, dragOperation::none);
    ASSERT_TRUE(
        waitUntil([&] { return places.size() > 5 && desktop.windowsTitled(QStringLiteral("Returning")).empty(); }));
    EXPECT_LT((places.front().center() - to).manhattanLength(), 100);
    EXPECT_LT((places.back().center() - atEdge).manhattanLength(), 60);
    EXPECT_EQ(places.back().size(), QSize(50, 50));
}

TEST_F(X11DragPrograms, aDragGoesOnWithoutTheWindowThatItBeganIn) {
    const auto target = program(QStringLiteral("gtk3"), "files", files);
    dragOut(file(QStringLiteral("/tmp/a")), place(), Qt::CopyAction, [this](testing::TestKeyboard &) {
        QMetaObject::invokeMethod(
            qApp, [this] { window.reset(); }, Qt::QueuedConnection);
        std::this_thread::sleep_for(100ms);
    });
    EXPECT_TRUE(view.isNull());
    EXPECT_TRUE(target->says(QStringLiteral("took copy file:///tmp/a")));
}

TEST_F(X11DragPrograms, whatIsDroppedWhereItCameFromIsTakenAsWell) {
    dragOut(file(QStringLiteral("/tmp/a b")), atEdge + QPoint(40, 10));
    ASSERT_TRUE(view->content);
    EXPECT_THAT(view->content->fileUrls, ::testing::ElementsAre(QUrl::fromLocalFile(QStringLiteral("/tmp/a b"))));
    EXPECT_EQ(view->done, dragOperation::copy);
}

} // namespace
} // namespace tavrine
