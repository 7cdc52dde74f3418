// The panels for files, under one contract over the fake and over Qt's dialogs without a display.

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/QtFilePanels.h"
#include "support/Eventually.h"
#include "support/ReadOnlyFolder.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakeDesk {
    FilePanels &panels() { return fake; }
    bool isOpen() { return fake.isOpen(); }
    void choose(const QString &path) { fake.choose(path); }
    void cancel() { fake.cancel(); }
    void settle() { time.runPending(); }
    VirtualTime time;
    FakeFilePanels fake{time};
};

QFileDialog *shownDialog() {
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *dialog = qobject_cast<QFileDialog *>(widget); dialog && dialog->isVisible())
            return dialog;
    return nullptr;
}

QMessageBox *shownQuestion() {
    for (QWidget *widget : QApplication::topLevelWidgets())
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            return box;
    return nullptr;
}

/// Types the name and presses the button, as a person does.
void typeAndAccept(const QString &name) {
    QFileDialog *dialog = shownDialog();
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QLineEdit *>(text("fileNameEdit"))->setText(name);
    const auto *buttons = dialog->findChild<QDialogButtonBox *>();
    QPushButton *accept = buttons->button(dialog->acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save
                                                                                          : QDialogButtonBox::Open);
    accept->setEnabled(true);
    accept->click();
}

struct QtDesk {
    FilePanels &panels() { return real; }
    bool isOpen() { return shownDialog() != nullptr; }
    void choose(const QString &path) { typeAndAccept(path); }
    void cancel() { shownDialog()->reject(); }
    void settle() { letPass(std::chrono::milliseconds(20)); }
    QList<QPointer<QWidget>> prepared;
    QtFilePanels real{[this](QWidget &window) {
        EXPECT_FALSE(window.isVisible());
        prepared.append(&window);
    }};
};

/// What all panels keep.
template <class Desk>
class FilePanelsContract : public testing::Test {
protected:
    FilePanels::Answer noted() {
        return [this](const std::optional<QString> &path) { answers.append(path); };
    }
    SavePanel savePanel() {
        return {.title = text("Save Snip"),
                .prompt = text("Save"),
                .fileName = text("snip.png"),
                .directory = folder.path(),
                .filter = text("PNG (*.png)")};
    }
    OpenPanel folderPanel() {
        return {.title = text("Choose Save Folder"),
                .prompt = text("Select"),
                .directory = folder.path(),
                .filter = {},
                .choosesDirectories = true};
    }
    Desk desk;
    QTemporaryDir folder;
    QList<std::optional<QString>> answers;
};

using Desks = testing::Types<FakeDesk, QtDesk>;
TYPED_TEST_SUITE(FilePanelsContract, Desks);

TYPED_TEST(FilePanelsContract, theChosenPathIsTheAnswerAndComesOnceInALaterTurn) {
    const QString path = this->folder.filePath(text("other.png"));
    this->desk.panels().runSavePanel(this->savePanel(), this->noted());
    EXPECT_TRUE(this->desk.isOpen());
    this->desk.choose(path);
    EXPECT_TRUE(this->answers.isEmpty());
    this->desk.settle();
    EXPECT_THAT(this->answers, testing::ElementsAre(path));
    EXPECT_FALSE(this->desk.isOpen());
    EXPECT_FALSE(QFile::exists(path));
}

TYPED_TEST(FilePanelsContract, aCancelledPanelAnswersNone) {
    this->desk.panels().runSavePanel(this->savePanel(), this->noted());
    this->desk.cancel();
    this->desk.settle();
    this->desk.panels().runOpenPanel(this->folderPanel(), this->noted());
    this->desk.cancel();
    this->desk.settle();
    EXPECT_THAT(this->answers, testing::ElementsAre(std::nullopt, std::nullopt));
}

TYPED_TEST(FilePanelsContract, aFolderIsChosen) {
    QDir(this->folder.path()).mkdir(text("inner"));
    this->desk.panels().runOpenPanel(this->folderPanel(), this->noted());
    this->desk.choose(this->folder.filePath(text("inner")));
    this->desk.settle();
    EXPECT_THAT(this->answers, testing::ElementsAre(this->folder.filePath(text("inner"))));
}

