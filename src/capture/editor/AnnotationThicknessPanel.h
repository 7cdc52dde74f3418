#pragma once

#include "capture/editor/DrawingPath.h"
#include "look/PopoverPanel.h"

#include <functional>

namespace tavrine {

/// The popover of a tool's button: a line of each thickness, the chosen one in the accent's colour. The arrow keys go
/// through them, and Return chooses. Owned by the button.
class AnnotationThicknessPanel : public PopoverPanel {
    Q_OBJECT
public:
    AnnotationThicknessPanel(QWidget *anchor, AnnotationThickness chosen,
                             std::function<void(AnnotationThickness)> choose);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    std::vector<QWidget *> m_choices;
    AnnotationThickness m_chosen;
};

} // namespace tavrine
