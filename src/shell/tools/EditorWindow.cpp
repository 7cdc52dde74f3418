#include "shell/tools/EditorWindow.h"

#include "base/DesktopWords.h"
#include "capture/editor/TavrineEditorContainerView.h"
#include "clipboard/ClipboardManager.h"
#include "clipboard/ClipboardRowActions.h"

namespace tavrine {
namespace {

constexpr QSize smallestSize(480, 320); // all buttons of the bars show, and some of the picture

EditorLandingModel::History historyOf(ClipboardManager &manager) {
    return {.images =
                [&manager] {
                    std::vector<RecentImage> images;
                    for (const ClipboardItem &item : manager.history()) {
                        if (item.imageFileName)
                            images.push_back({*item.imageFileName, item.date});
                    }
                    return images;
                },
            .cachedThumbnail = [&manager](const QString &name) { return manager.thumbnailCache().object(name); },
            .makeThumbnail =
                [&manager](const QString &name) {
                    ClipboardItem item;
                    item.imageFileName = name;
                    return clipboardRow::thumbnail(manager, item);
                },
            .loadImage = [&manager](const QString &name) { return manager.loadImage(name); }};
}

std::unique_ptr<QWidget> makeContent(const EditorFlow::Window &window, const EditorWindowParts &parts,
                                     const std::function<void()> &close) {
    if (!window.hasLanding)
        return std::make_unique<EditorView>(window.image.value_or(QImage()), parts.ports,
                                            EditorView::Actions{.openNewImage = {}, .close = close}, parts.hooks);
    auto container = std::make_unique<TavrineEditorContainerView>(
        TavrineEditorContainerView::Parts{parts.ports, parts.hooks, historyOf(parts.clipboardManager), close});
    if (window.image)
        container->select(*window.image);
    QObject::connect(&parts.clipboardManager, &ClipboardManager::historyChanged, container.get(),
                     &TavrineEditorContainerView::historyChanged);
    QObject::connect(&parts.clipboardManager, &ClipboardManager::thumbnailMade, container.get(),
                     &TavrineEditorContainerView::thumbnailArrived);
    return container;
}

} // namespace

std::unique_ptr<QWidget> makeEditorWindow(const EditorFlow::Window &window, const EditorWindowParts &parts,
                                          const std::function<void()> &close) {
    std::unique_ptr<QWidget> widget = makeContent(window, parts, close);
    widget->setWindowTitle(inDesktopWords(window.title));
    widget->setAttribute(Qt::WA_QuitOnClose, false);
    widget->setMinimumSize(smallestSize);
    const QRect place = parts.toolkitRect(window.frame).toRect();
    widget->resize(place.size());
    widget->move(place.topLeft());
    return widget;
}

} // namespace tavrine
