// Captures on a real display: a stand-in for the region tool, real panels, a real clipboard and a foreign program.
#include "adapters/fake/FakeKeychain.h"
#include "adapters/linux/PosixTaskLauncher.h"
#include "adapters/linux/QtFilePanels.h"
#include "adapters/linux/QtTime.h"
#include "adapters/x11/X11ApplicationActivator.h"
#include "adapters/x11/X11PanelWindow.h"
#include "adapters/x11/X11Pasteboard.h"
#include "adapters/x11/X11Screens.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "base/UserDefaults.h"
#include "capture/ScreenSnipper.h"
#include "capture/SnipFlow.h"
#include "capture/SnipSaveDialogView.h"
#include "capture/SnippetPreviewCard.h"
#include "support/Eventually.h"
#include "support/Program.h"
#include "support/TestKeyboard.h"
#include "upload/Uploads.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using test::eventually;
using test::letPass;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

class SnipOnX11 : public ::testing::Test {
protected:
    SnipOnX11() {
        QImage picture(300, 200, QImage::Format_RGB32);
        picture.fill(QColor(200, 40, 90));
        EXPECT_TRUE(picture.save(home.filePath(text("picture.png"))));
        QDir(home.path()).mkdir(text("Documents"));
        snipper.setOnSnipComplete([this](const QImage &image) { flow->presentSnip(image); });
        flow =
            std::make_unique<SnipFlow>(SnipFlow::Ports{time, defaults, pasteboard, screens, windows, filePanels,
                                                       snipper, screen, queue, folders, uploads, corner},
                                       SnipFlow::Actions{.mayCaptureScreen = {},
                                                         .saveImage = [](const QImage &) { return text("stored.jpg"); },
                                                         .activateApplication = {},
                                                         .openEditorDirectly = [this](const QImage &) { ++editors; },
                                                         .getTextFromSnip = {}},
                                       SnipFlow::Views{.card =
                                                           [this](const auto &model) {
                                                               card = new SnippetPreviewCard(model);
                                                               return card.data();
                                                           },
                                                       .saveDialog =
                                                           [this](const auto &model) {
                                                               dialog = new SnipSaveDialogView(model);
                                                               return dialog.data();
                                                           }});
        keyboard.movePointer(600, 200);
    }
    /// What stands for the region tool: a script that gets the tool's arguments.
    void installTool(const QByteArray &script) {
        QFile file(home.filePath(text("screencapture")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nfor file; do :; done\n" + script + "\n"); // the last argument
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void installPicture() { installTool("cp " + home.filePath(text("picture.png")).toUtf8() + " \"$file\""); }
    bool capture() {
        flow->startSnip();
        return eventually([this] { return flow->isPreviewShown() && card && card->isVisible(); });
    }
    bool ends() {
        return eventually([this] { return !snipper.isSnipping(); });
    }
    void click(QWidget *view, const char *name) {
        for (auto *button : view->findChildren<QAbstractButton *>()) {
            if (button->text() != text(name) && button->toolTip() != text(name))
                continue;
            const QPoint place = button->mapToGlobal(button->rect().center());
            keyboard.click(1, place.x(), place.y());
            return;
        }
        FAIL() << "no button " << name;
    }
    QStringList temporaryFiles() { return QDir(folders.temporary).entryList(QDir::Files | QDir::Hidden); }

    testing::TestKeyboard keyboard;
    QTemporaryDir home;
    Folders folders{.applicationSupport = home.filePath(text("data")),
                    .home = home.path(),
                    .documents = home.filePath(text("Documents")),
                    .temporary = home.filePath(text("cache/Tavrine/tmp"))};
    QtTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("defaults.plist")), time, center};
    X11Pasteboard pasteboard;
    X11Screens screens;
    X11ApplicationActivator activator;
    X11PanelWindows windows{activator};
    QtFilePanels filePanels{[](QWidget &) {}};
    PosixTaskLauncher launcher{home.path()};
    ClearedScreen screen{time};
    ScreenSnipper snipper{{launcher, defaults, time, folders.temporary}};
    SerialQueue queue{text("com.tavrine.snip")};
    FakeKeychain keychain;
    TakenCorner corner;
    Uploads uploads{{.time = time,
                     .defaults = defaults,
                     .center = center,
                     .keychain = keychain,
                     .pasteboard = pasteboard,
                     .workerPath = {},
                     .pngData = {}}};
    QPointer<QWidget> card;
    QPointer<QWidget> dialog;
    int editors = 0;
    std::unique_ptr<SnipFlow> flow;
};

TEST_F(SnipOnX11, theToolsPictureComesOnACardInTheCornerWithoutTheKeyboard) {
    QWidget program;
    program.setGeometry(500, 50, 200, 100);
    program.show();
    program.activateWindow();
    ASSERT_TRUE(eventually([&] { return keyboard.focusedWindow() == program.winId(); }));
    installPicture();
    ASSERT_TRUE(capture());
    const QRect frame = card->window()->geometry();
    EXPECT_EQ(frame.size(), QSize(340, 248));
    EXPECT_EQ(frame.left(), 18);
    EXPECT_EQ(frame.bottom() + 1, screens.screens().first().frame.height() - 18);
    EXPECT_EQ(keyboard.windowAt(frame.center().x(), frame.center().y()), card->window()->winId());
    letPass(200ms);
    EXPECT_EQ(keyboard.focusedWindow(), program.winId());
    EXPECT_EQ(pasteboard.image()->size(), QSize(300, 200));
    EXPECT_TRUE(temporaryFiles().isEmpty());
}

TEST_F(SnipOnX11, thePointerOnTheCardHoldsItAndItsCrossDismissesIt) {
    installPicture();
    ASSERT_TRUE(capture());
    const QRect frame = card->window()->geometry();
    keyboard.movePointer(frame.left() + 6, frame.center().y());
    ASSERT_TRUE(eventually([this] { return flow->previewModel()->isHovering(); }));
    const double left = flow->previewModel()->remaining();
    letPass(300ms);
    EXPECT_EQ(flow->previewModel()->remaining(), left);
    keyboard.movePointer(600, 200);
    ASSERT_TRUE(eventually([&] { return flow->previewModel()->remaining() < left; }));
    click(card, "Dismiss");
    EXPECT_TRUE(eventually([this] { return !card; }));
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipOnX11, aClickOnThePictureOpensTheEditor) {
    installPicture();
    ASSERT_TRUE(capture());
    click(card, "Open in editor");
    EXPECT_TRUE(eventually([this] { return editors == 1 && !card; }));
}

TEST_F(SnipOnX11, saveAsksInADialogThatHasTheKeyboardAndReturnSaves) {
    installPicture();
    ASSERT_TRUE(capture());
    click(card, "Save");
    ASSERT_TRUE(eventually([this] { return dialog && dialog->isVisible(); }));
    ASSERT_TRUE(eventually([this] { return keyboard.focusedWindow() == dialog->window()->winId(); }));
    const QRect available = QApplication::primaryScreen()->availableGeometry();
    EXPECT_LE((dialog->window()->geometry().center() - available.center()).manhattanLength(), 2);
    keyboard.tap(testing::key::returnKey);
    const QDir saved(folders.documents + text("/tavrine"));
    ASSERT_TRUE(eventually([&] { return saved.entryList(QDir::Files).size() == 1; }));
    EXPECT_EQ(QImage(saved.filePath(saved.entryList(QDir::Files).first())).size(), QSize(300, 200));
    EXPECT_TRUE(eventually([this] { return !dialog && !card; }));
    EXPECT_EQ(defaults.get<bool>(text("snipUseSaveDefault")), true);
}

TEST_F(SnipOnX11, changeFolderOpensThePanelAndLeavesTheProgramRunning) {
    installPicture();
    ASSERT_TRUE(capture());
    click(card, "Save");
    ASSERT_TRUE(eventually([this] { return dialog && dialog->isVisible(); }));
    letPass(250ms); // the fade
    click(dialog, "Change Folder");
    QFileDialog *panel = nullptr;
    ASSERT_TRUE(eventually([&] {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *found = qobject_cast<QFileDialog *>(widget); found && found->isVisible())
                panel = found;
        return panel != nullptr;
    }));
    EXPECT_EQ(panel->windowTitle(), text("Save Snip"));
    EXPECT_TRUE(eventually([this] { return !dialog; }));
    panel->reject();
    EXPECT_TRUE(eventually([this] { return flow->previewModel() && !flow->previewModel()->isSaved(); }));
}

