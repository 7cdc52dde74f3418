#include "upload/worker/ScriptWorld.h"

#include "upload/worker/WorkerLimits.h"
#include "upload/worker/WorkerText.h"
#include "upload/worker/WorldCallbacks.h"

#include <cctype>

namespace tavrine {
namespace {

constexpr const char *scriptName = "script";

std::string textOf(const std::optional<ScriptString> &string, std::size_t maxBytes = SIZE_MAX) {
    return string ? utf8FromUnits(string->units(), maxBytes) : std::string();
}

bool isMissing(JSContextRef context, JSValueRef value) {
    return JSValueIsUndefined(context, value) || JSValueIsNull(context, value);
}

std::string contentType(const ScriptRequest &request) {
    constexpr std::string_view wanted = "content-type";
    for (const auto &[name, value] : request.headers) {
        std::string lower;
        for (const char c : name)
            lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (lower == wanted)
            return value;
    }
    return {};
}

} // namespace

ScriptWorld::ScriptWorld(Outside outside) : m_outside(std::move(outside)), m_context(JSGlobalContextCreate(nullptr)) {
    WorldCallbacks::world = this;
    installNames();
}

ScriptWorld::~ScriptWorld() {
    m_timers.clear();
    m_callbacks.clear();
    m_settle.reset();
    m_describe.reset();
    JSGlobalContextRelease(m_context);
    WorldCallbacks::world = nullptr;
}

void ScriptWorld::start(const std::string &input) {
    const auto unreadable = [this] { finish(WorkerEnd::runtimeError, "The upload worker could not read its input."); };
    JSValueRef record = isUtf8(input) && input.find('\0') == std::string::npos
                            ? JSValueMakeFromJSONString(m_context, ScriptString(input.c_str()).get())
                            : nullptr;
    if (!record || !JSValueIsObject(m_context, record))
        return unreadable();
    JSObjectRef object = JSValueToObject(m_context, record, nullptr);
    const JSValueRef source = property(m_context, object, "script");
    const KeptValue image(m_context, property(m_context, object, "imageBase64"));
    const KeptValue fileName(m_context, property(m_context, object, "fileName"));
    for (const JSValueRef value : {source, image.get(), fileName.get()}) {
        if (!JSValueIsString(m_context, value))
            return unreadable();
    }
    const auto script = stringOf(m_context, source);
    const ScriptString name(scriptName);
    JSValueRef exception = nullptr;
    if (!JSCheckScriptSyntax(m_context, script->get(), name.get(), 1, &exception)) {
        const std::string text =
            exception ? textOf(stringOf(m_context, exception), limits::messageBytes) : std::string();
        return finish(WorkerEnd::syntaxError, text.empty() ? "Syntax error." : text);
    }
    JSEvaluateScript(m_context, script->get(), nullptr, name.get(), 1, &exception);
    if (exception)
        return finishWithReason(exception);
    callUpload(image.get(), fileName.get());
}

void ScriptWorld::callUpload(JSValueRef image, JSValueRef fileName) {
    if (m_result)
        return;
    // By evaluation, for a function that was declared with const or let is no property of the global object.
    JSValueRef exception = nullptr;
    const JSValueRef upload =
        evaluate("typeof uploadImage === 'function' ? uploadImage : undefined", "lookup", &exception);
    if (exception)
        return finishWithReason(exception);
    if (!JSValueIsObject(m_context, upload))
        return finish(WorkerEnd::missingFunction, "The script defines no function named uploadImage.");
    const JSValueRef arguments[] = {image, fileName};
    JSValueRef value = JSObjectCallAsFunction(m_context, JSValueToObject(m_context, upload, nullptr), nullptr, 2,
                                              arguments, &exception);
    if (exception)
        return finishWithReason(exception);
    if (!JSValueIsObject(m_context, value))
        return finishWithValue(value); // no Promise: known at once
    callFunction(m_settle->object(), {value, makeFunction(m_context, "resolved", &WorldCallbacks::resolved),
                                      makeFunction(m_context, "rejected", &WorldCallbacks::rejected)});
}

std::optional<std::chrono::milliseconds> ScriptWorld::runTimers() {
    m_timers.run(ScriptTimers::Clock::now(), [this](JSObjectRef function, const std::vector<JSValueRef> &arguments) {
        JSValueRef exception = nullptr;
        JSObjectCallAsFunction(m_context, function, nullptr, arguments.size(), arguments.data(), &exception);
        if (exception)
            finishWithReason(exception);
    });
    const auto next = m_timers.next();
    if (!next)
        return std::nullopt;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*next - ScriptTimers::Clock::now());
    return std::max(wait, std::chrono::milliseconds(0));
}

void ScriptWorld::answer(const ScriptAnswer &answer) {
    auto found = m_callbacks.extract(answer.id);
    if (!found)
        return;
    const JSValueRef null = JSValueMakeNull(m_context);
    JSObjectRef callback = found.mapped().object();
    if (answer.hasFailed)
        callFunction(callback, {makeString(m_context, unitsFromUtf8(answer.error)), null, null});
    else
        callFunction(callback, {null, JSValueMakeNumber(m_context, answer.status),
                                makeString(m_context, responseUnits(answer.body))});
}

