#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tavrine {

/// Why a person's upload script gave no link. A plain value.
struct UploadScriptError {
    enum class Kind { syntaxError, runtimeError, timeout, missingFunction, invalidReturnValue };

    [[nodiscard]] static UploadScriptError syntaxError(const QString &message) { return {Kind::syntaxError, message}; }
    [[nodiscard]] static UploadScriptError runtimeError(const QString &message) {
        return {Kind::runtimeError, message};
    }
    [[nodiscard]] static UploadScriptError timeout(double seconds) { return {Kind::timeout, {}, seconds}; }
    [[nodiscard]] static UploadScriptError missingFunction() { return {Kind::missingFunction}; }
    [[nodiscard]] static UploadScriptError invalidReturnValue() { return {Kind::invalidReturnValue}; }

    bool operator==(const UploadScriptError &) const = default;

    Kind kind = Kind::runtimeError;
    QString message{};    ///< the engine's or the script's words: of a syntax error and of a runtime error
    double seconds = 0.0; ///< the limit: of a time-out
};

/// The sentence that the person reads.
[[nodiscard]] QString userMessage(const UploadScriptError &error);

/// What one run of the script came to. With a link there is no error.
struct UploadScriptRunResult {
    std::optional<QString> url{};
    QStringList logs{};
    std::optional<UploadScriptError> error{};
    bool operator==(const UploadScriptRunResult &) const = default;
};

} // namespace tavrine