TEST_F(SnipOnX11, thePictureIsDraggedIntoAnotherWindowAsAPngFile) {
    struct Target final : QWidget {
        Target() { setAcceptDrops(true); }
        void dragEnterEvent(QDragEnterEvent *event) override { event->acceptProposedAction(); }
        void dropEvent(QDropEvent *event) override {
            urls = event->mimeData()->urls();
            dropped = urls.isEmpty() ? QImage() : QImage(urls.first().toLocalFile());
            asPicture = qvariant_cast<QImage>(event->mimeData()->imageData());
            event->acceptProposedAction();
        }
        QList<QUrl> urls;
        QImage dropped;
        QImage asPicture;
    } target;
    target.setGeometry(700, 100, 300, 300);
    target.show();
    installPicture();
    ASSERT_TRUE(capture());
    letPass(300ms);
    QWidget *thumbnail = nullptr;
    for (auto *button : card->findChildren<QAbstractButton *>())
        if (button->toolTip() == text("Open in editor"))
            thumbnail = button;
    ASSERT_NE(thumbnail, nullptr);
    const QPoint from = thumbnail->mapToGlobal(thumbnail->rect().center());
    const QPoint to = target.mapToGlobal(target.rect().center());
    test::Program hand(text("sh"),
                       {text("-c"), text("xdotool mousemove %1 %2 mousedown 1; sleep 0.1; for i in 1 2 3 4 5 6 7 8; do "
                                         "xdotool mousemove_relative -- %3 %4; sleep 0.05; done; xdotool mousemove %5 "
                                         "%6; sleep 0.3; xdotool mousemove_relative 2 2; sleep 0.2; xdotool mouseup 1")
                                        .arg(from.x())
                                        .arg(from.y())
                                        .arg((to.x() - from.x()) / 8)
                                        .arg((to.y() - from.y()) / 8)
                                        .arg(to.x())
                                        .arg(to.y())});
    ASSERT_TRUE(eventually([&] { return !target.urls.isEmpty(); }));
    EXPECT_EQ(target.dropped.size(), QSize(300, 200));
    EXPECT_EQ(target.dropped.pixelColor(10, 10), QColor(200, 40, 90));
    EXPECT_EQ(target.asPicture.size(), QSize(300, 200));
    EXPECT_TRUE(target.urls.first().toLocalFile().startsWith(folders.temporary));
    EXPECT_TRUE(target.urls.first().fileName().startsWith(text("snip_")));
    EXPECT_EQ(editors, 0); // a drag is no click
    EXPECT_TRUE(flow->isPreviewShown());
}

