#include "capture/editor/ToolButton.h"

#include "capture/editor/AnnotationThicknessPanel.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/ToolButtonRule.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QPainter>

namespace tavrine {

ToolButton::ToolButton(DrawingTool tool, Binding<DrawingTool> current, Binding<AnnotationThickness> thickness,
                       QWidget *parent)
    : Control(parent), m_tool(tool), m_current(std::move(current)), m_thickness(std::move(thickness)) {
    setToolTip(labelOf(tool));
    setCheckable(true); // a screen reader tells which one is selected
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QAbstractButton::clicked, this, &ToolButton::press);
    refresh();
}

bool ToolButton::showsSizePicker() const {
    return m_picker && m_picker->isVisible();
}

void ToolButton::refresh() {
    setChecked(m_current.get() == m_tool); // not what the click made of it
    update();
}

void ToolButton::press() {
    const ToolPress pressed = pressedTool(m_tool, m_current.get(), showsSizePicker(), !isEnabled());
    if (pressed.current != m_current.get())
        m_current.set(pressed.current);
    refresh();
    setShowsSizePicker(pressed.showSizePicker);
}

void ToolButton::setShowsSizePicker(bool isShown) {
    if (isShown == showsSizePicker())
        return;
    if (!isShown) {
        m_picker->close();
        return;
    }
    m_picker = new AnnotationThicknessPanel(this, m_thickness.get(), [this](AnnotationThickness chosen) {
        m_thickness.set(chosen);
        update();
    });
    m_picker->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_picker, &PopoverPanel::closed, this, [this] { update(); });
    m_picker->open();
}

void ToolButton::paint(QPainter &painter) {
    const QRectF body = rect();
    const bool isSelected = isChecked();
    look::fillRounded(painter, body, cornerRadius(), ground(isSelected ? theme().accent : QColor(Qt::transparent)));
    const QColor ink = isSelected ? theme().onAccent : look::mixed(theme().secondaryText, theme().text, hoverPart());
    look::paintSymbol(painter, body, iconOf(m_tool), look::symbolsize::large, ink);
}

} // namespace tavrine
