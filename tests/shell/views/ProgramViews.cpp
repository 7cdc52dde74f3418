#include "shell/views/ProgramViews.h"

#include "capture/SnipSaveDialogModel.h"
#include "capture/SnipSaveDialogView.h"
#include "panels/ToastView.h"
#include "ports/Instance.h"
#include "shell/settings/MainAppView.h"

#include <QApplication>

namespace tavrine {
namespace {

QImage photograph() {
    QImage image(480, 320, QImage::Format_RGB32);
    image.fill(QColor(0x3A, 0x6E, 0xC8));
    return image;
}

} // namespace

void ProgramViews::start(ColorScheme scheme) {
    desktop.appearance().set({.colorScheme = scheme});
    m_look.setCompositing(true);
    double age = 0;
    for (const char *content : {"A line of text", "https://www.debian.org/", "mira@example.org", "#7B61FF"})
        database.save({QUuid::createUuid(), text(content), time.now() - Seconds(age += 1000), age<1500, age> 3500, {}});
    database.save({.id = QUuid::createUuid(),
                   .content = text("Image"),
                   .date = time.now() - Seconds(age + 1000),
                   .imageFileName = text("captured.jpg")});
    launch();
    settle();
}

void ProgramViews::settle() {
    for (int round = 0; round < 2; ++round) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        quietly([this] { time.advance(1s); });
    }
}

void ProgramViews::visitOpened(const QString &name, const Visit &visit, const std::function<void()> &open) {
    const QWidgetList before = QApplication::topLevelWidgets();
    quietly(open);
    settle();
    int seen = 0;
    for (QWidget *view : QApplication::topLevelWidgets()) {
        if (before.contains(view) || view->windowType() == Qt::ToolTip)
            continue;
        if (!view->isVisible()) { // the content of a panel
            const QSize wanted = view->sizeHint().expandedTo(view->minimumSize());
            view->resize(wanted.isEmpty() ? QSize(1000, 700) : wanted); // that of the recorder is the screen's
            view->show();
        }
        settle();
        visit(*view, name);
        ++seen;
    }
    EXPECT_GT(seen, 0) << name.toStdString();
}

void ProgramViews::visitSettings(const Visit &visit) {
    desktop.access().setAccessibilityTrusted(false); // so that Home asks for it
    defaults.set(text("cloudUploadEnabled"), true);
    quietly([this] { delegate->openSettings(); });
    auto &view = *qobject_cast<MainAppView *>(window(LargeWindows::Kind::settings));
    view.resize(MainAppView::firstSize);
    view.show();
    for (const SidebarItemText &page : sidebarItemTexts) {
        view.setSelection(page.item);
        settle();
        visit(view, text("settings, ") + text(page.text));
    }
}

void ProgramViews::visitMenu(const Visit &visit) {
    visitOpened(text("menu"), visit, [this] { desktop.statusItem().press({1300, 12}); });
}

void ProgramViews::visitPanels(const Visit &visit) {
    visitOpened(text("search"), visit, [this] { delegate->startedAgain(startAction::clipboard); });
    visitOpened(text("emoji"), visit, [this] { delegate->startedAgain(startAction::emoji); });
    delegate->shell().experienceSettings().setSelectedExperience(ClipboardExperience::classic);
    visitOpened(text("classic"), visit, [this] { delegate->startedAgain(startAction::clipboard); });
}

void ProgramViews::visitEditor(const Visit &visit) {
    visitOpened(text("editor's first page"), visit, [this] { delegate->openEditor(std::nullopt); });
    delegate->shell().largeWindows().window(LargeWindows::Kind::editor)->close();
    settle();
    visitOpened(text("editor"), visit, [this] { delegate->openEditor(photograph()); });
}

void ProgramViews::visitWelcome(const Visit &visit) {
    visitOpened(text("welcome"), visit, [this] { delegate->showOnboarding(); });
}

void ProgramViews::visitCards(const Visit &visit) {
    for (const char *words : {"Copied to clipboard", "Enable Accessibility to insert automatically"}) {
        ToastView toast(text(words), text("checkmark.circle.fill"));
        toast.resize(toast.sizeHint());
        toast.show();
        visit(toast, text("toast"));
    }
    SnipSaveDialogView dialog(
        std::make_shared<SnipSaveDialogModel>(text("/home/ada/Documents/tavrine"), SnipSaveDialogModel::Actions{}));
    dialog.show();
    settle();
    visit(dialog, text("save dialog"));
}

void ProgramViews::visitCapture(const Visit &visit) {
    desktop.access().setScreenCaptureGranted(true);
    visitOpened(text("capture"), visit, [this] {
        delegate->tools().snipping().startCapture();
        const auto task = desktop.taskLauncher().tasks().last();
        ASSERT_TRUE(photograph().save(task->arguments().last()));
        task->finish(0);
        time.runPending();
    });
}

void ProgramViews::visitRecording(const Visit &visit) {
    desktop.access().setScreenCaptureGranted(true);
    visitOpened(text("recording"), visit, [this] { delegate->startedAgain(startAction::record); });
}

} // namespace tavrine
