#pragma once

#include "ports/MovieWriter.h"

#include <chrono>

namespace tavrine {

/// Movies by TavrineRecorder, a process for each: the encoders stay out of this one, and a movie outlives it. Nothing
/// is started before the first picture.
class RecorderProcesses final : public MovieWriters {
public:
    /// Of a process that was told to end. It says each time that some megabytes have reached the disk, so that a disk
    /// of 400 kB/s is waited for; an encoder that stands still is not.
    static constexpr std::chrono::seconds longestSilence{10};

    /// `programFolder` is where this program's own file stands.
    explicit RecorderProcesses(const QString &programFolder, std::chrono::milliseconds patience = longestSilence)
        : m_program(programFolder + QStringLiteral("/TavrineRecorder")), m_patience(patience) {}

    /// The file is this person's alone. One that stands there already is left alone, with an error.
    [[nodiscard]] std::variant<QString, std::unique_ptr<MovieWriter>> makeWriter(const QString &path) override;

private:
    QString m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace tavrine
