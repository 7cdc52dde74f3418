#pragma once

#include <QString>

namespace tavrine {

/// Prints one plain line on standard output, at once. The program's diagnostics all go through here.
void printLine(const QString &line);

} // namespace tavrine
