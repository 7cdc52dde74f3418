#include "base/DesktopWords.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Text.h"
#include "look/ToolTip.h"
#include "shelf/ShelfViewTest.h"
#include "support/PaintedWords.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QHelpEvent>

namespace tavrine {
namespace {

class ShelfTile : public ShelfViewTest {};

TEST_F(ShelfTile, aDragBeginsBeyondThreePoints) {
    addFiles(1);
    pull(tile(), middle, middle + QPointF(3, 0));
    EXPECT_THAT(dragging.items(), IsEmpty());
    pull(tile(), middle, middle + QPointF(2.2, 2.2)); // 3.11 points, by the straight way
    EXPECT_EQ(dragging.items().size(), 1U);
}

TEST_F(ShelfTile, aDragBeginsOnceForAPress) {
    addFiles(1);
    dragging.setDuring([&](const auto &) {
        QMouseEvent move(QEvent::MouseMove, QPointF(70, 70), QPointF(70, 70), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&tile(), &move);
    });
    pull(tile(), middle, middle + QPointF(20, 0));
    EXPECT_EQ(dragging.items().size(), 1U);
    dragging.setDuring({});
    QMouseEvent move(QEvent::MouseMove, QPointF(70, 70), QPointF(70, 70), Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&tile(), &move); // the press has had its drag
    EXPECT_EQ(dragging.items().size(), 1U);
    pull(tile(), middle, middle + QPointF(20, 0));
    EXPECT_EQ(dragging.items().size(), 2U);
}

TEST_F(ShelfTile, noOtherButtonDrags) {
    addFiles(1);
    QTest::mousePress(&tile(), Qt::RightButton, {}, middle);
    QMouseEvent move(QEvent::MouseMove, QPointF(70, 70), QPointF(70, 70), Qt::NoButton, Qt::RightButton, {});
    QCoreApplication::sendEvent(&tile(), &move);
    EXPECT_THAT(dragging.items(), IsEmpty());
}

TEST_F(ShelfTile, aFileIsDraggedAsItsAddressWithASmallPicture) {
    addFiles(1);
    pull(tile(), middle, middle + QPointF(20, 0));
    const DraggedItem &item = dragging.items().at(0);
    EXPECT_EQ(item.url, file("/home/ada/file 0.txt"));
    EXPECT_FALSE(item.string || item.image);
    EXPECT_EQ(item.draggingImage.deviceIndependentSize(), QSizeF(50, 50));
    EXPECT_EQ(dragging.source(), &tile());
}

TEST_F(ShelfTile, theDraggedPictureFillsItsFrameOneWayAndHasNoBorderTheOther) {
    model.addImage(picture(300, 100));
    addFiles(0);
    pull(tile(), middle, middle + QPointF(20, 0));
    const DraggedItem &item = dragging.items().at(0);
    EXPECT_EQ(item.draggingImage.deviceIndependentSize(), QSizeF(50, 16)); // 58 by 19, on whole pixels
    EXPECT_EQ(item.draggingImage.toImage().pixelColor(0, 0), QColor(Qt::red));
}

TEST_F(ShelfTile, theDraggedPictureStartsInTheMiddleOfTheTileWhereverThePressIs) {
    addFiles(1);
    const QPointF center = QRectF(tile().rect()).center();
    for (const QPoint press : {QPoint(10, 100), QPoint(70, 30)}) {
        pull(tile(), press, press + QPointF(4, 0));
        const DraggedItem &item = dragging.items().back();
        const QPointF start = press - item.hotSpot;
        EXPECT_NEAR(start.x() + 25, center.x(), 0.5);
        EXPECT_NEAR(start.y() + 25, center.y(), 0.5);
    }
}

TEST_F(ShelfTile, thePictureFliesBackWhereThingsMayMoveAndWindowsShowThroughOthers) {
    using namespace std::chrono_literals;
    addFiles(1);
    const auto returnTime = [&] {
        pull(tile(), middle, middle + QPointF(20, 0));
        return dragging.items().back().returnTime;
    };
    EXPECT_EQ(returnTime(), 0ms);
    look.setCompositing(true);
    EXPECT_EQ(returnTime(), 250ms);
    appearance.set({.reducesMotion = true});
    EXPECT_EQ(returnTime(), 0ms);
}

TEST_F(ShelfTile, aTextIsDraggedAsTheSymbolThatItsTileShows) {
    model.addText(text("some words"));
    addFiles(0);
    pull(tile(), middle, middle + QPointF(20, 0));
    const QImage dragged = dragging.items().at(0).draggingImage.toImage();
    const auto isPainted = [&](const char *symbol) {
        QImage alike(dragged.size(), QImage::Format_ARGB32_Premultiplied);
        alike.setDevicePixelRatio(dragged.devicePixelRatio());
        alike.fill(Qt::transparent);
        QPainter painter(&alike);
        look::preparePainter(painter);
        look::paintSymbol(painter, QRectF(0, 0, 50, 50), text(symbol), 44, QColor(0x6A, 0x6E, 0x78));
        painter.end();
        return alike == dragged.convertToFormat(alike.format());
    };
    EXPECT_TRUE(isPainted("doc.text"));
    EXPECT_FALSE(isPainted("doc.fill")) << "they differ";
}

TEST_F(ShelfTile, textsAndImagesAreDraggedAsTheyAreAndAlwaysCopied) {
    model.addText(text("some words"));
    model.addImage(picture(30, 40));
    addFiles(0);
    dragging.setHeldModifiers(Qt::ControlModifier);
    pull(tile(0), middle, middle + QPointF(20, 0));
    EXPECT_EQ(dragging.items().at(0).string, text("some words"));
    EXPECT_FALSE(dragging.items().at(0).draggingImage.isNull());
    EXPECT_THAT(dragging.masks(), ElementsAre(dragOperation::copy));
    dragging.setOperation(dragOperation::move); // whatever the other program says
    pull(tile(1), middle, middle + QPointF(20, 0));
    EXPECT_EQ(dragging.items().at(1).image->size(), QSize(30, 40));
    time.advance(10s);
    EXPECT_EQ(model.items().size(), 2);
    EXPECT_EQ(checks, 0);
}

TEST_F(ShelfTile, aFileIsCopiedUnlessCommandIsHeldAtTheMoment) {
    addFiles(1);
    dragging.setDuring([&](const std::function<void()> &ask) {
        for (const Qt::KeyboardModifiers now :
             {Qt::ControlModifier, Qt::MetaModifier, Qt::ShiftModifier, Qt::AltModifier}) {
            dragging.setHeldModifiers(now);
            ask();
        }
        dragging.setHeldModifiers({});
    });
    pull(tile(), middle, middle + QPointF(20, 0));
    EXPECT_THAT(dragging.masks(), ElementsAre(dragOperation::move, dragOperation::move, dragOperation::copy,
                                              dragOperation::copy, dragOperation::copy));
}

TEST_F(ShelfTile, withCommandHeldAFileMovesAndLeavesTheShelfAndWithoutItStays) {
    addFiles(1);
    files.insert(text("/home/ada/file 0.txt"));
    const auto pullToWhoTakesWhatIsOffered = [this] {
        dragging.setDuring([this](const std::function<void()> &ask) {
            ask();
            dragging.setOperation(dragging.masks().back());
            if (dragging.masks().back() == dragOperation::move)
                files.clear();
        });
        pull(tile(), middle, middle + QPointF(20, 0));
        time.advance(1min);
    };
    pullToWhoTakesWhatIsOffered();
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_EQ(files.size(), 1);
    dragging.setHeldModifiers(Qt::ControlModifier);
    pullToWhoTakesWhatIsOffered();
    EXPECT_THAT(model.items(), IsEmpty());
}

TEST_F(ShelfTile, aFileThatWasMovedAwayLeavesTheShelfOnceItHasGone) {
    addFiles(1);
    files.insert(text("/home/ada/file 0.txt"));
    dragging.setOperation(dragOperation::move);
    pull(tile(), middle, middle + QPointF(20, 0));
    time.advance(2000ms);
    EXPECT_EQ(model.items().size(), 1);
    files.clear();
    time.advance(200ms);
    EXPECT_THAT(model.items(), IsEmpty());
}

TEST_F(ShelfTile, aFileThatStaysIsAskedForThirteenTimesAndKept) {
    addFiles(1);
    files.insert(text("/home/ada/file 0.txt"));
    dragging.setOperation(dragOperation::move);
    pull(tile(), middle, middle + QPointF(20, 0));
    time.advance(1min);
    EXPECT_EQ(checks, 13);
    EXPECT_EQ(model.items().size(), 1);
}

TEST_F(ShelfTile, aFileThatWasCopiedStays) {
    addFiles(1);
    dragging.setOperation(dragOperation::copy);
    pull(tile(), middle, middle + QPointF(20, 0));
    time.advance(1min);
    EXPECT_EQ(checks, 0);
    EXPECT_EQ(model.items().size(), 1);
}

TEST_F(ShelfTile, theListMayChangeWhileAnItemIsDragged) {
    addFiles(3);
    files.insert(text("/home/ada/file 2.txt"));
    dragging.setOperation(dragOperation::move);
    dragging.setDuring([&](const auto &) {
        model.removeItem(model.items().at(0).id);
        model.setFileDragActive(true); // the row goes away
        rest();
    });
    pull(tile(1), middle, middle + QPointF(20, 0));
    rest();
    EXPECT_EQ(model.items().size(), 1); // file 1 was moved, and it alone
    EXPECT_EQ(displayName(model.items().at(0)), text("file 2.txt"));
}

TEST_F(ShelfTile, theViewMayGoWhileAnItemIsDragged) {
    auto *other = new NotchShelfView(model, {time, icons, dragging, pasteboard, urls}, {});
    addFiles(1);
    other->resize(open);
    other->show();
    rest();
    dragging.setDuring([&](const auto &) { delete std::exchange(other, nullptr); });
    pull(*other->row().findChildren<Tile *>().at(0), middle, middle + QPointF(20, 0));
    EXPECT_EQ(other, nullptr);
}

TEST_F(ShelfTile, theRemoveButtonIsThereUnderThePointerAlone) {
    addFiles(2);
    EXPECT_FALSE(tile(0).isRemoveButtonVisible());
    const QPoint button = tile(0).removeButton().center().toPoint();
    QTest::mouseClick(&tile(0), Qt::LeftButton, {}, button); // not visible: no button
    EXPECT_EQ(model.items().size(), 2);
    hover(tile(0), button);
    EXPECT_TRUE(tile(0).isRemoveButtonVisible());
    EXPECT_FALSE(tile(1).isRemoveButtonVisible());
    QTest::mouseClick(&tile(0), Qt::LeftButton, {}, button);
    ASSERT_EQ(model.items().size(), 1);
    EXPECT_EQ(displayName(model.items().at(0)), text("file 1.txt"));
}

TEST_F(ShelfTile, aPressOnTheRemoveButtonThatIsLetGoElsewhereRemovesNothingAndDragsNothing) {
    addFiles(1);
    const QPoint button = tile().removeButton().center().toPoint();
    hover(tile(), button);
    pull(tile(), button, QPointF(20, 60));
    QTest::mouseRelease(&tile(), Qt::LeftButton, {}, QPoint(20, 60));
    EXPECT_EQ(model.items().size(), 1);
    EXPECT_THAT(dragging.items(), IsEmpty());
}

TEST_F(ShelfTile, underThePointerItsGroundIsWhiteOfAnAlphaOfFifteenHundredths) {
    addFiles(1);
    const auto corner = [this] { return view.grab().toImage().pixelColor(tile().mapTo(&view, QPoint(10, 110))); };
    EXPECT_EQ(corner(), QColor(Qt::black));
    hover(tile(), middle);
    EXPECT_EQ(corner(), QColor(38, 38, 38));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&tile(), &leave);
    EXPECT_EQ(corner(), QColor(Qt::black));
}

TEST_F(ShelfTile, theRemoveButtonIsLitUnderThePointerAndSinksWhenItIsPressed) {
    addFiles(1);
    const QPoint button = tile().removeButton().center().toPoint();
    const auto edge = [&] { // beside the cross
        return view.grab().toImage().pixelColor(tile().mapTo(&view, button - QPoint(6, 0)));
    };
    const QColor without = edge();
    hover(tile(), middle);
    const QColor there = edge();
    hover(tile(), button);
    const QColor lit = edge();
    QTest::mousePress(&tile(), Qt::LeftButton, {}, button);
    const QColor pressed = edge();
    EXPECT_NE(there, without);
    EXPECT_GT(there.lightness(), 150);
    EXPECT_GT(lit.lightness(), there.lightness() + 20);
    EXPECT_LT(pressed.lightness(), there.lightness() - 20);
    QTest::mouseRelease(&tile(), Qt::LeftButton, {}, middle);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&tile(), &leave);
    EXPECT_EQ(edge(), without);
    EXPECT_EQ(model.items().size(), 1);
}