// The tool misbehaves.

TEST_F(SnipOnX11, aMissingToolIsSilent) {
    flow->startSnip();
    EXPECT_FALSE(snipper.isSnipping());
    letPass(100ms);
    EXPECT_FALSE(flow->isPreviewShown());
}

TEST_F(SnipOnX11, aToolThatIsKilledIsSilent) {
    installTool("cp " + home.filePath(text("picture.png")).toUtf8() + " \"$file\"; kill -KILL $$");
    flow->startSnip();
    EXPECT_TRUE(ends());
    EXPECT_FALSE(flow->isPreviewShown());
    EXPECT_TRUE(temporaryFiles().isEmpty());
}

TEST_F(SnipOnX11, aToolThatLeavesHalfAFileOrATextIsSilent) {
    for (const char *script :
         {"head -c 100 PICTURE >\"$file\"", "echo no picture >\"$file\"", ": >\"$file\"", "exit 0"}) {
        installTool(QByteArray(script).replace("PICTURE", home.filePath(text("picture.png")).toUtf8()));
        flow->startSnip();
        EXPECT_TRUE(ends()) << script;
        EXPECT_FALSE(flow->isPreviewShown()) << script;
        EXPECT_TRUE(temporaryFiles().isEmpty()) << script;
    }
}

TEST_F(SnipOnX11, aHungToolIsEndedByTheNextCapture) {
    installTool("echo $$ >" + home.filePath(text("pid")).toUtf8() + "; exec sleep 60");
    flow->startSnip();
    QFile pid(home.filePath(text("pid")));
    ASSERT_TRUE(eventually([&] { return pid.size() > 1; }));
    ASSERT_TRUE(pid.open(QIODevice::ReadOnly));
    const int hung = pid.readAll().trimmed().toInt();
    EXPECT_TRUE(snipper.isSnipping());
    installPicture();
    ASSERT_TRUE(capture());
    EXPECT_TRUE(eventually([&] { return kill(hung, 0) != 0; }));
}

TEST_F(SnipOnX11, manyCapturesInARowLeaveOneCardAndNoFiles) {
    installPicture();
    for (int i = 0; i < 10; ++i)
        flow->startSnip();
    ASSERT_TRUE(eventually([this] { return flow->isPreviewShown(); }));
    letPass(500ms);
    EXPECT_TRUE(flow->isPreviewShown());
    EXPECT_TRUE(eventually([this] { return temporaryFiles().isEmpty(); }));
    int cards = 0;
    for (const QWidget *widget : QApplication::topLevelWidgets())
        cards += widget->isVisible() && widget->size() == QSize(340, 248) ? 1 : 0;
    EXPECT_EQ(cards, 1);
}

} // namespace
} // namespace tavrine
