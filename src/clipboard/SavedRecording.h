#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

/// The file name, without extension, for a recording that the person called `name`: the trimmed name with "_" in place
/// of every character that is no letter, mark or digit; a fresh UUID when there is no name.
[[nodiscard]] QString recordingBaseName(const std::optional<QString> &name);

/// The path in `folder` of the movie at `source`, under `name` made fit to be a file name. A path that `isTaken` gets
/// six random characters more.
[[nodiscard]] QString recordingTarget(const QString &source, const QString &folder, const std::optional<QString> &name,
                                      const std::function<bool(const QString &path)> &isTaken);

/// What the history calls a recording.
[[nodiscard]] QString recordingCaption(const std::optional<QString> &name);

} // namespace tavrine
