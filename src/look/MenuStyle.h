#pragma once

class QMenu;
class QWidget;

namespace tavrine::look {

/// Gives a menu the ground, the type and the colours of the panels: in the theme of `of`, else of the program. To be
/// called before the menu is shown; what it holds may change at any time.
void dress(QMenu &menu, const QWidget *of = nullptr);

} // namespace tavrine::look
