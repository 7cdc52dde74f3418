#pragma once

#include <QString>
#include <QtPlugin>

#include <memory>
#include <optional>

namespace tavrine {

/// One world of a JavaScript engine. Scripts are only looked at in it, never run.
class ScriptContext {
public:
    virtual ~ScriptContext() = default;

    /// None when `script` can be parsed; otherwise the engine's words, or "Syntax error." where it has none.
    [[nodiscard]] virtual std::optional<QString> syntaxCheck(const QString &script) = 0;

    /// The line of what `syntaxCheck` last complained of, counted from 1; none where the engine does not tell it.
    [[nodiscard]] virtual std::optional<int> errorLine() const { return std::nullopt; }
};

/// The engine, loaded when first used. Main thread.
class ScriptSyntax {
public:
    virtual ~ScriptSyntax() = default;

    /// Null when the engine could not be made.
    [[nodiscard]] virtual std::unique_ptr<ScriptContext> makeContext() = 0;
};

} // namespace tavrine

#define TAVRINE_SCRIPTSYNTAX "tavrine.ScriptSyntax" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::ScriptSyntax, TAVRINE_SCRIPTSYNTAX)
