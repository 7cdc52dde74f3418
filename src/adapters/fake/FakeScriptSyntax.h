#pragma once

#include "ports/ScriptSyntax.h"

#include <utility>

namespace tavrine {

/// An engine that knows brackets and quotes: a script is sound when they are. Enough to try views and flows on.
class FakeScriptSyntax final : public ScriptSyntax {
public:
    /// The next context cannot be made.
    void failNextContext() { m_failsNext = true; }
    [[nodiscard]] int contextCount() const { return m_contextCount; }

    [[nodiscard]] std::unique_ptr<ScriptContext> makeContext() override {
        if (std::exchange(m_failsNext, false))
            return nullptr;
        ++m_contextCount;
        return std::make_unique<Context>();
    }

private:
    class Context final : public ScriptContext {
    public:
        [[nodiscard]] std::optional<QString> syntaxCheck(const QString &script) override {
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
    };

    bool m_failsNext = false;
    int m_contextCount = 0;
};

} // namespace tavrine