TEST_F(ShelfTile, aDoubleClickOpensAFile) {
    model.addText(text("words"));
    addFiles(1);
    files.insert(text("/home/ada/file 0.txt"));
    QTest::mouseDClick(&tile(1), Qt::LeftButton, {}, middle);
    EXPECT_THAT(urls.opened(), ElementsAre(file("/home/ada/file 0.txt")));
    QTest::mouseDClick(&tile(0), Qt::LeftButton, {}, middle);
    EXPECT_EQ(urls.opened().size(), 1);
}

TEST_F(ShelfTile, aFileThatHasGoneIsNotOpenedAndItsNameIsTold) {
    addFiles(2);
    files.insert(text("/home/ada/file 0.txt"));
    QStringList gone;
    QObject::connect(&model, &NotchViewModel::fileIsGone, &view, [&](const QString &name) { gone.append(name); });
    QTest::mouseDClick(&tile(1), Qt::LeftButton, {}, middle);
    EXPECT_THAT(urls.opened(), IsEmpty());
    EXPECT_THAT(gone, ElementsAre(text("file 1.txt")));
    EXPECT_EQ(model.items().size(), 2); // it may come back
    QTest::mouseDClick(&tile(0), Qt::LeftButton, {}, middle);
    EXPECT_EQ(urls.opened().size(), 1);
    EXPECT_EQ(gone.size(), 1);
}

