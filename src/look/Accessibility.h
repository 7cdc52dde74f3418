#pragma once

#include <QAccessible>

class QWidget;

namespace tavrine::look {

/// What a screen reader takes a painted widget for: words, a group, a picture, a line between two groups. A widget
/// without a role, and without anything to press, is nothing to it. Controls have their role by themselves.
void setRole(QWidget &widget, QAccessible::Role role);

/// Brings controls, and widgets with a role, before screen readers. Costs nothing until there is one.
void installAccessibility();

} // namespace tavrine::look
