#pragma once

#include <QtGlobal>

namespace tavrine {

/// The base of the numbers of this program's windows, which are the toolkit's; 0 where it has none. Main thread.
[[nodiscard]] quint32 ownWindows();

} // namespace tavrine
