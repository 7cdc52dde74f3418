#pragma once

#include "base/Date.h"
#include "upload/UploadScriptError.h"

#include <functional>

namespace tavrine {

/// Runs a script on the engine's queue. Called on the main thread and returns at once; `completion` is called once, on
/// the main thread, in a later turn. `imageBase64` is a PNG without line breaks and without a prefix.
using UploadRunner =
    std::function<void(const QString &script, const QString &imageBase64, const QString &fileName, Seconds timeout,
                       std::function<void(const UploadScriptRunResult &)> completion)>;

/// The limit of every run.
inline constexpr Seconds uploadTimeout{30.0};

} // namespace tavrine
