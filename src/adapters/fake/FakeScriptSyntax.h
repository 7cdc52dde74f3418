#pragma once

#include "ports/ScriptSyntax.h"

#include <QStringList>

#include <utility>

namespace tavrine {

/// An engine to which every script is good, until the test says what is wrong.
class FakeScriptSyntax final : public ScriptSyntax {
public:
    [[nodiscard]] std::unique_ptr<ScriptContext> makeContext() override {
        ++m_contexts;
        return m_isBroken ? nullptr : std::make_unique<Context>(*this);
    }

    /// No context can be made any more, or again.
    void setBroken(bool isBroken) { m_isBroken = isBroken; }
    /// What every check complains of from now on; none: nothing.
    void setError(std::optional<QString> error, std::optional<int> line = std::nullopt) {
        m_error = std::move(error);
        m_line = line;
    }

    /// The scripts that were looked at, and how many contexts were asked for.
    [[nodiscard]] const QStringList &checked() const { return m_checked; }
    [[nodiscard]] int contextCount() const { return m_contexts; }

private:
    class Context final : public ScriptContext {
    public:
        explicit Context(FakeScriptSyntax &engine) : m_engine(engine) {}
        [[nodiscard]] std::optional<QString> syntaxCheck(const QString &script) override {
            m_engine.m_checked.append(script);
            return m_engine.m_error;
        }
        [[nodiscard]] std::optional<int> errorLine() const override { return m_engine.m_line; }

    private:
        FakeScriptSyntax &m_engine;
    };

    bool m_isBroken = false;
    std::optional<QString> m_error;
    std::optional<int> m_line;
    QStringList m_checked;
    int m_contexts = 0;
};

} // namespace tavrine
