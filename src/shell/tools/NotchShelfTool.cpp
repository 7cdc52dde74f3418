#include "shell/tools/NotchShelfTool.h"

#include "base/OnMainThread.h"
#include "look/FittingWindow.h"
#include "shelf/DropDetectionView.h"
#include "shelf/NotchShape.h"
#include "shelf/NotchShelfView.h"
#include "shelf/NotchWindowController.h"
#include "shell/Shell.h"

#include <QFileInfo>

#include <thread>

namespace tavrine {
namespace {

/// On a thread of its own that nobody waits for: the file's system may hang, also while the program ends. A link is
/// there though it leads nowhere.
void fileExists(const QString &path, std::function<void(bool)> answer) {
    std::thread([path, answer = std::move(answer)]() mutable {
        const QFileInfo file(path);
        const bool exists = file.exists() || file.isSymLink();
        onMainThread([exists, answer = std::move(answer)] { answer(exists); });
    }).detach();
}

/// What stands in the window: the view that takes drops, and in it the one that shows what is held.
QWidget *makeContent(Desktop &desktop, NotchViewModel &model, std::function<void()> dismiss) {
    auto *const content = new DropDetectionView(model, desktop.time(), desktop.dragging());
    content->setContent(new NotchShelfView(model,
                                           {.time = desktop.time(),
                                            .icons = desktop.fileIcons(),
                                            .dragging = desktop.dragging(),
                                            .pasteboard = desktop.pasteboard(),
                                            .urls = desktop.urlOpener()},
                                           std::move(dismiss)));
    return content;
}

} // namespace

NotchShelfTool::NotchShelfTool(Shell &shell) : m_shell(shell) {}
NotchShelfTool::~NotchShelfTool() {
    close();
}

void NotchShelfTool::close() {
    if (m_notchController)
        setCoveredPlace({});
    m_notchController.reset();
}

void NotchShelfTool::launch(bool isOn) {
    if (isOn)
        setOn(true);
}

void NotchShelfTool::setOn(bool isOn) {
    if (!isOn) {
        close();
        return;
    }
    if (m_notchController)
        return;
    Desktop &desktop = m_shell.desktop();
    m_notchController = std::make_unique<NotchWindowController>(
        NotchWindowController::Ports{.model = {desktop.time(), desktop.systemSounds(), desktop.fileIcons(), fileExists},
                                     .screens = desktop.screens(),
                                     .eventMonitors = desktop.eventMonitors(),
                                     .edgeWindows = desktop.edgeWindows(),
                                     .dragPasteboards = desktop.dragPasteboards(),
                                     .sessionNotices = desktop.sessionNotices()},
        NotchWindowController::Views{.content =
                                         [&desktop](NotchViewModel &model, std::function<void()> dismiss) {
                                             return makeContent(desktop, model, std::move(dismiss));
                                         },
                                     .outline = notchOutline});
    QObject::connect(&m_notchController->viewModel(), &NotchViewModel::fileIsGone, m_notchController.get(),
                     [this](const QString &name) {
                         m_shell.showToast(QString::fromUtf8("“%1” is no longer where it was").arg(name),
                                           QStringLiteral("exclamationmark.triangle.fill"));
                     });
    m_notchController->showWindow();
    setCoveredPlace([this] { return bandOnScreen(); });
}

/// Empty without a screen.
QRect NotchShelfTool::bandOnScreen() const {
    if (m_notchController->pinnedScreen().frame.isEmpty())
        return {};
    return m_shell.desktop().screens().toolkitRect(m_notchController->notchRect()).toAlignedRect();
}

void NotchShelfTool::openWithKeyboard() {
    if (m_notchController && !m_notchController->openWithKeyboard())
        m_shell.showToast(QStringLiteral("The shelf is empty"), QStringLiteral("tray.fill"));
}

} // namespace tavrine
