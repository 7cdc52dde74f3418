#pragma once

#include <chrono>
#include <string>

#include <pulse/pulseaudio.h>

namespace tavrine {

/// What a sound server says of a source of sound.
struct SoundSource {
    std::string name;
    std::string description;
    bool isBuiltIn = false;
    bool isMonitor = false; ///< an echo of what the machine plays
};
[[nodiscard]] SoundSource soundSource(const pa_source_info &info);

/// A loop and a connection to the sound server in it, as one thread uses them. Nothing waits but `turn`.
class SoundContext {
public:
    explicit SoundContext(pa_context_flags_t flags);
    ~SoundContext();
    SoundContext(const SoundContext &) = delete;
    SoundContext &operator=(const SoundContext &) = delete;

    [[nodiscard]] pa_context *get() const { return m_context; }
    [[nodiscard]] pa_mainloop_api *api() const { return pa_mainloop_get_api(m_loop); }
    [[nodiscard]] bool isReady() const { return m_context && pa_context_get_state(m_context) == PA_CONTEXT_READY; }
    /// False when there is no server (any more).
    [[nodiscard]] bool isGood() const { return m_context && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context)); }

    /// Waits for what comes, as long as that, and does it. False when it cannot go on.
    [[nodiscard]] bool turn(std::chrono::milliseconds longest);

private:
    pa_mainloop *m_loop;
    pa_context *m_context;
};

/// Nobody waits for answers by the operation.
inline void begin(pa_operation *operation) {
    if (operation)
        pa_operation_unref(operation);
}

} // namespace tavrine