JSValueRef ScriptWorld::callFunction(JSObjectRef function, std::initializer_list<JSValueRef> arguments) {
    JSValueRef exception = nullptr;
    const JSValueRef value =
        JSObjectCallAsFunction(m_context, function, nullptr, arguments.size(), std::data(arguments), &exception);
    if (exception)
        finishWithReason(exception);
    return value;
}

JSValueRef ScriptWorld::evaluate(const char *source, const char *name, JSValueRef *exception) {
    return JSEvaluateScript(m_context, ScriptString(source).get(), nullptr, ScriptString(name).get(), 1, exception);
}

void ScriptWorld::finish(WorkerEnd end, std::string text) {
    if (!m_result)
        m_result = WorkerResult{end, std::move(text)};
}

void ScriptWorld::finishWithReason(JSValueRef reason) {
    if (!m_result)
        finish(WorkerEnd::runtimeError, textOfReason(reason));
}

void ScriptWorld::finishWithValue(JSValueRef value) {
    if (m_result)
        return;
    const auto url = JSValueIsString(m_context, value) ? stringOf(m_context, value) : std::nullopt;
    if (!url || JSStringGetLength(url->get()) == 0)
        return finish(WorkerEnd::invalidReturnValue, "uploadImage() returned no URL.");
    // UTF-8 is never shorter than the units, so a text that is far too long is not even converted.
    std::string text = JSStringGetLength(url->get()) > limits::urlBytes ? std::string() : utf8FromUnits(url->units());
    if (text.empty() || text.size() > limits::urlBytes)
        return finish(WorkerEnd::runtimeError, "The returned URL is longer than 256 KiB.");
    finish(WorkerEnd::url, std::move(text));
}

std::string ScriptWorld::textOfReason(JSValueRef reason) {
    if (auto text = stringOf(m_context, reason)) {
        const bool isBare = JSValueIsObject(m_context, reason) && text->units() == u"[object Object]";
        if (!isBare)
            return textOf(text, limits::messageBytes);
    }
    // It has no text of its own, or a hostile one: what a console would show.
    JSValueRef exception = nullptr;
    const JSValueRef shown = JSObjectCallAsFunction(m_context, m_describe->object(), nullptr, 1, &reason, &exception);
    if (exception || !JSValueIsString(m_context, shown))
        return "The script threw a value that has no text.";
    return textOf(stringOf(m_context, shown), limits::messageBytes);
}

void ScriptWorld::request(std::size_t count, const JSValueRef arguments[], JSValueRef *exception) {
    if (count < 5 || !JSValueIsObject(m_context, arguments[4]) ||
        !JSObjectIsFunction(m_context, JSValueToObject(m_context, arguments[4], nullptr))) {
        *exception =
            makeError(m_context, "nativeHTTPRequest(url, method, headers, body, callback) wants a callback function");
        return;
    }
    ScriptRequest request;
    for (const auto &[value, text] :
         {std::pair(arguments[0], &request.url), std::pair(arguments[1], &request.method)}) {
        const auto string = stringOf(m_context, value, exception);
        if (!string)
            return;
        *text = textOf(string);
    }
    if (!isMissing(m_context, arguments[2])) {
        JSObjectRef headers = JSValueToObject(m_context, arguments[2], exception);
        if (!headers)
            return;
        JSPropertyNameArrayRef names = JSObjectCopyPropertyNames(m_context, headers);
        const std::size_t size = JSPropertyNameArrayGetCount(names);
        for (std::size_t i = 0; i < size && !*exception && i <= limits::requestHeaders; ++i) {
            JSStringRef name = JSPropertyNameArrayGetNameAtIndex(names, i);
            const JSValueRef value = JSObjectGetProperty(m_context, headers, name, exception);
            const auto string = *exception ? std::nullopt : stringOf(m_context, value, exception);
            request.headers.emplace_back(textOf(ScriptString(JSStringRetain(name))), textOf(string));
        }
        JSPropertyNameArrayRelease(names);
    }
    if (!*exception)
        request.body = requestBody(arguments[3], request, exception);
    if (!*exception && request.body.size() > limits::requestBytes)
        *exception = makeError(m_context, "The body is too long."); // not even handed over
    if (*exception)
        return;
    request.id = ++m_lastRequest;
    m_callbacks.emplace(request.id, KeptValue(m_context, arguments[4]));
    m_outside.request(std::move(request));
}

std::string ScriptWorld::requestBody(JSValueRef value, const ScriptRequest &request, JSValueRef *exception) {
    if (isMissing(m_context, value))
        return {};
    if (const auto bytes = bytesOf(m_context, value))
        return std::string(*bytes);
    const auto string = stringOf(m_context, value, exception);
    return string ? requestBytes(string->units(), contentType(request)) : std::string();
}

} // namespace tavrine
