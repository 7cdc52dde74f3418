#pragma once

#include "ports/ScriptSyntax.h"

#include <QStringList>

#include <utility>

namespace tavrine {

/// An engine that knows brackets and quotes: a script is sound when they are. Enough to try views and flows on.
class FakeScriptSyntax final : public ScriptSyntax {
public:
    /// The next context cannot be made.
    void failNextContext() { m_failsNext = true; }
    /// No context can be made any more, or again.
    void setBroken(bool isBroken) { m_isBroken = isBroken; }
    /// What every check complains of from now on, and in which line; none: what it finds for itself.
    void setError(std::optional<QString> error, std::optional<int> line = std::nullopt) {
        m_error = std::move(error);
        m_line = line;
    }

    [[nodiscard]] int contextCount() const { return m_contextCount; }
    /// The scripts that were looked at.
    [[nodiscard]] const QStringList &checked() const { return m_checked; }

    [[nodiscard]] std::unique_ptr<ScriptContext> makeContext() override {
        if (std::exchange(m_failsNext, false) || m_isBroken)
            return nullptr;
        ++m_contextCount;
        return std::make_unique<Context>(*this);
    }

private:
    class Context final : public ScriptContext {
    public:
        explicit Context(FakeScriptSyntax &engine) : m_engine(engine) {}

        [[nodiscard]] std::optional<QString> syntaxCheck(const QString &script) override {
            m_engine.m_checked.append(script);
            if (m_engine.m_error)
                return m_engine.m_error;
            QString open;
            QChar quote;
            for (const QChar c : script) {
                if (!quote.isNull()) {
                    if (c == quote)
                        quote = {};
                } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
                    quote = c;
                } else if (QStringLiteral("([{").contains(c)) {
                    open += c;
                } else if (const auto kind = QStringLiteral(")]}").indexOf(c); kind >= 0) {
                    if (open.isEmpty() || open.back() != QStringLiteral("([{").at(kind))
                        return QStringLiteral("SyntaxError: Unexpected token '%1'").arg(c);
                    open.chop(1);
                }
            }
            if (open.isEmpty() && quote.isNull())
                return std::nullopt;
            return QStringLiteral("SyntaxError: Unexpected end of script");
        }
        [[nodiscard]] std::optional<int> errorLine() const override {
            return m_engine.m_error ? m_engine.m_line : std::nullopt;
        }

    private:
        FakeScriptSyntax &m_engine;
    };

    bool m_failsNext = false;
    bool m_isBroken = false;
    int m_contextCount = 0;
    std::optional<QString> m_error;
    std::optional<int> m_line;
    QStringList m_checked;
};

} // namespace tavrine
