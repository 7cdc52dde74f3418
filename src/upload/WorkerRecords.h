#pragma once

#include "upload/UploadScriptError.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The two records that the program and its upload worker exchange. What the worker wrote is hostile until decoded.
namespace tavrine {

struct WorkerInput {
    QString script;
    QString imageBase64;
    QString fileName;
};

struct WorkerOutput {
    std::optional<QString> url;
    std::optional<QString> errorKind;
    std::optional<QString> errorMessage;
    QStringList logs;

    bool operator==(const WorkerOutput &) const = default;
};

/// The three texts of a larger input would not fit the worker.
inline constexpr qsizetype largestWorkerInput = 128 * 1024 * 1024;
/// Four times what the worker writes at its own limits; a longer record is not decoded.
inline constexpr qsizetype largestWorkerOutput = 8 * 1024 * 1024;

/// JSON in UTF-8; none when it would be larger than `largestWorkerInput`.
[[nodiscard]] std::optional<QByteArray> encode(const WorkerInput &input);

/// None when `bytes` are no such record: no JSON, no "logs", or a member of another type.
[[nodiscard]] std::optional<WorkerOutput> decodeWorkerOutput(const QByteArray &bytes);

/// What a run gave, by its record. A link wins over whatever else is in it.
[[nodiscard]] UploadScriptRunResult runResult(const WorkerOutput &output);

} // namespace tavrine
