#pragma once

#include <QRect>
#include <QString>

class QWidget;

namespace tavrine::look {

/// The one tool tip of the process: a dark label under what it is about, or above it where the screen ends. Main
/// thread.
namespace ToolTip {

/// `area` is in the widget's coordinates. An empty text hides.
void show(QWidget *widget, const QString &text, const QRect &area);
void hide();
[[nodiscard]] bool isShown();

} // namespace ToolTip
} // namespace tavrine::look
