#pragma once

#include "capture/editor/EditorLandingModel.h"

#include <QWidget>

class QVBoxLayout;

namespace tavrine {

namespace look {
class Button;
class Label;
} // namespace look

class RecentStripView;

/// What the editor's window shows before it has a picture: a place to drop one, buttons to choose or paste one, and the
/// recent ones. It paints its model and hands it clicks and drops.
///
/// Belongs to the container; lives on the main thread.
class TavrineEditorLandingView : public QWidget {
    Q_OBJECT

public:
    TavrineEditorLandingView(EditorLandingModel::Ports ports, EditorLandingModel::History history,
                             EditorLandingModel::Actions actions, QWidget *parent = nullptr);
    ~TavrineEditorLandingView() override;

    [[nodiscard]] EditorLandingModel &model() { return m_model; }
    /// Without the recent ones, for which a low screen has no room.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void build();
    [[nodiscard]] QWidget *makeHeader();
    [[nodiscard]] QWidget *makeDropArea();
    [[nodiscard]] QWidget *makeRecent();
    void showRecent();
    void fitHeight();

    EditorLandingModel m_model;
    QVBoxLayout *m_drop = nullptr;
    QVBoxLayout *m_recentPlace = nullptr;
    look::Button *m_paste = nullptr;
    QWidget *m_recent = nullptr;
    QWidget *m_scrollButtons = nullptr;
    look::Label *m_noneYet = nullptr;
    RecentStripView *m_strip = nullptr;
};

} // namespace tavrine
