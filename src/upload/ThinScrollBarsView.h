#pragma once

class QAbstractScrollArea;

namespace tavrine {

/// Gives the toolkit's own scroll area the thin scroll bars of everything else. To be called again with another theme.
void thinScrollBars(QAbstractScrollArea &area);

} // namespace tavrine
