#pragma once

#include "upload/worker/ScriptTimers.h"
#include "upload/worker/ScriptValues.h"
#include "upload/worker/WorkerRecord.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavrine {

/// A request as the script put it, not yet looked at.
struct ScriptRequest {
    std::uint32_t id = 0;
    std::string url;
    std::string method;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

struct ScriptAnswer {
    std::uint32_t id = 0;
    bool hasFailed = false;
    std::string error; // when it has failed
    std::uint32_t status = 0;
    std::string body;
};

/// The world that one script runs in: JavaScript, the names of browsers and Node that scripts lean on, timers, and
/// `nativeHTTPRequest`. Nothing in it can open, start or load anything.
///
/// One for a process (the engine's callbacks carry no owner), one thread. The result is taken natively and never passes
/// through anything that a script can change.
class ScriptWorld {
public:
    struct Outside {
        /// True when no further line is wanted.
        std::function<bool(std::string line)> log;
        std::function<void(ScriptRequest)> request;
    };

    explicit ScriptWorld(Outside outside);
    ~ScriptWorld();
    ScriptWorld(const ScriptWorld &) = delete;
    ScriptWorld &operator=(const ScriptWorld &) = delete;

    /// Evaluates the script of `input`, the JSON that came in, and calls its function. Once.
    void start(const std::string &input);
    /// The end of the run, once it is known.
    [[nodiscard]] const std::optional<WorkerResult> &result() const { return m_result; }

    /// Calls the timers that are due. None: no timer is running; otherwise how long until the next.
    [[nodiscard]] std::optional<std::chrono::milliseconds> runTimers();
    /// Calls the callback of that request, once; an unknown id is ignored.
    void answer(const ScriptAnswer &answer);

private:
    friend struct WorldCallbacks;

    void installNames();
    JSValueRef evaluate(const char *source, const char *name, JSValueRef *exception);
    JSValueRef callFunction(JSObjectRef function, std::initializer_list<JSValueRef> arguments);
    void callUpload(JSValueRef image, JSValueRef fileName);
    void finish(WorkerEnd end, std::string text);
    void finishWithReason(JSValueRef reason);
    void finishWithValue(JSValueRef value);
    [[nodiscard]] std::string textOfReason(JSValueRef reason);
    void request(std::size_t count, const JSValueRef arguments[], JSValueRef *exception);
    [[nodiscard]] std::string requestBody(JSValueRef value, const ScriptRequest &request, JSValueRef *exception);

    Outside m_outside;
    JSGlobalContextRef m_context;
    std::optional<KeptValue> m_settle;
    std::optional<KeptValue> m_describe;
    ScriptTimers m_timers;
    std::map<std::uint32_t, KeptValue> m_callbacks;
    std::uint32_t m_lastRequest = 0;
    std::optional<WorkerResult> m_result;
};

} // namespace tavrine
