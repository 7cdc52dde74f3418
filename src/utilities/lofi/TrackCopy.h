#pragma once

#include "base/FileResult.h"

#include <QString>

#include <functional>

namespace tavrine {

/// Copies the plain file at `from` to `to`, for the person alone. The copy has its name when it is whole, and replaces
/// what stood there in one step; after a failure nothing has changed. Where the file system can share blocks it takes
/// no time, elsewhere the kernel copies. `isStopped` is asked now and then; once it is true the result is ECANCELED.
///
/// Any thread; it may take minutes.
[[nodiscard]] FileResult copyWholeFile(const QString &from, const QString &to, const std::function<bool()> &isStopped);

} // namespace tavrine
