#include "adapters/javascriptcore/JavaScriptCoreSyntax.h"

#include <vector>

#include <JavaScriptCore/JavaScript.h>

namespace tavrine {
namespace {

/// Releases what the engine counts references of.
class EngineString {
public:
    explicit EngineString(JSStringRef string) : m_string(string) {}
    ~EngineString() {
        if (m_string)
            JSStringRelease(m_string);
    }
    EngineString(const EngineString &) = delete;
    EngineString &operator=(const EngineString &) = delete;

    [[nodiscard]] JSStringRef get() const { return m_string; }
    [[nodiscard]] QString toText() const {
        std::vector<char> utf8(JSStringGetMaximumUTF8CStringSize(m_string));
        const size_t size = JSStringGetUTF8CString(m_string, utf8.data(), utf8.size());
        return size > 0 ? QString::fromUtf8(utf8.data(), static_cast<qsizetype>(size) - 1) : QString();
    }

private:
    JSStringRef m_string;
};

class JavaScriptCoreContext final : public ScriptContext {
public:
    explicit JavaScriptCoreContext(JSGlobalContextRef context) : m_context(context) {}
    ~JavaScriptCoreContext() override { JSGlobalContextRelease(m_context); }

    [[nodiscard]] std::optional<QString> syntaxCheck(const QString &script) override {
        const EngineString source(JSStringCreateWithUTF8CString(script.toUtf8().constData()));
        JSValueRef exception = nullptr;
        m_errorLine.reset();
        if (JSCheckScriptSyntax(m_context, source.get(), nullptr, 1, &exception))
            return std::nullopt;
        if (exception) {
            m_errorLine = lineOf(exception);
            const EngineString words(JSValueToStringCopy(m_context, exception, nullptr));
            if (words.get())
                return words.toText();
        }
        return QStringLiteral("Syntax error.");
    }

    [[nodiscard]] std::optional<int> errorLine() const override { return m_errorLine; }

private:
    /// The engine's errors carry the line as a property of theirs.
    [[nodiscard]] std::optional<int> lineOf(JSValueRef exception) const {
        if (!JSValueIsObject(m_context, exception))
            return std::nullopt;
        const EngineString name(JSStringCreateWithUTF8CString("line"));
        JSObjectRef error = JSValueToObject(m_context, exception, nullptr);
        const double line =
            JSValueToNumber(m_context, JSObjectGetProperty(m_context, error, name.get(), nullptr), nullptr);
        return line >= 1 && line <= 1e9 ? std::optional(static_cast<int>(line)) : std::nullopt;
    }

    JSGlobalContextRef m_context;
    std::optional<int> m_errorLine;
};

} // namespace

std::unique_ptr<ScriptContext> JavaScriptCoreSyntax::makeContext() {
    JSGlobalContextRef context = JSGlobalContextCreate(nullptr);
    return context ? std::make_unique<JavaScriptCoreContext>(context) : nullptr;
}

} // namespace tavrine
