#pragma once

#include "ports/StatusItem.h"

#include <QColor>
#include <QPainterPath>
#include <QString>

namespace tavrine {

/// The symbol "MenuBarIcon", filled, in a square of 18 points with the origin at the upper left: a clipboard that
/// smiles.
[[nodiscard]] QPainterPath menuBarSymbol();

/// "#RRGGBB" as a colour; the system's blue for any other text.
[[nodiscard]] QColor indicatorColor(const QString &text);

/// What the status item shows when no figures of the speed meter take its place: the symbol as a template, or, while
/// the machine is kept awake and the person wants that to be seen, the symbol in white on a pill of `color`.
[[nodiscard]] StatusImage statusIcon(bool isAwake, bool showsIndicator, const QString &color);

} // namespace tavrine
