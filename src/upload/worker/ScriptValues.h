#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <JavaScriptCore/JavaScript.h>

/// The engine's C interface, as far as the worker needs it, with owners for what is counted.
namespace tavrine {

/// A string of the engine; empty when it could not be made.
class ScriptString {
public:
    explicit ScriptString(JSStringRef string) : m_string(string) {}
    explicit ScriptString(const char *ascii) : m_string(JSStringCreateWithUTF8CString(ascii)) {}
    explicit ScriptString(std::u16string_view units);
    ScriptString(ScriptString &&other) noexcept : m_string(other.m_string) { other.m_string = nullptr; }
    ScriptString &operator=(ScriptString &&) = delete;
    ~ScriptString();

    [[nodiscard]] JSStringRef get() const { return m_string; }
    [[nodiscard]] explicit operator bool() const { return m_string; }
    /// Valid as long as this object.
    [[nodiscard]] std::u16string_view units() const;

private:
    JSStringRef m_string;
};

/// A value that the collector keeps while this object lives.
class KeptValue {
public:
    KeptValue(JSContextRef context, JSValueRef value) : m_context(context), m_value(value) {
        JSValueProtect(m_context, m_value);
    }
    KeptValue(KeptValue &&other) noexcept : m_context(other.m_context), m_value(other.m_value) {
        other.m_value = nullptr;
    }
    KeptValue &operator=(KeptValue &&) = delete;
    ~KeptValue() {
        if (m_value)
            JSValueUnprotect(m_context, m_value);
    }
    [[nodiscard]] JSValueRef get() const { return m_value; }
    [[nodiscard]] JSObjectRef object() const { return JSValueToObject(m_context, m_value, nullptr); }

private:
    JSContextRef m_context;
    JSValueRef m_value;
};

/// Empty when the conversion throws, as a hostile toString does; `exception` has what it threw.
[[nodiscard]] std::optional<ScriptString> stringOf(JSContextRef context, JSValueRef value,
                                                   JSValueRef *exception = nullptr);

[[nodiscard]] JSValueRef makeString(JSContextRef context, std::u16string_view units);
[[nodiscard]] JSValueRef makeError(JSContextRef context, const char *message);
/// A Uint8Array with these bytes.
[[nodiscard]] JSValueRef makeBytes(JSContextRef context, std::string bytes, JSValueRef *exception);
/// The bytes of a typed array or of an ArrayBuffer; none for any other value. Valid until the script runs again.
[[nodiscard]] std::optional<std::string_view> bytesOf(JSContextRef context, JSValueRef value);

[[nodiscard]] JSValueRef property(JSContextRef context, JSObjectRef object, const char *name);
void setProperty(JSContextRef context, JSObjectRef object, const char *name, JSValueRef value);

/// A native function; which world it belongs to it learns from the one that its process has.
[[nodiscard]] JSObjectRef makeFunction(JSContextRef context, const char *name, JSObjectCallAsFunctionCallback callback);

} // namespace tavrine
