#include "upload/worker/WorldCallbacks.h"

#include "upload/worker/Preludes.h"
#include "upload/worker/ScriptEncodings.h"
#include "upload/worker/ScriptWorld.h"
#include "upload/worker/WorkerLimits.h"
#include "upload/worker/WorkerText.h"

#include <cmath>

namespace tavrine {
namespace {

using Arguments = const JSValueRef[];

JSValueRef undefined(JSContextRef context) {
    return JSValueMakeUndefined(context);
}

JSValueRef thrown(JSContextRef context, JSValueRef *exception, const char *message) {
    *exception = makeError(context, message);
    return undefined(context);
}

bool isFunction(JSContextRef context, std::size_t count, Arguments arguments) {
    return count > 0 && JSValueIsObject(context, arguments[0]) &&
           JSObjectIsFunction(context, JSValueToObject(context, arguments[0], nullptr));
}

using Conversion = std::optional<std::u16string>(std::u16string_view);

JSValueRef converted(JSContextRef context, std::size_t count, Arguments arguments, JSValueRef *exception,
                     Conversion *conversion, const char *message) {
    const JSValueRef value = count > 0 ? arguments[0] : undefined(context);
    const auto text = stringOf(context, value, exception);
    if (!text)
        return undefined(context);
    const auto result = conversion(text->units());
    return result ? makeString(context, *result) : thrown(context, exception, message);
}

} // namespace

JSValueRef WorldCallbacks::nativeHTTPRequest(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                             Arguments arguments, JSValueRef *exception) {
    world->request(count, arguments, exception);
    return undefined(context);
}

JSValueRef WorldCallbacks::setTimeout(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                      Arguments arguments, JSValueRef *exception) {
    if (!isFunction(context, count, arguments))
        return thrown(context, exception, "setTimeout wants a function");
    const std::uint32_t id = world->m_timers.add(context, count, arguments, false);
    return id > 0 ? JSValueMakeNumber(context, id) : thrown(context, exception, "there are too many timers");
}

JSValueRef WorldCallbacks::setInterval(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                       Arguments arguments, JSValueRef *exception) {
    if (!isFunction(context, count, arguments))
        return thrown(context, exception, "setInterval wants a function");
    const std::uint32_t id = world->m_timers.add(context, count, arguments, true);
    return id > 0 ? JSValueMakeNumber(context, id) : thrown(context, exception, "there are too many timers");
}

JSValueRef WorldCallbacks::clearTimer(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                      Arguments arguments, JSValueRef *) {
    if (count > 0 && JSValueIsNumber(context, arguments[0])) {
        const double id = JSValueToNumber(context, arguments[0], nullptr);
        if (id >= 1 && id <= UINT32_MAX)
            world->m_timers.remove(static_cast<std::uint32_t>(id));
    }
    return undefined(context);
}

JSValueRef WorldCallbacks::atob(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count, Arguments arguments,
                                JSValueRef *exception) {
    return converted(context, count, arguments, exception, &decodedBase64, "atob: the text is not base64");
}

JSValueRef WorldCallbacks::btoa(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count, Arguments arguments,
                                JSValueRef *exception) {
    return converted(context, count, arguments, exception, &encodedBase64, "btoa: a character is over 0xFF");
}

JSValueRef WorldCallbacks::log(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count, Arguments arguments,
                               JSValueRef *) {
    const auto line = count > 0 ? stringOf(context, arguments[0]) : std::nullopt;
    return JSValueMakeBoolean(context,
                              line && world->m_outside.log(utf8FromUnits(line->units(), limits::logLineBytes)));
}

JSValueRef WorldCallbacks::now(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t, Arguments, JSValueRef *) {
    const auto since = ScriptTimers::Clock::now().time_since_epoch();
    return JSValueMakeNumber(context, std::round(std::chrono::duration<double, std::micro>(since).count()) / 1000);
}

JSValueRef WorldCallbacks::encode(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                  Arguments arguments, JSValueRef *exception) {
    const auto text = count > 0 ? stringOf(context, arguments[0], exception) : std::nullopt;
    return text ? makeBytes(context, utf8FromUnits(text->units()), exception) : undefined(context);
}

JSValueRef WorldCallbacks::decode(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                  Arguments arguments, JSValueRef *) {
    const auto bytes = count > 2 ? bytesOf(context, arguments[0]) : std::nullopt;
    const auto encoding = bytes ? stringOf(context, arguments[1]) : std::nullopt;
    if (!encoding)
        return undefined(context);
    const auto text = decodedText(*bytes, utf8FromUnits(encoding->units()), JSValueToBoolean(context, arguments[2]));
    return text ? makeString(context, *text) : undefined(context);
}

JSValueRef WorldCallbacks::urls(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count, Arguments arguments,
                                JSValueRef *exception) {
    const JSValueRef maker = world->evaluate(urlPrelude, "url", exception);
    if (*exception || count == 0)
        return undefined(context);
    return JSObjectCallAsFunction(context, JSValueToObject(context, maker, nullptr), nullptr, count, arguments,
                                  exception);
}

JSValueRef WorldCallbacks::uncaught(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                    Arguments arguments, JSValueRef *) {
    if (count > 0)
        world->finishWithReason(arguments[0]);
    return undefined(context);
}

JSValueRef WorldCallbacks::resolved(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                    Arguments arguments, JSValueRef *) {
    world->finishWithValue(count > 0 ? arguments[0] : undefined(context));
    return undefined(context);
}

JSValueRef WorldCallbacks::rejected(JSContextRef context, JSObjectRef, JSObjectRef, std::size_t count,
                                    Arguments arguments, JSValueRef *) {
    world->finishWithReason(count > 0 ? arguments[0] : undefined(context));
    return undefined(context);
}

void ScriptWorld::installNames() {
    JSObjectRef global = JSContextGetGlobalObject(m_context);
    const auto install = [this](JSObjectRef object, const char *name, JSObjectCallAsFunctionCallback callback) {
        setProperty(m_context, object, name, makeFunction(m_context, name, callback));
    };
    using Callbacks = WorldCallbacks;
    install(global, "nativeHTTPRequest", &Callbacks::nativeHTTPRequest);
    install(global, "setTimeout", &Callbacks::setTimeout);
    install(global, "setInterval", &Callbacks::setInterval);
    install(global, "clearTimeout", &Callbacks::clearTimer);
    install(global, "clearInterval", &Callbacks::clearTimer);
    install(global, "atob", &Callbacks::atob);
    install(global, "btoa", &Callbacks::btoa);
    JSObjectRef host = JSObjectMake(m_context, nullptr, nullptr);
    install(host, "log", &Callbacks::log);
    install(host, "now", &Callbacks::now);
    install(host, "encode", &Callbacks::encode);
    install(host, "decode", &Callbacks::decode);
    install(host, "urls", &Callbacks::urls);
    install(host, "uncaught", &Callbacks::uncaught);
    JSObjectRef maker = JSValueToObject(m_context, evaluate(worldPrelude, "world", nullptr), nullptr);
    const JSValueRef arguments[] = {host};
    JSObjectRef own =
        JSValueToObject(m_context, JSObjectCallAsFunction(m_context, maker, nullptr, 1, arguments, nullptr), nullptr);
    m_settle.emplace(m_context, property(m_context, own, "settle"));
    m_describe.emplace(m_context, property(m_context, own, "describe"));
}

} // namespace tavrine