TEST_F(ShelfTile, clicksWithKeysHeldDoNothing) {
    addFiles(3);
    for (const Qt::KeyboardModifiers now : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier})
        for (size_t index : {0U, 2U})
            QTest::mouseClick(&tile(index), Qt::LeftButton, now, middle);
    EXPECT_EQ(model.items().size(), 3);
    EXPECT_THAT(urls.opened(), IsEmpty());
    EXPECT_THAT(dragging.items(), IsEmpty());
}

TEST_F(ShelfTile, theToolTipHasTheWholeName) {
    model.addFile(file("/home/ada/A rather long name that no tile can show in whole.pdf"));
    model.addText(QString(1000, u'x'));
    addFiles(0);
    EXPECT_EQ(wholeName(model.items().at(0)), text("A rather long name that no tile can show in whole.pdf"));
    EXPECT_EQ(wholeName(model.items().at(1)).size(), 401);
    QHelpEvent help(QEvent::ToolTip, middle, tile(0).mapToGlobal(middle));
    QCoreApplication::sendEvent(&tile(0), &help);
    EXPECT_TRUE(look::ToolTip::isShown());
    look::ToolTip::hide();
}

/// Whatever language the program's own texts are in.
TEST_F(ShelfTile, theToolTipOfAFileThatIsCalledLikeATextOfOursSaysItsName) {
    addFiles(0);
    model.addFile(file("/home/ada/Images"));
    addFiles(0);
    setTranslation([](const QString &) { return text("Bilder"); });
    QHelpEvent help(QEvent::ToolTip, middle, tile(0).mapToGlobal(middle));
    QCoreApplication::sendEvent(&tile(0), &help);
    setTranslation(nullptr);
    QStringList words;
    for (QWidget *each : QApplication::topLevelWidgets()) {
        if (each->windowType() != Qt::ToolTip || !each->isVisible())
            continue;
        test::WordsDevice device(each->size());
        each->render(&device);
        words += device.words();
    }
    EXPECT_EQ(words, QStringList{text("Images")});
    look::ToolTip::hide();
}

