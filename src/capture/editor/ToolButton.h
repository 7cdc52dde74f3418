#pragma once

#include "capture/editor/AnnotationThicknessPanel.h"
#include "capture/editor/DrawingCanvas.h"
#include "look/Control.h"

namespace tavrine {

/// A button of the tool row: selects its tool, and offers the thicknesses in a popover. Owned by the editor. Disabled
/// as widgets are.
class ToolButton : public look::Control {
    Q_OBJECT
public:
    ToolButton(DrawingTool tool, Binding<DrawingTool> current, Binding<AnnotationThickness> thickness,
               QWidget *parent = nullptr);

    [[nodiscard]] DrawingTool tool() const { return m_tool; }
    [[nodiscard]] bool showsSizePicker() const;
    /// Call it when the selected tool or the thickness was changed from elsewhere.
    void refresh();

    [[nodiscard]] QSize sizeHint() const override { return {34, 34}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paint(QPainter &painter) override;

private:
    void press();
    void setShowsSizePicker(bool isShown);

    DrawingTool m_tool;
    Binding<DrawingTool> m_current;
    Binding<AnnotationThickness> m_thickness;
    QPointer<AnnotationThicknessPanel> m_picker;
};

} // namespace tavrine