TYPED_TEST(FilePanelsContract, anExistingFileIsChosen) {
    QFile file(this->folder.filePath(text("picture.png")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    this->desk.panels().runOpenPanel(
        {.title = text("Open"), .prompt = {}, .directory = this->folder.path(), .filter = text("Images (*.png *.jpg)")},
        this->noted());
    this->desk.choose(file.fileName());
    this->desk.settle();
    EXPECT_THAT(this->answers, testing::ElementsAre(file.fileName()));
}

TYPED_TEST(FilePanelsContract, aSecondPanelIsNotShownAndAnswersNone) {
    this->desk.panels().runSavePanel(this->savePanel(), this->noted());
    bool isSecondAnswered = false;
    this->desk.panels().runOpenPanel(this->folderPanel(), [&](const auto &path) {
        EXPECT_EQ(path, std::nullopt);
        isSecondAnswered = true;
    });
    EXPECT_FALSE(isSecondAnswered);
    this->desk.settle();
    EXPECT_TRUE(isSecondAnswered);
    EXPECT_TRUE(this->answers.isEmpty());
    this->desk.choose(this->folder.filePath(text("a.png")));
    this->desk.settle();
    EXPECT_EQ(this->answers.size(), 1);
}

TYPED_TEST(FilePanelsContract, theNextPanelMayBeAskedForWithinTheAnswer) {
    this->desk.panels().runSavePanel(this->savePanel(), [this](const auto &) {
        this->desk.panels().runSavePanel(this->savePanel(), this->noted());
    });
    this->desk.cancel();
    this->desk.settle();
    EXPECT_TRUE(this->desk.isOpen());
    this->desk.cancel();
    this->desk.settle();
    EXPECT_THAT(this->answers, testing::ElementsAre(std::nullopt));
}

// Qt's dialogs alone.

class QtFilePanelsTest : public FilePanelsContract<QtDesk> {
protected:
    void makeFile(const QString &name) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("old");
    }
};

TEST_F(QtFilePanelsTest, thePanelShowsWhatItWasGiven) {
    desk.panels().runSavePanel(savePanel(), noted());
    const QFileDialog *dialog = shownDialog();
    EXPECT_EQ(dialog->windowTitle(), text("Save Snip"));
    EXPECT_EQ(dialog->labelText(QFileDialog::Accept), text("Save"));
    EXPECT_EQ(dialog->directory().absolutePath(), folder.path());
    EXPECT_EQ(dialog->selectedFiles(), QStringList(folder.filePath(text("snip.png"))));
    EXPECT_FALSE(dialog->isModal());
}

TEST_F(QtFilePanelsTest, aDialogAndItsQuestionsArePreparedBeforeTheyAreShown) {
    makeFile(text("old.png"));
    desk.panels().runSavePanel(savePanel(), noted());
    typeAndAccept(text("old.png"));
    EXPECT_THAT(desk.prepared, testing::ElementsAre(shownDialog(), shownQuestion()));
    shownQuestion()->reject();
    desk.cancel();
    desk.settle();
    desk.panels().runOpenPanel({}, noted());
    EXPECT_EQ(desk.prepared.last(), shownDialog());
}

TEST_F(QtFilePanelsTest, aNameThatEndsInNoneOfTheSuffixesGetsTheFirst) {
    for (const char *name : {"a", "snip_2026-01-31_12.00.05", "b.jpg", "c.PNG"}) {
        desk.panels().runSavePanel(savePanel(), noted());
        desk.choose(text(name));
        desk.settle();
    }
    EXPECT_THAT(answers, testing::ElementsAre(folder.filePath(text("a.png")),
                                              folder.filePath(text("snip_2026-01-31_12.00.05.png")),
                                              folder.filePath(text("b.jpg.png")), folder.filePath(text("c.PNG"))));
}

TEST_F(QtFilePanelsTest, aFileIsReplacedOnlyAfterAQuestion) {
    makeFile(text("a.png"));
    desk.panels().runSavePanel(savePanel(), noted());
    desk.choose(text("a"));
    desk.settle();
    ASSERT_NE(shownQuestion(), nullptr);
    shownQuestion()->button(QMessageBox::Cancel)->click();
    desk.settle();
    EXPECT_TRUE(desk.isOpen());
    EXPECT_TRUE(answers.isEmpty());
    desk.choose(text("a"));
    for (QAbstractButton *button : shownQuestion()->buttons())
        if (shownQuestion()->buttonRole(button) == QMessageBox::AcceptRole) {
            button->click();
            break;
        }
    desk.settle();
    EXPECT_THAT(answers, testing::ElementsAre(folder.filePath(text("a.png"))));
}

TEST_F(QtFilePanelsTest, aFileInAFolderThatIsNotThereIsNotTaken) {
    desk.panels().runSavePanel(savePanel(), noted());
    desk.choose(text("missing/a.png"));
    desk.settle();
    ASSERT_NE(shownQuestion(), nullptr);
    shownQuestion()->button(QMessageBox::Ok)->click();
    desk.settle();
    EXPECT_TRUE(desk.isOpen());
    EXPECT_TRUE(answers.isEmpty());
}

TEST_F(QtFilePanelsTest, aFileThatCannotBeWrittenIsNotTaken) {
    QDir(folder.path()).mkdir(text("sealed"));
    const ReadOnlyFolder sealed(folder.filePath(text("sealed")));
    for (const QString &path : {folder.filePath(text("sealed/a.png")), text("/proc/a.png")}) {
        desk.panels().runSavePanel(savePanel(), noted());
        desk.choose(path);
        desk.settle();
        ASSERT_NE(shownQuestion(), nullptr) << path.toStdString();
        EXPECT_TRUE(shownQuestion()->text().contains(text("cannot be saved here: ")));
        shownQuestion()->button(QMessageBox::Ok)->click();
        desk.settle();
        EXPECT_TRUE(desk.isOpen());
        EXPECT_TRUE(answers.isEmpty());
        shownDialog()->reject();
        desk.settle();
        answers.clear();
    }
}

TEST_F(QtFilePanelsTest, aPanelForAFolderThatIsGoneStartsAtTheNearestOneAboveIt) {
    SavePanel panel = savePanel();
    panel.directory = folder.filePath(text("gone/deeper"));
    desk.panels().runSavePanel(panel, noted());
    EXPECT_EQ(shownDialog()->directory().absolutePath(), folder.path());
}

TEST_F(QtFilePanelsTest, anOpenPanelWithoutAFolderStartsWhereThePersonWasLast) {
    QDir(folder.path()).mkdir(text("inner"));
    desk.panels().runSavePanel(savePanel(), noted());
    desk.choose(folder.filePath(text("inner/a.png")));
    desk.settle();
    shownDialog();
    desk.panels().runOpenPanel({.title = text("Open"), .prompt = {}, .directory = {}, .filter = {}}, noted());
    ASSERT_NE(shownDialog(), nullptr);
    EXPECT_EQ(shownDialog()->directory().absolutePath(), folder.path());
}

TEST_F(QtFilePanelsTest, filesOfAKindAreOfferedByTheirNamesOrByHowTheyBegin) {
    for (const char *name : {"a.png", "b.JPEG", "c.webp", "d.heic", "e.tiff", "notes.txt", "letter", "sheet.pdf"})
        makeFile(text(name));
    QImage image(2, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(folder.filePath(text("scan")), "PNG"));
    ASSERT_TRUE(image.save(folder.filePath(text("photo.x1")), "JPG"));
    QDir(folder.path()).mkdir(text("inner"));
    desk.panels().runOpenPanel({.title = text("Open"),
                                .prompt = {},
                                .directory = folder.path(),
                                .filter = text("Images (*)"),
                                .kind = text("image/")},
                               noted());
    const auto *list = shownDialog()->findChild<QListView *>(text("listView"));
    const auto names = [list] {
        QStringList all;
        for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
            all.append(list->model()->index(row, 0, list->rootIndex()).data().toString());
        return all;
    };
    // The files' own model appends what it finds, and puts it in order a moment later.
    EXPECT_TRUE(eventually([&] {
        return names().join(u' ') == text("inner a.png b.JPEG c.webp d.heic e.tiff photo.x1 scan");
    })) << names().join(u' ').toStdString();
    EXPECT_EQ(shownDialog()->findChild<QComboBox *>(text("fileTypeCombo"))->currentText(), text("Images"));
    desk.choose(folder.filePath(text("scan")));
    desk.settle();
    EXPECT_THAT(answers, testing::ElementsAre(folder.filePath(text("scan"))));
}

TEST_F(QtFilePanelsTest, panelsThatGoTakeTheirDialogAlongUnanswered) {
    {
        QtFilePanels panels([](QWidget &) {});
        panels.runSavePanel(savePanel(), noted());
        EXPECT_TRUE(desk.isOpen());
    }
    desk.settle();
    EXPECT_FALSE(desk.isOpen());
    EXPECT_TRUE(answers.isEmpty());
}

} // namespace
} // namespace tavrine::test

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
