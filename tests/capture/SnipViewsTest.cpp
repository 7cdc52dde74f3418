// The card, the save dialog and the settings page as a person meets them, without a display.
#include "SnipTest.h"
#include "adapters/fake/FakeAppearance.h"
#include "capture/PreviewActionButton.h"
#include "capture/SnipSaveDialogView.h"
#include "capture/SnipperSettingsModel.h"
#include "capture/SnipperSettingsView.h"
#include "capture/SnippetPreviewCard.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Toggle.h"
#include "look/WrappedText.h"
#include "support/Eventually.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEnterEvent>
#include <QTest>

namespace tavrine {
namespace {

/// A button by its words, or by its tool tip when it has none.
QAbstractButton *buttonOf(QWidget &view, const char *name) {
    for (auto *button : view.findChildren<QAbstractButton *>())
        if (!button->isHidden() && (button->text() == text(name) || button->toolTip() == text(name)))
            return button;
    return nullptr;
}

QStringList labelsOf(QWidget &view) {
    QStringList texts;
    for (const auto *label : view.findChildren<look::Label *>())
        texts << label->text();
    return texts;
}

class CardTest : public SnipTest {
protected:
    void makeCard(const QImage &image = picture(200, 100)) {
        flow->showSnipPreview(image);
        const auto borrowed = std::shared_ptr<SnippetPreviewModel>(flow->previewModel(), [](auto *) {});
        view = std::make_unique<SnippetPreviewCard>(borrowed);
        view->show();
    }
    QStringList buttons() {
        QStringList texts;
        for (const auto *button : view->findChildren<PreviewActionButton *>())
            if (!button->isHidden())
                texts << button->text();
        return texts;
    }
    PreviewActionButton &action(const char *name) { return static_cast<PreviewActionButton &>(*buttonOf(*view, name)); }
    void press(const char *name) { QTest::mouseClick(buttonOf(*view, name), Qt::LeftButton); }
    void enter() {
        QEnterEvent event(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(view.get(), &event);
    }
    void leave() {
        QEvent event(QEvent::Leave);
        QApplication::sendEvent(view.get(), &event);
    }
    void TearDown() override { view.reset(); }
    std::unique_ptr<SnippetPreviewCard> view;
};

TEST_F(CardTest, hasFiveButtonsOfFiftySixPoints) {
    makeCard();
    EXPECT_EQ(view->size(), QSize(340, 248));
    EXPECT_THAT(buttons(), ElementsAre(text("New"), text("Copied"), text("Save"), text("Edit"), text("Get Text")));
    for (const auto *button : view->findChildren<PreviewActionButton *>())
        EXPECT_EQ(button->sizeHint().width(), 56);
    EXPECT_EQ(action("New").icon(), text("plus"));
    EXPECT_EQ(action("Copied").icon(), text("checkmark.circle.fill"));
    EXPECT_EQ(action("Save").icon(), text("tray.and.arrow.down"));
    EXPECT_EQ(action("Edit").icon(), text("pencil.and.outline"));
    EXPECT_EQ(action("Get Text").icon(), text("text.viewfinder"));
}

TEST_F(CardTest, hasSixButtonsOfFortySixPointsWhenUploadingIsConfigured) {
    configureUpload();
    makeCard();
    EXPECT_EQ(buttons().size(), 6);
    EXPECT_EQ(action("Upload").icon(), text("icloud.and.arrow.up"));
    for (const auto *button : view->findChildren<PreviewActionButton *>())
        EXPECT_EQ(button->sizeHint().width(), 46);
    uploads.manager().setEnabled(false);
    EXPECT_EQ(buttons().size(), 5);
    EXPECT_EQ(action("New").sizeHint().width(), 56);
}

TEST_F(CardTest, allButtonsStandWithinTheCardAndApart) {
    configureUpload();
    makeCard();
    QApplication::processEvents();
    QList<QRect> places;
    for (const auto *button : view->findChildren<PreviewActionButton *>())
        places << QRect(button->mapTo(view.get(), QPoint()), button->size());
    for (qsizetype i = 0; i < places.size(); ++i) {
        EXPECT_TRUE(view->rect().adjusted(12, 12, -12, -12).contains(places[i]));
        if (i > 0) {
            EXPECT_GE(places[i].left() - places[i - 1].right(), 4);
        }
    }
}

TEST_F(CardTest, theUploadButtonFollowsTheUpload) {
    configureUpload();
    makeCard();
    press("Upload");
    ASSERT_TRUE(happens([this] { return card().uploadButton().state() == UploadButtonState::uploading; }));
    EXPECT_TRUE(action("Uploading").isLoading());
    ASSERT_TRUE(happens([this] { return card().uploadButton().state() == UploadButtonState::done; }));
    EXPECT_EQ(action("Uploaded").icon(), text("checkmark.circle.fill"));
    EXPECT_TRUE(action("Uploaded").isActive());
    EXPECT_FALSE(action("Uploaded").isLoading());
}

TEST_F(CardTest, theSaveButtonSaysWhenItIsSaved) {
    defaults.set(text("snipUseSaveDefault"), true);
    makeCard();
    press("Save");
    settle();
    EXPECT_EQ(action("Saved").icon(), text("checkmark.circle.fill"));
    EXPECT_EQ(action("Saved").accessibleName(), text("Saved"));
}

TEST_F(CardTest, savedIsFadedInto) {
    FakeAppearance appearance;
    const look::Look look(time, &appearance);
    defaults.set(text("snipUseSaveDefault"), true);
    makeCard();
    PreviewActionButton &save = action("Save");
    press("Save");
    ASSERT_TRUE(test::eventually([&] {
        time.runPending();
        return save.text() == text("Saved");
    }));
    EXPECT_EQ(save.findChildren<QWidget *>().size(), 1);
    time.advance(200ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(save.findChildren<QWidget *>().isEmpty());
    view.reset(); // before the look
}

TEST_F(CardTest, thePictureOpensTheEditorAndTheCrossDismisses) {
    makeCard();
    press("Open in editor");
    EXPECT_THAT(events, ElementsAre(text("editor")));
    view.reset();
    makeCard();
    press("Dismiss");
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(CardTest, thePointerOverTheCardHoldsTheCountdown) {
    makeCard();
    enter();
    EXPECT_TRUE(card().isHovering());
    leave();
    EXPECT_FALSE(card().isHovering());
}

TEST_F(CardTest, theKeyboardInTheCardHoldsTheCountdownAndEscapeDismisses) {
    makeCard();
    time.advance(1s);
    view->activateWindow();
    ASSERT_TRUE(test::eventually([this] { return view->isActiveWindow(); }));
    leave(); // the pointer has no part in it
    time.advance(10s);
    EXPECT_NEAR(card().remaining(), 6.0, 1e-6);
    QEvent elsewhere(QEvent::WindowDeactivate);
    QApplication::sendEvent(view.get(), &elsewhere);
    time.advance(1s);
    EXPECT_NEAR(card().remaining(), 5.0, 1e-6);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(CardTest, whereTheKeysGoIsSeenFromTheFirstMomentAndReturnPresses) {
    makeCard();
    view->activateWindow();
    ASSERT_TRUE(test::eventually([this] { return view->isActiveWindow(); }));
    QWidget *first = QApplication::focusWidget();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->accessibleName(), text("Open in editor"));
    const bool hasRing = std::ranges::any_of(view->findChildren<QWidget *>(), [](const QWidget *each) {
        return each->isVisible() && each->inherits("tavrine::look::FocusRing");
    });
    EXPECT_TRUE(hasRing);
    QTest::keyClick(view.get(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(qobject_cast<QAbstractButton *>(QApplication::focusWidget())->text(), text("Save"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(flow->isSaveDialogShown());
}

TEST_F(CardTest, everyButtonIsReachedByTabAndHasAName) {
    configureUpload();
    makeCard();
    view->activateWindow();
    ASSERT_TRUE(test::eventually([this] { return view->isActiveWindow(); }));
    QStringList names;
    for (int i = 0; i < 8; ++i) {
        QTest::keyClick(view.get(), Qt::Key_Tab);
        const auto *focused = qobject_cast<QAbstractButton *>(QApplication::focusWidget());
        ASSERT_NE(focused, nullptr);
        names << (focused->accessibleName().isEmpty() ? focused->text() : focused->accessibleName());
    }
    // The picture has the keyboard when the card gets it.
    EXPECT_THAT(names, ElementsAre(text("New"), text("Copied"), text("Save"), text("Edit"), text("Get Text"),
                                   text("Upload"), text("Dismiss"), text("Open in editor")));
}

TEST_F(CardTest, picturesOfEveryShapeAreShown) {
    for (const QSize size : {QSize(1, 1), QSize(1, 4000), QSize(4000, 1), QSize(3840, 2160)}) {
        makeCard(picture(size.width(), size.height(), QColor(255, 0, 255)));
        const QImage shown = view->grab().toImage();
        int found = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                found += shown.pixelColor(x, y) == QColor(255, 0, 255) ? 1 : 0;
        EXPECT_GT(found, 0) << size.width() << "x" << size.height();
        view.reset();
    }
}

class SaveDialogTest : public SnipTest {
protected:
    void SetUp() override {
        model = std::make_shared<SnipSaveDialogModel>(
            text("/home/a/Documents/tavrine"),
            SnipSaveDialogModel::Actions{
                .onSaveHere = [this](bool isDefault) { events << (isDefault ? text("save, default") : text("save")); },
                .onChooseFolder =
                    [this](bool isDefault) { events << (isDefault ? text("choose, default") : text("choose")); },
                .onCancel = [this] { events << text("cancel"); }});
        view = std::make_unique<SnipSaveDialogView>(model);
        view->show();
    }
    std::shared_ptr<SnipSaveDialogModel> model;
    std::unique_ptr<SnipSaveDialogView> view;
};

TEST_F(SaveDialogTest, saysWhatItIsAbout) {
    EXPECT_EQ(view->size(), QSize(340, 264));
    EXPECT_THAT(labelsOf(*view), ElementsAre(text("Save Screenshot"), text("Choose where to save this capture"),
                                             text("Use as default"), text("Skip this dialog next time"),
                                             text("You can change this anytime in "), text("Settings → Screenshot")));
    bool namesFolder = false;
    for (const auto *part : view->findChildren<QWidget *>())
        namesFolder = namesFolder || part->accessibleName() == text("/home/a/Documents/tavrine");
    EXPECT_TRUE(namesFolder);
}

TEST_F(SaveDialogTest, nothingIsCutOff) {
    QApplication::processEvents();
    for (const auto *label : view->findChildren<look::Label *>())
        EXPECT_GE(label->width(), label->sizeHint().width()) << qPrintable(label->text());
    for (const auto *button : view->findChildren<QAbstractButton *>())
        EXPECT_TRUE(view->rect().contains(QRect(button->mapTo(view.get(), QPoint()), button->size())))
            << qPrintable(button->text());
}

TEST_F(SaveDialogTest, eachButtonGivesItsAnswer) {
    for (const char *name : {"Save Here", "Change Folder", "Cancel"}) {
        SetUp();
        QTest::mouseClick(buttonOf(*view, name), Qt::LeftButton);
    }
    EXPECT_THAT(events, ElementsAre(text("save, default"), text("choose, default"), text("cancel")));
}

TEST_F(SaveDialogTest, theSwitchGoesWithTheAnswer) {
    auto *toggle = view->findChild<look::Toggle *>();
    EXPECT_TRUE(toggle->isChecked());
    EXPECT_EQ(toggle->accessibleName(), text("Use as default"));
    toggle->click();
    QTest::mouseClick(buttonOf(*view, "Save Here"), Qt::LeftButton);
    EXPECT_THAT(events, ElementsAre(text("save")));
}

TEST_F(SaveDialogTest, returnSavesAndEscapeCancels) {
    QTest::keyClick(view.get(), Qt::Key_Return);
    SetUp();
    QTest::keyClick(view.get(), Qt::Key_Escape);
    EXPECT_THAT(events, ElementsAre(text("save, default"), text("cancel")));
}

class SettingsPageTest : public SnipTest {
protected:
    SettingsPageTest() {
        view = std::make_unique<SnipperSettingsView>(
            std::make_unique<SnipperSettingsModel>(SnipperSettingsModel::Ports{defaults, center, panels, folders}));
        view->resize(600, 400);
        view->show();
    }
    look::Toggle &toggle(const char *name) {
        for (auto *candidate : view->findChildren<look::Toggle *>())
            if (candidate->accessibleName() == text(name))
                return *candidate;
        ADD_FAILURE() << name;
        std::abort();
    }
    std::unique_ptr<SnipperSettingsView> view;
};

TEST_F(SettingsPageTest, hasItsTitleAndItsSwitches) {
    EXPECT_THAT(labelsOf(*view), ElementsAre(text("Snipper & OCR"), text("Capture")));
    EXPECT_EQ(view->findChild<look::WrappedText *>()->text(),
              text("Capture any region of your screen and extract text instantly."));
    EXPECT_FALSE(toggle("Off shutter sound").isChecked());
    EXPECT_EQ(toggle("Off shutter sound").accessibleDescription(), text("Silence the camera sound when capturing"));
    EXPECT_FALSE(toggle("Always save without asking").isChecked());
    EXPECT_EQ(toggle("Always save without asking").accessibleDescription(),
              text("Skip the save dialog and use the folder above"));
}

TEST_F(SettingsPageTest, theSwitchesWriteThePreferencesAndFollowThem) {
    toggle("Off shutter sound").click();
    EXPECT_EQ(defaults.get<bool>(text("snipMuteSound")), true);
    toggle("Always save without asking").click();
    EXPECT_EQ(defaults.get<bool>(text("snipUseSaveDefault")), true);
    defaults.set(text("snipUseSaveDefault"), false);
    EXPECT_FALSE(toggle("Always save without asking").isChecked());
}

TEST_F(SettingsPageTest, theFolderIsShownChangedAndReset) {
    const auto shown = [this] {
        for (const auto *part : view->findChildren<QWidget *>())
            if (part->accessibleName() == text("Save Folder"))
                return part->accessibleDescription();
        return QString();
    };
    EXPECT_EQ(shown(), documents());
    QTest::mouseClick(buttonOf(*view, "Change..."), Qt::LeftButton);
    panels.choose(text("/chosen"));
    time.runPending();
    EXPECT_EQ(shown(), text("/chosen"));
    QTest::mouseClick(buttonOf(*view, "Reset to Default Folder"), Qt::LeftButton);
    EXPECT_EQ(shown(), documents());
}

} // namespace
} // namespace tavrine
