#include "capture/editor/TavrineEditorContainerView.h"

#include "look/ApplicationIcon.h"

#include <QBoxLayout>

#include <array>

namespace tavrine {

TavrineEditorContainerView::TavrineEditorContainerView(Parts parts, QWidget *parent)
    : QWidget(parent), m_parts(std::move(parts)) {
    setWindowIcon(look::applicationIcon());
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    const EditorModel::Ports &ports = m_parts.ports;
    m_landing = new TavrineEditorLandingView(
        {ports.time, ports.pasteboard, ports.filePanels, ports.imageCoder}, m_parts.history,
        {.selectImage = [this](const QImage &image) { select(image); }, .close = m_parts.close}, this);
    place(m_landing);
}

void TavrineEditorContainerView::select(const QImage &image) {
    for (QWidget *former : std::array<QWidget *, 2>{m_editor, m_landing}) {
        if (!former)
            continue;
        layout()->removeWidget(former);
        former->hide();
        former->deleteLater(); // what asked for the new picture is one of its children
    }
    m_landing = nullptr;
    m_editor =
        new EditorView(image, m_parts.ports,
                       {.openNewImage = [this](const QImage &opened) { select(opened); }, .close = m_parts.close},
                       m_parts.hooks, this);
    place(m_editor);
}

void TavrineEditorContainerView::place(QWidget *view) {
    layout()->addWidget(view);
    layout()->activate(); // now, so that nothing is painted at another size first
    setFocusProxy(view);
    view->show();
    view->setFocus();
}

void TavrineEditorContainerView::historyChanged() {
    if (m_landing)
        m_landing->model().historyChanged();
}

void TavrineEditorContainerView::thumbnailArrived(const QString &fileName) {
    if (m_landing)
        m_landing->model().thumbnailArrived(fileName);
}

} // namespace tavrine
