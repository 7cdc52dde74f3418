#include "adapters/pulse/SoundContext.h"

#include <string_view>

namespace tavrine {
namespace {

std::string_view property(const pa_source_info &info, const char *name) {
    const char *const value = info.proplist ? pa_proplist_gets(info.proplist, name) : nullptr;
    return value ? value : "";
}

} // namespace

SoundSource soundSource(const pa_source_info &info) {
    SoundSource source;
    source.name = info.name ? info.name : "";
    source.description = info.description ? info.description : source.name;
    const auto form = property(info, PA_PROP_DEVICE_FORM_FACTOR);
    // Sound cards of desktops say nothing of their form.
    source.isBuiltIn = form == "internal" || (form.empty() && property(info, PA_PROP_DEVICE_BUS) == "pci");
    source.isMonitor = info.monitor_of_sink != PA_INVALID_INDEX || property(info, PA_PROP_DEVICE_CLASS) == "monitor";
    return source;
}

SoundContext::SoundContext(pa_context_flags_t flags)
    : m_loop(pa_mainloop_new()), m_context(pa_context_new(pa_mainloop_get_api(m_loop), "Tavrine")) {
    if (m_context)
        pa_context_connect(m_context, nullptr, flags, nullptr); // a failure is its state
}

SoundContext::~SoundContext() {
    if (m_context) {
        pa_context_set_state_callback(m_context, nullptr, nullptr);
        pa_context_set_subscribe_callback(m_context, nullptr, nullptr);
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
    }
    pa_mainloop_free(m_loop);
}

bool SoundContext::turn(std::chrono::milliseconds longest) {
    const auto micro = std::chrono::microseconds(longest).count();
    return pa_mainloop_prepare(m_loop, static_cast<int>(micro)) >= 0 && pa_mainloop_poll(m_loop) >= 0 &&
           pa_mainloop_dispatch(m_loop) >= 0;
}

} // namespace tavrine
