#include "upload/WorkerRecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tavrine {
namespace {

/// JSON can spell halves of surrogate pairs; views and the pasteboard want text.
QString soundText(QString text) {
    if (text.isValidUtf16())
        return text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

/// False when the member is there and is neither a string nor null.
bool readText(const QJsonObject &record, QLatin1String key, std::optional<QString> &text) {
    const QJsonValue value = record.value(key);
    if (value.isString())
        text = soundText(value.toString());
    return value.isString() || value.isNull() || value.isUndefined();
}

UploadScriptError errorOf(const WorkerOutput &output) {
    const QString kind = output.errorKind.value_or(QString());
    if (kind == QLatin1String("syntaxError"))
        return UploadScriptError::syntaxError(output.errorMessage.value_or(QStringLiteral("Syntax error.")));
    if (kind == QLatin1String("missingFunction"))
        return UploadScriptError::missingFunction();
    if (kind == QLatin1String("invalidReturnValue"))
        return UploadScriptError::invalidReturnValue();
    return UploadScriptError::runtimeError(output.errorMessage.value_or(QStringLiteral("Unknown error.")));
}

} // namespace

std::optional<QByteArray> encode(const WorkerInput &input) {
    if (input.script.size() + input.imageBase64.size() + input.fileName.size() > largestWorkerInput)
        return std::nullopt;
    const QJsonObject record{{QStringLiteral("script"), input.script},
                             {QStringLiteral("imageBase64"), input.imageBase64},
                             {QStringLiteral("fileName"), input.fileName}};
    QByteArray json = QJsonDocument(record).toJson(QJsonDocument::Compact);
    return json.isEmpty() || json.size() > largestWorkerInput ? std::nullopt : std::optional(std::move(json));
}

std::optional<WorkerOutput> decodeWorkerOutput(const QByteArray &bytes) {
    if (bytes.size() > largestWorkerOutput)
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject record = document.object();
    WorkerOutput output;
    const QJsonValue logs = record.value(QLatin1String("logs"));
    if (!readText(record, QLatin1String("url"), output.url) ||
        !readText(record, QLatin1String("errorKind"), output.errorKind) ||
        !readText(record, QLatin1String("errorMessage"), output.errorMessage) || !logs.isArray())
        return std::nullopt;
    const QJsonArray lines = logs.toArray();
    output.logs.reserve(lines.size());
    for (const QJsonValue &line : lines) {
        if (!line.isString())
            return std::nullopt;
        output.logs.append(soundText(line.toString()));
    }
    return output;
}

UploadScriptRunResult runResult(const WorkerOutput &output) {
    if (output.url)
        return {output.url, output.logs, std::nullopt};
    return {std::nullopt, output.logs, errorOf(output)};
}

} // namespace tavrine