TEST(TileLines, aShortNameStandsOnOneLineAndALongOneOnTwo) {
    const QFont font = look::fontFor(look::TextRole::caption);
    const QFontMetricsF metrics(font);
    EXPECT_THAT(tileLines(text("a.txt"), font, 75), ElementsAre(text("a.txt")));
    for (const char *name :
         {"A rather long name that no tile can show.pdf", "averylongnamewithoutanyplacetobreakit.txt",
          "----------------------------------------", "Zweite Fassung äöü ßßßßßßßßßßßßßßßßß.odt"}) {
        const QStringList lines = tileLines(text(name), font, 75);
        ASSERT_EQ(lines.size(), 2) << name;
        for (const QString &line : lines)
            EXPECT_LE(metrics.horizontalAdvance(line), 75) << name;
    }
    EXPECT_TRUE(tileLines(text("A rather long name that no tile can show.pdf"), font, 75).at(1).endsWith(text("pdf")));
}

TEST(TileLines, noLineBreaksWithinTheExtension) {
    const QFont font = look::fontFor(look::TextRole::caption);
    const QFontMetricsF metrics(font);
    const auto secondLine = [&](const char *name) {
        const QStringList lines = tileLines(text(name), font, 75);
        for (const QString &line : lines)
            EXPECT_LE(metrics.horizontalAdvance(line), 75.5) << name; // the toolkit's own measure of what it cuts
        return lines.size() == 2 ? lines.at(1) : QString();
    };
    EXPECT_EQ(tileLines(text("notes1.properties"), font, 75), (QStringList{text("notes1"), text(".properties")}));
    for (const char *name :
         {"averylongnamewithoutanyplacetobreakit.properties", "A rather long name that no tile shows.properties",
          "דוח שנתי ארוך מאוד שאין לו מקום.properties", "1234567890123.properties"})
        EXPECT_TRUE(secondLine(name).endsWith(text(".properties"))) << name << ": " << secondLine(name).toStdString();
    EXPECT_TRUE(secondLine("averylongnamewithoutanyplacetobreakit.tar.gz").endsWith(text(".tar.gz")));
    EXPECT_EQ(tileLines(text("12345678901.tar.gz"), font, 75), (QStringList{text("12345678901"), text(".tar.gz")}));
    EXPECT_FALSE(tileLines(text(".wwwwwwwwwwww"), font, 75).at(0).isEmpty());
    EXPECT_GT(tileLines(text("a.wwwwwwwwwwwwwwwwwwww"), font, 75).at(0).size(), 3);
    // What follows the last dot is no extension: a hidden file, a sentence, a version.
    EXPECT_TRUE(secondLine(".averylongnamewithoutanyplacetobreakit").endsWith(text("kit")));
    EXPECT_TRUE(secondLine("Dr. Somebody with a name that is long").endsWith(text("long")));
    EXPECT_TRUE(secondLine("averylongnamewithoutanyplacetobreak.").endsWith(text("ak.")));
}

TEST(TileLines, anyNameIsSoonLaidOut) {
    const QFont font = look::fontFor(look::TextRole::caption);
    for (const QString &name : {QString(), QString(100'000, u'm'), QString(u'a') + QString(100'000, QChar(0x0301)),
                                QString(3, QChar(0xD83D)), text("a\nb\tc"), QString(500, QChar(0x202E))})
        EXPECT_LE(tileLines(name, font, 75).size(), 2);
    EXPECT_LE(tileLines(text("name"), font, 0).size(), 2);
}

} // namespace
} // namespace tavrine
