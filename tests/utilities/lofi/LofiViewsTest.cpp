#include "LofiTest.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "support/OtherPlatform.h"
#include "utilities/lofi/LofiMiniPlayer.h"
#include "utilities/lofi/LofiPlayerModel.h"
#include "utilities/lofi/LofiSettingsView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

namespace tavrine {
namespace {

class LofiViewsTest : public LofiTest {
protected:
    LofiViewsTest() {
        card.show();
        page.resize(560, 460);
        page.show();
    }
    std::unique_ptr<LofiPlayerModel> model() {
        return std::make_unique<LofiPlayerModel>(LofiPlayerModel::Ports{*manager, center, urlOpener});
    }
    QAbstractButton *playButton() { return card.findChild<QAbstractButton *>(); }
    QAbstractButton *pageButton(const char *words) {
        for (auto *button : page.findChildren<QAbstractButton *>())
            if (button->text() == text(words))
                return button;
        return nullptr;
    }
    QMenu *openMenu(QContextMenuEvent::Reason reason) {
        QContextMenuEvent event(reason, QPoint(5, 5), card.mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(&card, &event);
        return card.findChild<QMenu *>();
    }
    QStringList entries(QMenu *menu) {
        QStringList titles;
        for (const QAction *action : menu->actions())
            titles.append(action->text());
        return titles;
    }

    LofiMiniPlayer card{model()};
    LofiSettingsView page{model()};
};

TEST_F(LofiViewsTest, theCardHasItsWidthAndIsCalledWhatItShows) {
    EXPECT_EQ(card.width(), 266);
    EXPECT_EQ(card.accessibleName(), text("Lo-Fi Vibe"));
    EXPECT_EQ(card.accessibleDescription(), text("Tap to play"));
    EXPECT_EQ(playButton()->accessibleName(), text("Play"));
}

TEST_F(LofiViewsTest, aPlayIsExpectedWhenThePointerOrTheKeyboardComesToTheButtonAndNotBefore) {
    QWidget elsewhere;
    elsewhere.show();
    elsewhere.setFocus();
    EXPECT_EQ(players.expectations(), 0);
    QEnterEvent enter({}, {}, {});
    QApplication::sendEvent(playButton(), &enter);
    EXPECT_EQ(players.expectations(), 1);
    QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
    QApplication::sendEvent(playButton(), &focus);
    EXPECT_EQ(players.expectations(), 2);
    EXPECT_TRUE(players.sounds().empty());
    writeTrack("track_1.mp3");
    printedBy([this] { QTest::mouseClick(playButton(), Qt::LeftButton); });
    ASSERT_TRUE(manager->isPlaying());
    QApplication::sendEvent(playButton(), &enter);
    EXPECT_EQ(players.expectations(), 2) << "the button pauses now";
}

TEST_F(LofiViewsTest, theButtonPlaysAndPausesByMouseAndKeyboard) {
    writeTrack("track_1.mp3");
    printedBy([this] { QTest::mouseClick(playButton(), Qt::LeftButton); });
    EXPECT_TRUE(manager->isPlaying());
    EXPECT_EQ(playButton()->accessibleName(), text("Pause"));
    EXPECT_EQ(card.accessibleDescription(), text("Now Playing"));
    printedBy([this] { QTest::keyClick(playButton(), Qt::Key_Space); });
    EXPECT_FALSE(manager->isPlaying());
    printedBy([this] { QTest::keyClick(playButton(), Qt::Key_Return); });
    EXPECT_TRUE(manager->isPlaying());
    EXPECT_TRUE(playButton()->focusPolicy() & Qt::TabFocus);
}

TEST_F(LofiViewsTest, aTapOnTheCardIsATapOnItsButton) {
    writeTrack("track_1.mp3");
    printedBy([this] { QTest::mouseClick(&card, Qt::LeftButton, {}, QPoint(100, 30)); });
    EXPECT_TRUE(manager->isPlaying());
    printedBy([this] { QTest::mouseClick(&card, Qt::MiddleButton, {}, QPoint(100, 30)); });
    EXPECT_TRUE(manager->isPlaying());
}

TEST_F(LofiViewsTest, theContextMenuIsTheModelsAndOpensByKeyToo) {
    QMenu *menu = openMenu(QContextMenuEvent::Keyboard);
    ASSERT_TRUE(menu);
    EXPECT_THAT(entries(menu), ElementsAre(text("Lo-Fi Vibe Settings…"), text("Download Lo-Fi Music from Internet…"),
                                           text("Choose Local Audio File…")));
    menu->actions().at(1)->trigger();
    EXPECT_EQ(urlOpener.opened().size(), 1);
    delete menu;
    import(write(home.filePath(text("a.mp3"))));
    menu = openMenu(QContextMenuEvent::Mouse);
    ASSERT_EQ(menu->actions().size(), 4);
    menu->actions().at(3)->trigger();
    EXPECT_EQ(manager->customTrackName(), std::nullopt);
}

TEST_F(LofiViewsTest, namesOfAnyLengthAndScriptArePainted) {
    for (const QString &name : {QString(250, u'W'), text("مطر الليل"), text("🎧").repeated(40), text("a\tb")}) {
        import(write(home.filePath(text("Music/")) + name + text(".mp3")));
        EXPECT_FALSE(card.grab().isNull());
        EXPECT_FALSE(page.grab().isNull());
        EXPECT_EQ(card.width(), 266);
        EXPECT_EQ(card.toolTip(), name);
    }
}

TEST_F(LofiViewsTest, theGlowFollowsTheMusic) {
    const QImage dark = card.grab().toImage();
    writeTrack("track_1.mp3");
    play();
    const QImage glowing = card.grab().toImage();
    EXPECT_NE(dark.pixelColor(6, 32), glowing.pixelColor(6, 32)); // beside the plate
    printedBy([this] { manager->pause(); });
    EXPECT_EQ(card.grab().toImage(), dark);
}

TEST_F(LofiViewsTest, thePageShowsTheActiveTrackAndItsButtons) {
    EXPECT_TRUE(pageButton("Download Lo-Fi Music from Internet…")->isVisible());
    EXPECT_FALSE(pageButton("Reset to Default Lo-Fi Track")->isVisible());
    QTest::mouseClick(pageButton("Choose Local Audio File…"), Qt::LeftButton);
    ASSERT_TRUE(panels.isOpen());
    const QString file = write(home.filePath(text("Regen.mp3")));
    printedBy([&] {
        panels.choose(file);
        time.runPending();
    });
    EXPECT_TRUE(pageButton("Reset to Default Lo-Fi Track")->isVisible());
    QTest::mouseClick(pageButton("Reset to Default Lo-Fi Track"), Qt::LeftButton);
    EXPECT_FALSE(pageButton("Reset to Default Lo-Fi Track")->isVisible());
    printedBy([this] { QTest::mouseClick(pageButton("Play"), Qt::LeftButton); });
    EXPECT_TRUE(manager->isDownloading());
    EXPECT_TRUE(page.findChild<look::ProgressBar *>()->isVisible());
    downloads.progress(1, 2);
    settle();
    EXPECT_EQ(page.findChild<look::ProgressBar *>()->value(), 0.5);
    printedBy([this] { downloads.finish("music"); });
    EXPECT_FALSE(page.findChild<look::ProgressBar *>()->isVisible());
    EXPECT_TRUE(pageButton("Pause"));
}

TEST_F(LofiViewsTest, nobodyHearsOfAnotherPlatform) {
    import(write(home.filePath(text("Regen.mp3"))));
    for (const QWidget *widget : page.findChildren<QWidget *>() + QList<QWidget *>{&card}) {
        EXPECT_FALSE(namesAnotherPlatform(widget->accessibleName())) << widget->accessibleName().toStdString();
        EXPECT_FALSE(namesAnotherPlatform(widget->accessibleDescription()));
    }
    const auto widgets = page.findChildren<QWidget *>();
    EXPECT_TRUE(std::any_of(widgets.begin(), widgets.end(), [](const QWidget *widget) {
        return widget->accessibleDescription() == text("Using custom audio file from your computer");
    }));
}

} // namespace
} // namespace tavrine
