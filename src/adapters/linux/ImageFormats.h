#pragma once

#include <QString>

namespace tavrine {

/// Makes the program's own image formats known to the toolkit when the file at `path` is in one of them, and not
/// before: the toolkit loads every format that it knows whenever it looks into a file. Any thread.
void prepareImageFormatOf(const QString &path);

} // namespace tavrine
