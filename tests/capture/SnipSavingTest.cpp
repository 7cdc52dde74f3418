// How captures become files: the folder, the names, the dialog, the panel.
#include "SnipTest.h"

#include <QFileInfo>

#include <csignal>

#include <sys/resource.h>

namespace tavrine {
namespace {

const QString firstName = QStringLiteral("snip_2026-01-31_21.00.00.png");
const QString secondName = QStringLiteral("snip_2026-01-31_21.00.00-2.png");

class SnipSavingTest : public SnipTest {
protected:
    SnipFlow::Completion noted() {
        return [this](bool isSaved) { answers.append(isSaved); };
    }
    void saveWithoutAsking() { defaults.set(text("snipUseSaveDefault"), true); }
    QString storedFolder() { return defaults.get<QString>(text("snipSaveDirectoryPath"), text("none")); }
    bool isDefault() { return defaults.get<bool>(text("snipUseSaveDefault"), false); }
    void choose(const QString &path) {
        time.advance(50ms);
        ASSERT_TRUE(panels.isOpen());
        panels.choose(path);
        time.runPending();
        settle();
    }
    QList<bool> answers;
};

// The folder.

TEST_F(SnipSavingTest, theFolderIsTavrineInTheDocuments) {
    EXPECT_EQ(flow->snipDefaultDirectory(), folders.documents + text("/tavrine"));
}

TEST_F(SnipSavingTest, theFolderIsThePersonsChoiceUnlessThatIsEmpty) {
    defaults.set(text("snipSaveDirectoryPath"), home.filePath(text("mine")));
    EXPECT_EQ(flow->snipDefaultDirectory(), home.filePath(text("mine")));
    defaults.set(text("snipSaveDirectoryPath"), QString());
    EXPECT_EQ(flow->snipDefaultDirectory(), folders.documents + text("/tavrine"));
    defaults.set(text("snipSaveDirectoryPath"), 7);
    EXPECT_EQ(flow->snipDefaultDirectory(), folders.documents + text("/tavrine"));
}

TEST_F(SnipSavingTest, withoutDocumentsTheFolderIsTavrineInTheHome) {
    folders.documents.clear();
    makeFlow();
    EXPECT_EQ(flow->snipDefaultDirectory(), home.path() + text("/tavrine"));
}

// Without a question.

TEST_F(SnipSavingTest, aSaveWithoutAQuestionLandsInTheDocumentsAndMakesTheFolder) {
    saveWithoutAsking();
    ASSERT_FALSE(QFileInfo::exists(documents()));
    flow->saveSnip(picture(33, 11), noted());
    EXPECT_FALSE(flow->isSaveDialogShown());
    settle();
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_EQ(QImage(documents() + text("/") + firstName).size(), QSize(33, 11));
}

TEST_F(SnipSavingTest, twoSavesWithinASecondGiveNamesEndingInNothingAndTwo) {
    saveWithoutAsking();
    flow->saveSnip(picture(), noted());
    time.advance(900ms);
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_THAT(filesIn(documents()), testing::UnorderedElementsAre(firstName, secondName));
    time.advance(100ms);
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_TRUE(QFileInfo::exists(documents("snip_2026-01-31_21.00.01.png")));
}

TEST_F(SnipSavingTest, aPictureThatIsNoneIsNotSavedAndAsksNothing) {
    flow->saveSnip(QImage(), noted());
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_FALSE(flow->isSaveDialogShown());
    flow->autoSaveSnip(QImage());
    settle();
    EXPECT_FALSE(QFileInfo::exists(documents()));
}

TEST_F(SnipSavingTest, aFileInPlaceOfTheFolderFailsTheSave) {
    saveWithoutAsking();
    writeFile(documents(), "in the way");
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_TRUE(QFileInfo(documents()).isFile());
}

TEST_F(SnipSavingTest, aFolderThatIsGoneIsMadeAnew) {
    saveWithoutAsking();
    defaults.set(text("snipSaveDirectoryPath"), home.filePath(text("gone/deeper")));
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_TRUE(QFileInfo::exists(home.filePath(text("gone/deeper/")) + firstName));
}

TEST_F(SnipSavingTest, aFolderThatMayOnlyBeReadFailsTheSave) {
    saveWithoutAsking();
    // Not even root writes here.
    defaults.set(text("snipSaveDirectoryPath"), text("/proc/self"));
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(SnipSavingTest, aFullDiskFailsTheSaveAndLeavesNoFile) {
    // No file may grow beyond four kilobytes: a write is short and the next one fails, as on a full disk.
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit full{4096, old.rlim_max};
    const QString small = home.filePath(text("small"));
    saveWithoutAsking();
    defaults.set(text("snipSaveDirectoryPath"), small);
    QImage noise(400, 400, QImage::Format_RGB32);
    unsigned value = 1;
    for (int y = 0; y < noise.height(); ++y)
        for (int x = 0; x < noise.width(); ++x)
            noise.setPixel(x, y, value = value * 1664525U + 1013904223U);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    flow->saveSnip(noise, noted());
    queue.sync([] {});
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, before);
    settle();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_THAT(filesIn(small), IsEmpty());
    flow->saveSnip(picture(2, 2), noted());
    settle();
    EXPECT_THAT(answers, ElementsAre(false, true));
}

// What the person hears.

TEST_F(SnipSavingTest, aFailedSaveIsToldHoweverItWasAskedFor) {
    defaults.set(text("snipSaveDirectoryPath"), text("/proc/self"));
    flow->saveSnip(picture(), noted());
    dialog().saveHere();
    settle();
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_THAT(toasts.first().toStdString(), HasSubstr("Couldn't save \"snip_"));
    flow->saveSnip(picture(), noted());
    dialog().chooseFolder();
    choose(home.filePath(text("missing/mine.png")));
    EXPECT_EQ(toasts.size(), 2);
    EXPECT_THAT(toasts.last().toStdString(), HasSubstr("mine.png"));
    saveWithoutAsking();
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_EQ(toasts.size(), 3);
    EXPECT_THAT(answers, ElementsAre(false, false, false));
}

TEST_F(SnipSavingTest, aSaveThatWorkedOrWasGivenUpAndOneThatNobodyAskedForAreNotToldOf) {
    flow->saveSnip(picture(), noted());
    dialog().setUseAsDefault(false);
    dialog().saveHere();
    settle();
    defaults.set(text("snipSaveDirectoryPath"), text("/proc/self"));
    flow->saveSnip(picture(), noted());
    dialog().cancel();
    flow->autoSaveSnip(picture());
    settle();
    EXPECT_THAT(answers, ElementsAre(true, false));
    EXPECT_THAT(toasts, IsEmpty());
}

// The dialog.

TEST_F(SnipSavingTest, theDialogIsAFloatingPanelOneLevelAboveInTheMiddleOfTheScreen) {
    flow->saveSnip(picture(), noted());
    const auto &window = static_cast<FakePanelWindows::Window &>(*flow->saveDialogWindow());
    EXPECT_EQ(window.description().contentSize, QSizeF(340, 264));
    EXPECT_EQ(window.description().level, 4);
    EXPECT_EQ(window.description().collectionBehavior, 265U);
    EXPECT_TRUE(window.description().isClear);
    EXPECT_FALSE(window.description().hasShadow);
    EXPECT_EQ(window.frame(), QRectF(720 - 170, 438 - 132, 340, 264));
    EXPECT_EQ(window.alpha(), 0.0);
    time.advance(1s);
    EXPECT_EQ(window.alpha(), 1.0);
}

TEST_F(SnipSavingTest, theDialogOffersTheFolderAndToBecomeTheDefault) {
    flow->saveSnip(picture(), noted());
    EXPECT_EQ(dialog().defaultDirectory(), documents());
    EXPECT_TRUE(dialog().useAsDefault());
}

TEST_F(SnipSavingTest, saveHereSavesIntoTheFolder) {
    flow->saveSnip(picture(), noted());
    dialog().setUseAsDefault(false);
    dialog().saveHere();
    EXPECT_FALSE(flow->isSaveDialogShown());
    settle();
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_THAT(filesIn(documents()), ElementsAre(firstName));
    EXPECT_FALSE(isDefault());
    EXPECT_FALSE(defaults.contains(text("snipUseSaveDefault")));
}

TEST_F(SnipSavingTest, theNameIsThatOfTheMomentOfTheAnswer) {
    flow->saveSnip(picture(), noted());
    time.advance(5s);
    dialog().saveHere();
    settle();
    EXPECT_THAT(filesIn(documents()), ElementsAre(text("snip_2026-01-31_21.00.05.png")));
}

TEST_F(SnipSavingTest, saveHereAsDefaultTurnsTheDialogOffAndLeavesTheFolderPreferenceAlone) {
    flow->saveSnip(picture(), noted());
    dialog().saveHere();
    settle();
    EXPECT_TRUE(isDefault());
    EXPECT_FALSE(defaults.contains(text("snipSaveDirectoryPath")));
    flow->saveSnip(picture(), noted());
    EXPECT_FALSE(flow->isSaveDialogShown());
    settle();
    EXPECT_THAT(answers, ElementsAre(true, true));
}

TEST_F(SnipSavingTest, aSaveHereThatFailsDoesNotBecomeTheDefault) {
    writeFile(documents(), "in the way");
    flow->saveSnip(picture(), noted());
    dialog().saveHere();
    settle();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_FALSE(isDefault());
}

TEST_F(SnipSavingTest, cancellingTheDialogSavesNothing) {
    flow->saveSnip(picture(), noted());
    dialog().cancel();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_FALSE(flow->isSaveDialogShown());
    settle();
    EXPECT_THAT(filesIn(documents()), IsEmpty());
    time.advance(1s);
    EXPECT_EQ(windows.living(), 0);
}

TEST_F(SnipSavingTest, aDialogThatTheDesktopClosesIsCancelled) {
    flow->showSnipPreview(picture());
    card().pressSave();
    static_cast<FakePanelWindows::Window *>(flow->saveDialogWindow())->closeFromOutside();
    settle();
    EXPECT_FALSE(flow->isSaveDialogShown());
    EXPECT_FALSE(card().isSaved());
    card().pressSave(); // it asks again
    EXPECT_TRUE(flow->isSaveDialogShown());
    EXPECT_THAT(filesIn(documents()), IsEmpty());
}

TEST_F(SnipSavingTest, aDialogIsAnsweredOnce) {
    flow->saveSnip(picture(), noted());
    SnipSaveDialogModel &model = dialog();
    model.saveHere();
    model.saveHere();
    model.cancel();
    model.chooseFolder();
    time.advance(50ms);
    settle();
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_FALSE(panels.isOpen());
    EXPECT_EQ(filesIn(documents()).size(), 1);
}

TEST_F(SnipSavingTest, aSecondDialogTakesTheFirstAwayAtOnceAndFailsItsSave) {
    flow->saveSnip(picture(), noted());
    flow->saveSnip(picture(), noted());
    EXPECT_THAT(answers, ElementsAre(false));
    time.runPending();
    EXPECT_EQ(windows.living(), 1);
    dialog().saveHere();
    settle();
    EXPECT_THAT(answers, ElementsAre(false, true));
}

// The panel.

TEST_F(SnipSavingTest, changeFolderOpensAPanelATwentiethAfterTheDialogHasGone) {
    flow->saveSnip(picture(), noted());
    dialog().chooseFolder();
    EXPECT_FALSE(flow->isSaveDialogShown());
    time.advance(49ms);
    EXPECT_EQ(windows.living(), 0); // without a fade
    EXPECT_FALSE(panels.isOpen());
    time.advance(1ms);
    EXPECT_THAT(events, ElementsAre(text("activate")));
    EXPECT_THAT(panels.savePanels(), ElementsAre(SavePanel{.title = text("Save Snip"),
                                                           .prompt = text("Save"),
                                                           .fileName = firstName,
                                                           .directory = documents(),
                                                           .filter = text("PNG (*.png)")}));
}

TEST_F(SnipSavingTest, thePanelSavesUnderItsNameAndRemembersItsFolder) {
    flow->saveSnip(picture(), noted());
    dialog().setUseAsDefault(false);
    dialog().chooseFolder();
    choose(home.filePath(text("my picture.png")));
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_EQ(QImage(home.filePath(text("my picture.png"))).size(), QSize(40, 30));
    EXPECT_EQ(storedFolder(), home.path());
    EXPECT_FALSE(isDefault());
}

TEST_F(SnipSavingTest, thePanelAsDefaultTurnsTheDialogOff) {
    flow->saveSnip(picture(), noted());
    dialog().chooseFolder();
    choose(home.filePath(text("a.png")));
    EXPECT_TRUE(isDefault());
    flow->saveSnip(picture(), noted());
    settle();
    EXPECT_TRUE(QFileInfo::exists(home.filePath(firstName)));
}

TEST_F(SnipSavingTest, cancellingThePanelChangesNothing) {
    flow->saveSnip(picture(), noted());
    dialog().chooseFolder();
    time.advance(50ms);
    panels.cancel();
    time.runPending();
    settle();
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_FALSE(defaults.contains(text("snipSaveDirectoryPath")));
    EXPECT_FALSE(isDefault());
}

TEST_F(SnipSavingTest, aPanelWhoseFileCannotBeWrittenFailsAndRemembersNothing) {
    flow->saveSnip(picture(), noted());
    dialog().chooseFolder();
    choose(text("/proc/self/a.png"));
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_FALSE(defaults.contains(text("snipSaveDirectoryPath")));
    EXPECT_FALSE(isDefault());
}

// From the card.

TEST_F(SnipSavingTest, cancellingThePanelLeavesTheCardsButtonAndItsCountdown) {
    flow->showSnipPreview(picture());
    time.advance(1s);
    card().pressSave();
    dialog().chooseFolder();
    time.advance(50ms);
    panels.cancel();
    time.runPending();
    EXPECT_FALSE(card().isSaved());
    EXPECT_TRUE(card().isCountingDown());
    EXPECT_NEAR(card().remaining(), 5.95, 1e-9);
    time.advance(5950ms);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipSavingTest, aSavedCardGoesASecondLater) {
    saveWithoutAsking();
    flow->showSnipPreview(picture());
    card().pressSave();
    settle();
    EXPECT_TRUE(card().isSaved());
    time.advance(999ms);
    EXPECT_TRUE(flow->isPreviewShown());
    time.advance(1ms);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipSavingTest, aCardThatGoesWhileItsDialogIsOpenDoesNotStopTheSave) {
    flow->showSnipPreview(picture());
    card().pressSave();
    time.advance(8s);
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_TRUE(flow->isSaveDialogShown());
    dialog().saveHere();
    settle();
    time.advance(2s);
    EXPECT_EQ(filesIn(documents()).size(), 1);
}

TEST_F(SnipSavingTest, theDismissalOfASavedCardDoesNotTouchTheNextOne) {
    saveWithoutAsking();
    flow->showSnipPreview(picture());
    card().pressSave();
    settle();
    flow->showSnipPreview(picture());
    time.advance(1s);
    EXPECT_TRUE(flow->isPreviewShown());
}

// By itself.

TEST_F(SnipSavingTest, anAutomaticSaveAsksNothingAndTellsItsPath) {
    const auto output = outputOf([this] {
        flow->autoSaveSnip(picture());
        flow->autoSaveSnip(picture());
        settle();
    });
    const std::string line = "Auto-saved snip to: " + documents().toStdString() + "/";
    EXPECT_EQ(output, line + firstName.toStdString() + "\n" + line + secondName.toStdString() + "\n");
    EXPECT_FALSE(flow->isSaveDialogShown());
    EXPECT_EQ(filesIn(documents()).size(), 2);
}

TEST_F(SnipSavingTest, anAutomaticSaveThatFailsIsSilent) {
    writeFile(documents(), "in the way");
    EXPECT_EQ(outputOf([this] {
                  flow->autoSaveSnip(picture());
                  settle();
              }),
              "");
}

} // namespace
} // namespace tavrine
