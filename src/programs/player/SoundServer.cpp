#include "programs/player/SoundServer.h"

#include <utility>

namespace tavrine {
namespace {

/// Nobody waits for answers by the operation.
void begin(pa_operation *operation) {
    if (operation)
        pa_operation_unref(operation);
}

std::string text(const char *words) {
    return words ? words : "";
}

} // namespace

SoundServer::SoundServer(pa_mainloop *loop)
    : m_loop(loop), m_context(pa_context_new(pa_mainloop_get_api(loop), "Tavrine")) {}

SoundServer::~SoundServer() {
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    pa_context_unref(m_context);
}

std::optional<std::string> SoundServer::connect(std::chrono::milliseconds longest, Missing missing) {
    const auto failed = [this] { return std::string(pa_strerror(pa_context_errno(m_context))); };
    if (pa_context_connect(m_context, nullptr, missing == Missing::left ? PA_CONTEXT_NOAUTOSPAWN : PA_CONTEXT_NOFLAGS,
                           nullptr) < 0)
        return failed();
    const auto end = std::chrono::steady_clock::now() + longest;
    bool hasAsked = false;
    while (!m_output) {
        const pa_context_state_t state = pa_context_get_state(m_context);
        if (!PA_CONTEXT_IS_GOOD(state))
            return failed();
        if (state == PA_CONTEXT_READY && !std::exchange(hasAsked, true)) {
            pa_context_set_state_callback(m_context, &SoundServer::stateChanged, this);
            pa_context_set_subscribe_callback(m_context, &SoundServer::noticed, this);
            begin(pa_context_subscribe(
                m_context, static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SERVER),
                nullptr, nullptr));
            ask();
        }
        const auto left = std::chrono::ceil<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return "the sound server does not answer";
        if (pa_mainloop_prepare(m_loop, static_cast<int>(left.count())) < 0 || pa_mainloop_poll(m_loop) < 0 ||
            pa_mainloop_dispatch(m_loop) < 0)
            return "the sound server cannot be waited for";
    }
    return std::nullopt;
}

std::string SoundServer::address() const {
    return text(pa_context_get_server(m_context));
}

void SoundServer::ask() {
    begin(pa_context_get_server_info(m_context, &SoundServer::serverTold, this));
}

void SoundServer::noticed(pa_context *, pa_subscription_event_type_t, uint32_t, void *self) {
    static_cast<SoundServer *>(self)->ask();
}

void SoundServer::serverTold(pa_context *, const pa_server_info *info, void *self) {
    auto *const server = static_cast<SoundServer *>(self);
    if (!info)
        return; // the state tells
    server->m_asked = text(info->default_sink_name);
    // Another device needs no look at its ports.
    if (server->m_asked.empty() || (server->m_output && server->m_output->device != server->m_asked))
        server->learn({server->m_asked, {}});
    else
        begin(pa_context_get_sink_info_by_name(server->m_context, server->m_asked.c_str(), &SoundServer::deviceTold,
                                               server));
}

void SoundServer::deviceTold(pa_context *, const pa_sink_info *info, int end, void *self) {
    auto *const server = static_cast<SoundServer *>(self);
    if (end < 0) // it has just gone; the next notice tells where sound goes instead
        server->learn({});
    else if (end == 0 && info)
        server->learn({server->m_asked, info->active_port ? text(info->active_port->name) : std::string()});
}

void SoundServer::stateChanged(pa_context *context, void *self) {
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
        static_cast<SoundServer *>(self)->change();
}

void SoundServer::learn(const Output &output) {
    if (!m_output)
        m_output = output;
    else if (*m_output != output)
        change();
}

void SoundServer::change() {
    if (const auto handler = std::exchange(m_onOutputChanged, nullptr))
        handler();
}

} // namespace tavrine
