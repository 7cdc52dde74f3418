#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tavrine {

/// Why an upload gave no link.
struct UploadScriptError {
    enum class Kind { syntaxError, runtimeError, timeout, missingFunction, invalidReturnValue };

    Kind kind = Kind::runtimeError;
    QString text;       // of syntaxError and runtimeError
    double seconds = 0; // of timeout

    static UploadScriptError syntaxError(const QString &text) { return {Kind::syntaxError, text, 0}; }
    static UploadScriptError runtimeError(const QString &text) { return {Kind::runtimeError, text, 0}; }
    static UploadScriptError timeout(double seconds) { return {Kind::timeout, {}, seconds}; }
    static UploadScriptError missingFunction() { return {Kind::missingFunction, {}, 0}; }
    static UploadScriptError invalidReturnValue() { return {Kind::invalidReturnValue, {}, 0}; }

    bool operator==(const UploadScriptError &) const = default;
};

/// The text for the person.
[[nodiscard]] QString userMessage(const UploadScriptError &error);

/// What one run gave. A link means success.
struct UploadScriptRunResult {
    std::optional<QString> url{};
    QStringList logs{};
    std::optional<UploadScriptError> error{};

    bool operator==(const UploadScriptRunResult &) const = default;
};

} // namespace tavrine
