#pragma once

#include <QString>

#include <optional>

namespace tavrine {

/// The file name, without extension, for a recording that the person called `name`: the trimmed name with "_" in place
/// of every character that is no letter, mark or digit; a fresh UUID when there is no name.
[[nodiscard]] QString recordingBaseName(const std::optional<QString> &name);

/// Moves the movie at `source` into `folder`, under `name` made fit to be a file name, and answers its path there. A
/// file that has the name already stays: the newcomer gets six random characters more. Between file systems the movie
/// is copied and the source removed. None when that failed too, and then the source is still there; both failures are
/// told on standard output.
[[nodiscard]] std::optional<QString> moveRecording(const QString &source, const QString &folder,
                                                   const std::optional<QString> &name);

/// What the history calls a recording.
[[nodiscard]] QString recordingCaption(const std::optional<QString> &name);

} // namespace tavrine
