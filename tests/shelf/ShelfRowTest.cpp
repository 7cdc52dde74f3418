#include "shelf/ShelfPictures.h"
#include "shelf/ShelfViewTest.h"

#include <QAccessible>
#include <QWheelEvent>

namespace tavrine {
namespace {

class ShelfRow : public ShelfViewTest {
protected:
    void wheel(int angle, QPoint pixels = {}) {
        QWheelEvent event({20, 20}, row().mapToGlobal(QPointF(20, 20)), pixels, {0, angle}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&row(), &event);
        rest();
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&row(), key, modifiers);
        rest();
    }
    [[nodiscard]] QStringList names() const {
        QStringList all;
        for (const Tile *shown : tiles())
            all << displayName(shown->item());
        return all;
    }
};

TEST_F(ShelfRow, aFewItemsStandInTheMiddleInSlotsOfEightyFivePoints) {
    addFiles(2);
    EXPECT_EQ(tile(1).x() - tile(0).x(), 85);
    EXPECT_NEAR(tile(0).x() + 85, row().width() / 2, 1);
    EXPECT_EQ(row().maximumOffset(), 0);
}

TEST_F(ShelfRow, sixItemsShowWholeAndTheRestByTheWheel) {
    addFiles(9);
    EXPECT_EQ(row().width(), 6 * 85);
    wheel(120 * 100);
    EXPECT_EQ(row().offset(), 0);
    EXPECT_EQ(names().size(), 6);
    EXPECT_EQ(names().first(), text("file 0.txt"));
    wheel(-120);
    EXPECT_EQ(row().offset(), 85);
    EXPECT_EQ(names().first(), text("file 1.txt"));
    wheel(-120 * 100);
    EXPECT_EQ(row().offset(), 3 * 85);
    EXPECT_EQ(names().last(), text("file 8.txt"));
    wheel(0, {0, 10}); // a touchpad's pixels
    EXPECT_EQ(row().offset(), 3 * 85 - 10);
    EXPECT_EQ(names().size(), 7); // two of them in part
}

TEST_F(ShelfRow, tenThousandItemsMakeNoMoreTilesThanShow) {
    addFiles(10'000);
    wheel(120 * 10'000);
    wheel(-120 * 37 + 13);
    EXPECT_LE(row().findChildren<Tile *>().size(), 8);
    key(Qt::Key_End);
    EXPECT_EQ(names().last(), text("file 9999.txt"));
    EXPECT_LE(row().findChildren<Tile *>().size(), 8);
}

TEST_F(ShelfRow, whatWasAddedIsInSight) {
    addFiles(9);
    key(Qt::Key_Home);
    addFiles(1);
    EXPECT_EQ(names().size(), 6);
    EXPECT_EQ(model.items().last().id, tiles().back()->item().id);
}

TEST_F(ShelfRow, aNewTileGrowsAndItsNeighboursGoToTheirPlacesWithTheItemsSpring) {
    addFiles(1);
    const int before = tile(0).x();
    model.addText(text("new"));
    time.runPending();
    EXPECT_EQ(tile(0).x(), before); // it has not left yet
    bool isBeyond = false;
    for (int i = 0; i < 60; ++i) {
        time.advance(16ms);
        isBeyond = isBeyond || tile(0).x() < row().slot(0).left() - 0.5;
    }
    EXPECT_TRUE(isBeyond); // the spring is not a critical one
    rest();
    EXPECT_EQ(tile(0).x(), row().slot(0).left());
    EXPECT_FALSE(look::Look::current()->clock().isTicking());
}

TEST_F(ShelfRow, removingOneClosesTheGapAndKeepsTheOtherTiles) {
    addFiles(3);
    const Tile *last = &tile(2);
    model.removeItem(model.items().at(1).id);
    rest();
    EXPECT_EQ(tiles().size(), 2U);
    EXPECT_EQ(&tile(1), last);
    EXPECT_EQ(tile(1).x() - tile(0).x(), 85);
}

TEST_F(ShelfRow, keysChooseATileOpenItRemoveItAndCopyIt) {
    addFiles(9);
    files.insert(text("/home/ada/file 1.txt"));
    row().setFocus(Qt::TabFocusReason);
    key(Qt::Key_Home);
    EXPECT_EQ(row().current(), 0);
    key(Qt::Key_Left);
    EXPECT_EQ(row().current(), 0);
    key(Qt::Key_Right);
    key(Qt::Key_Down);
    EXPECT_EQ(row().current(), 2);
    key(Qt::Key_Up);
    EXPECT_EQ(row().current(), 1);
    key(Qt::Key_Return);
    EXPECT_THAT(urls.opened(), ElementsAre(file("/home/ada/file 1.txt")));
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_THAT(pasteboard.writtenFileUrls(), ElementsAre(file("/home/ada/file 1.txt")));
    key(Qt::Key_Delete);
    EXPECT_EQ(displayName(model.items().at(1)), text("file 2.txt"));
    EXPECT_EQ(row().current(), 1);
    key(Qt::Key_PageDown);
    EXPECT_EQ(row().current(), 7);
    EXPECT_EQ(row().offset(), 2 * 85);
    key(Qt::Key_PageUp);
    EXPECT_EQ(row().current(), 1);
    key(Qt::Key_End);
    EXPECT_EQ(row().current(), 7);
    key(Qt::Key_Delete);
    EXPECT_EQ(row().current(), 6); // the last of those that are left
    key(Qt::Key_C);                // a letter alone
    EXPECT_EQ(pasteboard.clearCount(), 1);
}

TEST_F(ShelfRow, textsAndImagesAreCopiedAsTheyAre) {
    model.addText(text("some words"));
    model.addImage(picture(3, 4));
    addFiles(0);
    row().setFocus(Qt::TabFocusReason);
    key(Qt::Key_Home);
    key(Qt::Key_C, Qt::MetaModifier);
    EXPECT_EQ(pasteboard.string(), text("some words"));
    key(Qt::Key_End);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(pasteboard.image()->size(), QSize(3, 4));
    key(Qt::Key_Return);
    EXPECT_THAT(urls.opened(), IsEmpty());
}

TEST_F(ShelfRow, keysOnAnEmptyRowDoNothing) {
    row().setFocus(Qt::TabFocusReason);
    for (const Qt::Key each : {Qt::Key_Left, Qt::Key_End, Qt::Key_Return, Qt::Key_Delete, Qt::Key_PageDown})
        key(each);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(row().current(), -1);
    EXPECT_EQ(pasteboard.clearCount(), 0);
}

TEST_F(ShelfRow, theTileThatHasTheKeyboardIsRinged) {
    addFiles(2);
    row().clearFocus();
    const QImage without = view.grab().toImage();
    row().setFocus(Qt::TabFocusReason);
    EXPECT_NE(view.grab().toImage(), without);
    row().clearFocus();
    EXPECT_EQ(view.grab().toImage(), without);
}

/// A ring is of the accent's colour; a tile of a file without a picture has no colour elsewhere.
TEST_F(ShelfRow, theRingIsOnAllSidesOfTheTileThatHasTheKeyboardAndOfNoOther) {
    model.addText(text("one"));
    model.addText(text("two"));
    addFiles(0);
    const auto ringed = [this](size_t index) { // how many of its sides
        const QImage shown = view.grab().toImage();
        const QPoint corner = tile(index).mapTo(&view, QPoint(0, 0));
        const auto isColoured = [&](QPoint from, QPoint step) {
            for (int i = 0; i < 12; ++i)
                if (shown.pixelColor(corner + from + step * i).saturation() > 60)
                    return true;
            return false;
        };
        constexpr int w = Tile::slotWidth - 1;
        constexpr int h = Tile::tileHeight - 1;
        return isColoured({0, h / 2}, {1, 0}) + isColoured({w, h / 2}, {-1, 0}) + isColoured({w / 2, 0}, {0, 1}) +
               isColoured({w / 2, h}, {0, -1});
    };
    row().clearFocus();
    EXPECT_EQ(ringed(0) + ringed(1), 0);
    row().setFocus(Qt::TabFocusReason);
    key(Qt::Key_Home);
    EXPECT_EQ(ringed(0), 4);
    EXPECT_EQ(ringed(1), 0);
    key(Qt::Key_Right);
    EXPECT_EQ(ringed(0), 0);
    EXPECT_EQ(ringed(1), 4);
    hover(tile(0), middle); // the pointer lights and rings nothing
    EXPECT_EQ(ringed(0), 0);
    row().clearFocus();
    EXPECT_EQ(ringed(0) + ringed(1), 0);
}

TEST_F(ShelfRow, aScreenReaderIsToldAListOfAllItems) {
    model.addText(text("Some words that go on and on"));
    model.addImage(picture(3, 4));
    addFiles(100);
    QAccessibleInterface *list = QAccessible::queryAccessibleInterface(&row());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->text(QAccessible::Name), text("Shelf"));
    ASSERT_EQ(list->childCount(), 102);
    const auto said = [&](int index) {
        const QAccessibleInterface *item = list->child(index);
        EXPECT_EQ(item->role(), QAccessible::ListItem);
        return item->text(QAccessible::Name) + text(", ") + item->text(QAccessible::Description);
    };
    EXPECT_EQ(said(0), text("Some words that go on and on, text"));
    EXPECT_EQ(said(1), text("Image, image"));
    EXPECT_EQ(said(2), text("file 0.txt, file"));
    EXPECT_EQ(list->child(102), nullptr);
    EXPECT_EQ(list->indexOfChild(list->child(5)), 5);
    EXPECT_TRUE(list->child(5)->state().offscreen);
    EXPECT_FALSE(list->child(101)->state().offscreen);
    row().setFocus(Qt::TabFocusReason);
    row().setCurrent(7);
    ASSERT_NE(list->focusChild(), nullptr);
    EXPECT_EQ(list->indexOfChild(list->focusChild()), 7);
    EXPECT_TRUE(list->child(7)->state().focused);
}

TEST_F(ShelfRow, whatAScreenReaderDoesHappensInALaterTurn) {
    model.addText(text("words"));
    addFiles(1);
    files.insert(text("/home/ada/file 0.txt"));
    QAccessibleInterface *list = QAccessible::queryAccessibleInterface(&row());
    const auto act = [&](int index, const QString &name) {
        QAccessibleActionInterface *actions = list->child(index)->actionInterface();
        EXPECT_THAT(actions->actionNames(), testing::Contains(name));
        actions->doAction(name);
    };
    act(1, QAccessibleActionInterface::pressAction());
    EXPECT_THAT(urls.opened(), IsEmpty());
    QCoreApplication::processEvents();
    EXPECT_EQ(urls.opened().size(), 1);
    act(1, text("Copy"));
    QCoreApplication::processEvents();
    EXPECT_EQ(pasteboard.writtenFileUrls().size(), 1);
    EXPECT_FALSE(list->child(0)->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
    act(0, text("Remove"));
    QCoreApplication::processEvents();
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_FALSE(list->child(0)->text(QAccessible::Name).isEmpty());
    model.clearAll();
    EXPECT_EQ(list->childCount(), 0);
}

// What tiles show.

TEST_F(ShelfRow, aPictureFileShowsWhatIsInItOnceThatWasRead) {
    const QUrl photo = file("/home/ada/photo.jpg");
    icons.setPicture(photo.toLocalFile(), picture(200, 100));
    model.addFile(photo);
    addFiles(0);
    static_cast<void>(view.grab());
    rest();
    const QImage shown = view.grab().toImage();
    EXPECT_EQ(shown.pixelColor(tile().mapTo(&view, QPoint(42, 43))), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(tile().mapTo(&view, QPoint(42, 20))), QColor(Qt::black)); // it is wide
}

TEST_F(ShelfRow, filesThatAreNoPicturesAreNotLookedInto) {
    int read = 0;
    ShelfPictures pictures(icons, [&](const QUuid &) { ++read; });
    for (const char *name : {"/a/film.mp4", "/a/photo.PNG", "/a/without", "/a/.hidden"}) {
        icons.setPicture(text(name), picture(20, 10));
        const ShelfItem item{.id = QUuid::createUuid(),
                             .url = file(name),
                             .text = {},
                             .image = picture(128, 128),
                             .type = ItemType::file};
        static_cast<void>(pictures.picture(item, 50, 1));
    }
    time.runPending();
    EXPECT_EQ(read, 3);
}

TEST_F(ShelfRow, aHugeImageIsSoonMadeSmall) {
    ShelfPictures pictures(icons, [](const QUuid &) {});
    QImage huge(12'000, 8'000, QImage::Format_RGB32);
    huge.fill(Qt::blue);
    const ShelfItem item{.id = QUuid::createUuid(), .url = {}, .text = {}, .image = huge, .type = ItemType::image};
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(pictures.picture(item, 58, 2).size(), QSize(116, 77));
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 200ms);
    EXPECT_EQ(pictures.picture(item, 58, 1).size(), QSize(58, 38)); // on another screen
}

} // namespace
} // namespace tavrine
