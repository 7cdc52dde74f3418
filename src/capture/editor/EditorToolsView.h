#pragma once

#include <QWidget>

#include <vector>

namespace tavrine {

namespace look {
class Button;
class Label;
} // namespace look

class EditorModel;
class EditorStageView;
class ToolButton;

/// The bar under the picture: the tools, their colour, the next stamp's number, and how large the picture is shown. In
/// a narrow window the last two stand in a row of their own. Belongs to the editor's view; lives on the main thread.
class EditorToolsView : public QWidget {
    Q_OBJECT

public:
    static constexpr int barHeight = 56;
    static constexpr int heightOfTwoRows = 92;

    /// Both outlive the view.
    EditorToolsView(EditorModel &model, EditorStageView &stage, QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] int widthOfOneRow() const;
    void arrange(bool inOneRow);
    void makeTools();
    [[nodiscard]] QWidget *makeStepper();
    [[nodiscard]] QWidget *makeZoom();
    void showTool();
    void showStampNumber();
    void showZoom();

    EditorModel &m_model;
    EditorStageView &m_stage;
    QWidget *m_tools = nullptr;
    QWidget *m_zoom = nullptr;
    QWidget *m_color = nullptr;
    std::vector<ToolButton *> m_buttons;
    QWidget *m_stepper = nullptr;
    look::Button *m_decrease = nullptr;
    look::Label *m_number = nullptr;
    int m_shownNumber = 1;
    look::Button *m_percent = nullptr;
    look::Button *m_fit = nullptr;
};

} // namespace tavrine
