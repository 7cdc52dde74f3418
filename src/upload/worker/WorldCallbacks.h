#pragma once

#include <cstddef>

#include <JavaScriptCore/JavaScript.h>

namespace tavrine {

class ScriptWorld;

/// The native functions that the script and the preludes can call. They do not throw: an allocation that fails ends the
/// process, and the other half reports it.
struct WorldCallbacks {
    using Native = JSValueRef(JSContextRef context, JSObjectRef function, JSObjectRef self, std::size_t count,
                              const JSValueRef arguments[], JSValueRef *exception);

    /// The engine hands a callback no owner; a process has one world.
    static inline ScriptWorld *world = nullptr;

    // What the script sees.
    static Native nativeHTTPRequest;
    static Native setTimeout;
    static Native setInterval;
    static Native clearTimer;
    static Native atob;
    static Native btoa;
    // What only the preludes see.
    static Native log;
    static Native now;
    static Native encode;
    static Native decode;
    static Native urls;
    static Native uncaught;
    static Native resolved;
    static Native rejected;
};

} // namespace tavrine
