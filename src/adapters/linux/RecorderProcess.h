#pragma once

#include "ports/MovieWriter.h"

#include <chrono>

namespace tavrine {

/// Movies by TavrineRecorder, a process for each: the encoders stay out of this one, and a movie outlives it. Nothing
/// is started before the first picture.
class RecorderProcesses final : public MovieWriters {
public:
    /// From `finishWriting` to the end of the process. What waits for the disk is 32 MB at most.
    static constexpr std::chrono::seconds longestEnding{30};

    /// `programFolder` is where this program's own file stands.
    explicit RecorderProcesses(const QString &programFolder, std::chrono::milliseconds patience = longestEnding)
        : m_program(programFolder + QStringLiteral("/TavrineRecorder")), m_patience(patience) {}

    /// The file is this person's alone. One that stands there already is left alone, with an error.
    [[nodiscard]] std::variant<QString, std::unique_ptr<MovieWriter>> makeWriter(const QString &path) override;

private:
    QString m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace tavrine
