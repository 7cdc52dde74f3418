#include "upload/worker/ScriptValues.h"

#include <memory>

namespace tavrine {

ScriptString::ScriptString(std::u16string_view units)
    : m_string(JSStringCreateWithCharacters(reinterpret_cast<const JSChar *>(units.data()), units.size())) {}

ScriptString::~ScriptString() {
    if (m_string)
        JSStringRelease(m_string);
}

std::u16string_view ScriptString::units() const {
    static_assert(sizeof(JSChar) == sizeof(char16_t));
    const std::size_t length = JSStringGetLength(m_string);
    return length == 0
               ? std::u16string_view()
               : std::u16string_view(reinterpret_cast<const char16_t *>(JSStringGetCharactersPtr(m_string)), length);
}

std::optional<ScriptString> stringOf(JSContextRef context, JSValueRef value, JSValueRef *exception) {
    JSValueRef ignored = nullptr;
    ScriptString string(JSValueToStringCopy(context, value, exception ? exception : &ignored));
    if (!string)
        return std::nullopt;
    return string;
}

JSValueRef makeString(JSContextRef context, std::u16string_view units) {
    return JSValueMakeString(context, ScriptString(units).get());
}

JSValueRef makeError(JSContextRef context, const char *message) {
    const JSValueRef text = JSValueMakeString(context, ScriptString(message).get());
    return JSObjectMakeError(context, 1, &text, nullptr);
}

JSValueRef makeBytes(JSContextRef context, std::string bytes, JSValueRef *exception) {
    auto kept = std::make_unique<std::string>(std::move(bytes));
    std::string *const raw = kept.release(); // freed with the array
    const auto free = [](void *, void *owner) { delete static_cast<std::string *>(owner); };
    return JSObjectMakeTypedArrayWithBytesNoCopy(context, kJSTypedArrayTypeUint8Array, raw->data(), raw->size(), free,
                                                 raw, exception);
}

std::optional<std::string_view> bytesOf(JSContextRef context, JSValueRef value) {
    const JSTypedArrayType type = JSValueGetTypedArrayType(context, value, nullptr);
    if (type == kJSTypedArrayTypeNone)
        return std::nullopt;
    JSObjectRef object = JSValueToObject(context, value, nullptr);
    const bool isBuffer = type == kJSTypedArrayTypeArrayBuffer;
    const char *const start =
        static_cast<const char *>(isBuffer ? JSObjectGetArrayBufferBytesPtr(context, object, nullptr)
                                           : JSObjectGetTypedArrayBytesPtr(context, object, nullptr));
    if (!start)
        return std::string_view();
    if (isBuffer)
        return std::string_view(start, JSObjectGetArrayBufferByteLength(context, object, nullptr));
    return std::string_view(start + JSObjectGetTypedArrayByteOffset(context, object, nullptr),
                            JSObjectGetTypedArrayByteLength(context, object, nullptr));
}

JSValueRef property(JSContextRef context, JSObjectRef object, const char *name) {
    return JSObjectGetProperty(context, object, ScriptString(name).get(), nullptr);
}

void setProperty(JSContextRef context, JSObjectRef object, const char *name, JSValueRef value) {
    JSObjectSetProperty(context, object, ScriptString(name).get(), value, kJSPropertyAttributeDontEnum, nullptr);
}

JSObjectRef makeFunction(JSContextRef context, const char *name, JSObjectCallAsFunctionCallback callback) {
    return JSObjectMakeFunctionWithCallback(context, ScriptString(name).get(), callback);
}

} // namespace tavrine
