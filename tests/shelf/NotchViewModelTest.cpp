// What the shelf holds, and what follows from its flags.
#include "ports/Dragging.h"
#include "shelf/ShelfDrop.h"
#include "shelf/ShelfTest.h"

#include <QSignalSpy>

namespace tavrine {
namespace {

class ShelfModel : public ShelfTest {
protected:
    [[nodiscard]] QStringList names() const {
        QStringList names;
        for (const ShelfItem &item : model.items())
            names << displayName(item);
        return names;
    }
    void addFileAt(const char *path) {
        files.insert(text(path));
        model.addFile(file(path));
        time.runPending();
    }

    NotchViewModel model{modelPorts()};
};

// Items.

TEST_F(ShelfModel, aFileIsHeldWithItsAddressAndItsIcon) {
    model.addFile(file("/home/a/Report.pdf"));
    time.runPending();
    ASSERT_EQ(model.items().size(), 1);
    const ShelfItem &item = model.items().first();
    EXPECT_EQ(item.type, ItemType::file);
    EXPECT_EQ(item.url, file("/home/a/Report.pdf"));
    EXPECT_FALSE(item.text);
    EXPECT_FALSE(item.id.isNull());
    EXPECT_EQ(item.image, icons.iconForFile(text("/home/a/Report.pdf"), NotchViewModel::iconPixels));
}

TEST_F(ShelfModel, aTextIsHeldWithoutAPicture) {
    model.addText(text("Hello"));
    time.runPending();
    const ShelfItem &item = model.items().first();
    EXPECT_EQ(item.type, ItemType::text);
    EXPECT_EQ(item.text, text("Hello"));
    EXPECT_FALSE(item.url);
    EXPECT_FALSE(item.image);
}

TEST_F(ShelfModel, aPictureIsHeldAsItIs) {
    model.addImage(picture(3, 2));
    time.runPending();
    const ShelfItem &item = model.items().first();
    EXPECT_EQ(item.type, ItemType::image);
    EXPECT_EQ(item.image, picture(3, 2));
    EXPECT_FALSE(item.url);
    EXPECT_FALSE(item.text);
}

TEST_F(ShelfModel, theListChangesInATurnOfItsOwnAndTheSoundComesAtOnce) {
    const QSignalSpy changes(&model, &NotchViewModel::itemsChanged);
    model.addText(text("Hello"));
    EXPECT_TRUE(model.items().isEmpty());
    EXPECT_THAT(sounds.played(), ElementsAre(text("Pop")));
    time.runPending();
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(ShelfModel, theSameFileTwiceIsTwoItemsWithTwoSounds) {
    model.addFile(file("/a.txt"));
    model.addFile(file("/a.txt"));
    time.runPending();
    ASSERT_EQ(model.items().size(), 2);
    EXPECT_NE(model.items().first().id, model.items().last().id);
    EXPECT_EQ(sounds.played().size(), 2);
}

TEST_F(ShelfModel, theOldestItemComesFirst) {
    model.addText(text("one"));
    model.addText(text("two"));
    time.runPending();
    model.addText(text("three"));
    time.runPending();
    EXPECT_THAT(names(), ElementsAre(text("one"), text("two"), text("three")));
}

TEST_F(ShelfModel, anItemIsRemovedByItsIdentityAndAnUnknownOneChangesNothing) {
    model.addText(text("same"));
    model.addText(text("same"));
    time.runPending();
    const QUuid second = model.items().last().id;
    const QSignalSpy changes(&model, &NotchViewModel::itemsChanged);
    model.removeItem(QUuid::createUuid());
    EXPECT_EQ(changes.size(), 0);
    model.removeItem(second);
    EXPECT_EQ(changes.size(), 1);
    ASSERT_EQ(model.items().size(), 1);
    EXPECT_NE(model.items().first().id, second);
}

TEST_F(ShelfModel, clearingLeavesNothing) {
    model.addText(text("one"));
    model.addFile(file("/a.txt"));
    time.runPending();
    model.clearAll();
    EXPECT_TRUE(model.items().isEmpty());
}

// Names.

TEST_F(ShelfModel, aFileIsNamedByTheLastPartOfItsPath) {
    EXPECT_EQ(displayName({.id = {}, .url = file("/home/a/My Report.pdf"), .text = {}, .image = {}}),
              text("My Report.pdf"));
    EXPECT_EQ(displayName({.id = {}, .url = file("/home/a/Folder/"), .text = {}, .image = {}}), text("Folder"));
    EXPECT_EQ(displayName({.id = {}, .url = file("/"), .text = {}, .image = {}}), text("/"));
}

TEST_F(ShelfModel, aTextOf25CharactersShowsItsFirst20AsTheName) {
    const auto nameOf = [](const char *utf8) {
        return displayName({.id = {}, .url = {}, .text = text(utf8), .image = {}, .type = ItemType::text});
    };
    EXPECT_EQ(nameOf("1234567890123456789012345"), text("12345678901234567890"));
    EXPECT_EQ(nameOf("12345678901234567890"), text("12345678901234567890"));
    EXPECT_EQ(nameOf("1234567890123456789"), text("1234567890123456789"));
    EXPECT_EQ(nameOf("👩‍👩‍👧345678901234567890123"), text("👩‍👩‍👧3456789012345678901"));
}

TEST_F(ShelfModel, ofACharacterWithoutAnEndNoMoreThanABitIsLookedAt) {
    const QString endless = u'a' + QString(1'000'000, QChar(0x0301));
    EXPECT_EQ(displayName({.id = {}, .url = {}, .text = endless, .image = {}, .type = ItemType::text}).size(), 320);
}

TEST_F(ShelfModel, aPictureIsNamedImage) {
    EXPECT_EQ(displayName({.id = {}, .url = {}, .text = {}, .image = picture(1, 1), .type = ItemType::image}),
              text("Image"));
}

// The flags.

TEST_F(ShelfModel, anEmptyShelfNeverShowsItemsHoweverLongThePointerStays) {
    model.setHovering(true);
    time.advance(1min);
    EXPECT_FALSE(model.showsItems());
    EXPECT_FALSE(model.shouldExpand());
}

TEST_F(ShelfModel, aFileDraggedOverTheScreenShowsTheHintOfAnEmptyShelf) {
    model.setFileDragActive(true);
    EXPECT_TRUE(model.showsDropHint());
    EXPECT_TRUE(model.shouldExpand());
    model.setDragTargetActive(true);
    EXPECT_FALSE(model.showsDropHint());
}

TEST_F(ShelfModel, aFileDraggedOverTheScreenOpensAFullShelfWithNeitherHintNorItems) {
    addFileAt("/a.txt");
    model.setHovering(true);
    model.setFileDragActive(true);
    EXPECT_TRUE(model.shouldExpand());
    EXPECT_FALSE(model.showsDropHint());
    EXPECT_FALSE(model.showsItems());
}

/// Every state of the four flags, with items and without, against the definitions.
TEST_F(ShelfModel, whatIsShownFollowsFromTheFlagsInEveryState) {
    for (int state = 0; state < 32; ++state) {
        const bool target = state & 1;
        const bool fileDrag = state & 2;
        const bool itemDrag = state & 4;
        const bool hovering = state & 8;
        const bool full = state & 16;
        if (full && model.items().isEmpty())
            addFileAt("/a.txt");
        model.setDragTargetActive(target);
        model.setFileDragActive(fileDrag);
        model.setShelfItemDragActive(itemDrag);
        model.setHovering(hovering);
        EXPECT_EQ(model.isInteractive(), hovering || itemDrag) << state;
        EXPECT_EQ(model.shouldExpand(), fileDrag || target || ((hovering || itemDrag) && full)) << state;
        EXPECT_EQ(model.showsItems(), (hovering || itemDrag) && full && !fileDrag && !target) << state;
        EXPECT_EQ(model.showsDropHint(), fileDrag && !full && !target) << state;
    }
}

TEST_F(ShelfModel, aFlagIsToldWhenItChangesAndNotOtherwise) {
    const QSignalSpy target(&model, &NotchViewModel::isDragTargetActiveChanged);
    const QSignalSpy fileDrag(&model, &NotchViewModel::isFileDragActiveChanged);
    const QSignalSpy itemDrag(&model, &NotchViewModel::isShelfItemDragActiveChanged);
    const QSignalSpy hovering(&model, &NotchViewModel::isHoveringChanged);
    for (const bool value : {false, true, true, false}) {
        model.setDragTargetActive(value);
        model.setFileDragActive(value);
        model.setShelfItemDragActive(value);
        model.setHovering(value);
    }
    for (const QSignalSpy *spy : {&target, &fileDrag, &itemDrag, &hovering})
        EXPECT_EQ(*spy, (QList<QList<QVariant>>{{true}, {false}}));
}

// After a move.

TEST_F(ShelfModel, aMoveToASlowDestinationThatFinishesAfterTwoSecondsRemovesTheItem) {
    addFileAt("/a.txt");
    model.removeAfterMove(model.items().first(), file("/a.txt"), 12);
    time.advance(2s);
    EXPECT_EQ(model.items().size(), 1);
    files.clear();
    time.advance(200ms);
    EXPECT_TRUE(model.items().isEmpty());
    EXPECT_EQ(output(), "");
}

TEST_F(ShelfModel, aMoveThatTakesThreeSecondsLeavesTheItem) {
    addFileAt("/a.txt");
    model.removeAfterMove(model.items().first(), file("/a.txt"), 12);
    time.advance(3s);
    files.clear();
    time.advance(10s);
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_EQ(output(),
              "[NotchShelf] Move was requested, but the original file still exists. Keeping item in shelf.\n");
}

TEST_F(ShelfModel, thereAreThirteenChecksInTwoSecondsAndSixTenths) {
    addFileAt("/a.txt");
    model.removeAfterMove(model.items().first(), file("/a.txt"), 12);
    time.advance(199ms);
    EXPECT_EQ(checks, 0);
    time.advance(1ms);
    EXPECT_EQ(checks, 1);
    time.advance(2399ms);
    EXPECT_EQ(checks, 12);
    EXPECT_EQ(output(), "");
    time.advance(1ms);
    EXPECT_EQ(checks, 13);
    EXPECT_THAT(output(), HasSubstr("Keeping item in shelf."));
    time.advance(1min);
    EXPECT_EQ(checks, 13);
}

TEST_F(ShelfModel, aMoveLetsGoOfTheItemThatWasDraggedAndOfNoOtherOfTheSameFile) {
    addFileAt("/a.txt");
    addFileAt("/a.txt");
    const QUuid other = model.items().last().id;
    model.removeAfterMove(model.items().first(), file("/a.txt"), 12);
    files.clear();
    time.advance(200ms);
    ASSERT_EQ(model.items().size(), 1);
    EXPECT_EQ(model.items().first().id, other);
}

TEST_F(ShelfModel, anItemThatWasRemovedDuringTheChecksIsGoneWithoutTrouble) {
    addFileAt("/a.txt");
    model.removeAfterMove(model.items().first(), file("/a.txt"), 12);
    model.clearAll();
    files.clear();
    time.advance(3s);
    EXPECT_TRUE(model.items().isEmpty());
}

TEST_F(ShelfTest, aModelThatGoesDuringTheChecksEndsThem) {
    std::function<void(bool)> answer;
    auto ports = modelPorts();
    ports.fileExists = [&](const QString &, const std::function<void(bool)> &later) { answer = later; };
    auto model = std::make_unique<NotchViewModel>(ports);
    model->addFile(file("/a.txt"));
    time.runPending();
    model->removeAfterMove(model->items().first(), file("/a.txt"), 12);
    time.advance(200ms);
    ASSERT_TRUE(answer);
    model.reset();
    answer(false);
}

// Many.

TEST_F(ShelfModel, tenThousandFilesInOneDropAreOneChange) {
    const QSignalSpy changes(&model, &NotchViewModel::itemsChanged);
    DroppedContent content;
    for (int index = 0; index < 10'000; ++index)
        content.fileUrls << QUrl::fromLocalFile(QStringLiteral("/many/%1.txt").arg(index));
    EXPECT_TRUE(performDragOperation(&model, content));
    time.runPending();
    EXPECT_EQ(model.items().size(), 10'000);
    EXPECT_EQ(changes.size(), 1);
    EXPECT_EQ(displayName(model.items().last()), text("9999.txt"));
    EXPECT_THAT(output(), HasSubstr("[NotchShelf] Found 10000 file URLs\n"));
}

// Drops.

class ShelfDrop : public ShelfModel {
protected:
    [[nodiscard]] bool drop(const DroppedContent &content) {
        const bool answer = performDragOperation(&model, content);
        time.runPending();
        return answer;
    }
};

TEST_F(ShelfDrop, filesComeBeforeAllElse) {
    EXPECT_TRUE(drop({.types = {text("text/uri-list"), text("text/plain")},
                      .fileUrls = {file("/a.txt"), file("/b.txt"), file("/c.txt")},
                      .fileUrlString = text("file:///d.txt"),
                      .images = {picture(1, 1)},
                      .string = text("words")}));
    EXPECT_THAT(names(), ElementsAre(text("a.txt"), text("b.txt"), text("c.txt")));
    EXPECT_EQ(sounds.played().size(), 3);
    EXPECT_EQ(output(), "[NotchShelf] Performing drag operation!\n"
                        "[NotchShelf] Pasteboard types: [text/uri-list, text/plain]\n"
                        "[NotchShelf] Found 3 file URLs\n");
}

TEST_F(ShelfDrop, aFileNamedInATextComesNext) {
    EXPECT_TRUE(drop({.types = {},
                      .fileUrls = {},
                      .fileUrlString = text("file:///d.txt\r\n"),
                      .images = {picture(1, 1)},
                      .string = text("words")}));
    EXPECT_THAT(names(), ElementsAre(text("d.txt")));
    EXPECT_EQ(model.items().first().type, ItemType::file);
}

TEST_F(ShelfDrop, aTextThatNamesNoFileIsPassedOver) {
    EXPECT_TRUE(drop(
        {.types = {}, .fileUrls = {}, .fileUrlString = text("not an address"), .images = {}, .string = text("words")}));
    EXPECT_EQ(model.items().first().type, ItemType::text);
}

TEST_F(ShelfDrop, picturesComeBeforeText) {
    EXPECT_TRUE(drop({.types = {},
                      .fileUrls = {},
                      .fileUrlString = {},
                      .images = {picture(1, 1), picture(2, 2)},
                      .string = text("words")}));
    EXPECT_THAT(names(), ElementsAre(text("Image"), text("Image")));
    EXPECT_EQ(model.items().last().image, picture(2, 2));
    EXPECT_EQ(sounds.played().size(), 2);
}

TEST_F(ShelfDrop, textComesLast) {
    EXPECT_TRUE(drop({.types = {}, .fileUrls = {}, .fileUrlString = {}, .images = {}, .string = text("words")}));
    EXPECT_THAT(names(), ElementsAre(text("words")));
}

TEST_F(ShelfDrop, ofNothingThatCanBeKeptTheAnswerIsNo) {
    EXPECT_FALSE(drop({}));
    EXPECT_FALSE(drop({.types = {}, .fileUrls = {}, .fileUrlString = {}, .images = {}, .string = text("")}));
    EXPECT_TRUE(model.items().isEmpty());
    EXPECT_THAT(sounds.played(), IsEmpty());
}

TEST_F(ShelfDrop, withoutAModelTheAnswerIsNo) {
    EXPECT_FALSE(performDragOperation(
        nullptr, {.types = {}, .fileUrls = {file("/a.txt")}, .fileUrlString = {}, .images = {}, .string = {}}));
    EXPECT_EQ(output(), "[NotchShelf] Performing drag operation!\n[NotchShelf] Error: viewModel is nil\n");
}

} // namespace
} // namespace tavrine
