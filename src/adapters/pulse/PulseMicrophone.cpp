#include "adapters/pulse/PulseMicrophone.h"

#include <utility>

#include <poll.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr uint32_t pieceMilliseconds = 20;

pa_sample_spec sampleSpec() {
    return {PA_SAMPLE_FLOAT32NE, microphoneSampleRate, microphoneChannels};
}

void waitFor(const Waker &waker, std::chrono::milliseconds length) {
    pollfd descriptor{waker.descriptor(), POLLIN, 0};
    ::poll(&descriptor, 1, static_cast<int>(length.count()));
}

} // namespace

PulseMicrophone::PulseMicrophone(std::string wanted, SampleGate<AudioSample> &gate)
    : m_wanted(std::move(wanted)), m_gate(gate) {}

void PulseMicrophone::run() {
    // Only the first time: a server that has gone is started by whoever has it, not twice a second from here.
    for (auto flags = PA_CONTEXT_NOFLAGS; !m_gate.isOver(); flags = PA_CONTEXT_NOAUTOSPAWN) {
        {
            SoundContext context(flags);
            m_context = &context;
            serve(context);
            endListening();
            m_context = nullptr;
        }
        if (!m_gate.isOver())
            waitFor(*m_gate.waker(), betweenTries);
    }
}

void PulseMicrophone::serve(SoundContext &context) {
    auto *const api = context.api();
    // It only wakes the loop; that the gate has ended is seen there.
    pa_io_event *const wake = api->io_new(
        api, m_gate.waker()->descriptor(), PA_IO_EVENT_INPUT,
        [](pa_mainloop_api *, pa_io_event *, int, pa_io_event_flags_t, void *) {}, nullptr);
    bool isKnown = false;
    m_isLooking = m_isToLook = false; // what an earlier connection was asked is not answered any more
    while (!m_gate.isOver() && context.isGood()) {
        if (context.isReady() && !std::exchange(isKnown, true)) {
            pa_context_set_subscribe_callback(context.get(), &PulseMicrophone::noticed, this);
            begin(pa_context_subscribe(
                context.get(),
                static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER), nullptr,
                nullptr));
            m_isToLook = true;
        }
        if (isKnown && std::exchange(m_isToLook, false))
            look();
        if (!context.turn(m_stream || !isKnown ? 10s : betweenTries))
            break;
        if (isKnown && !m_stream)
            m_isToLook = true;
    }
    api->io_free(wake);
}

/// For the wanted device, unless it is heard.
void PulseMicrophone::look() {
    if (m_isLooking || (m_stream && m_heard == m_wanted))
        return;
    m_isLooking = m_isWanted = true;
    begin(pa_context_get_source_info_by_name(m_context->get(), m_wanted.c_str(), &PulseMicrophone::sourceTold, this));
}

void PulseMicrophone::lookForDefault() {
    m_isWanted = false;
    begin(pa_context_get_server_info(m_context->get(), &PulseMicrophone::serverTold, this));
}

void PulseMicrophone::serverTold(pa_context *, const pa_server_info *info, void *self) {
    auto &microphone = *static_cast<PulseMicrophone *>(self);
    if (!info || !info->default_source_name) {
        microphone.m_isLooking = false;
        return;
    }
    begin(pa_context_get_source_info_by_name(microphone.m_context->get(), info->default_source_name,
                                             &PulseMicrophone::sourceTold, self));
}

void PulseMicrophone::sourceTold(pa_context *, const pa_source_info *info, int end, void *self) {
    auto &microphone = *static_cast<PulseMicrophone *>(self);
    if (info) {
        const SoundSource source = soundSource(*info);
        const bool isBetter = !microphone.m_stream || microphone.m_isWanted;
        if (!source.isMonitor && isBetter && source.name != microphone.m_heard)
            microphone.listen(source);
    } else if (end < 0 && microphone.m_isWanted && !microphone.m_stream) {
        microphone.lookForDefault(); // the wanted one is not there
    } else {
        microphone.m_isLooking = false;
    }
}

void PulseMicrophone::noticed(pa_context *, pa_subscription_event_type_t, uint32_t, void *self) {
    static_cast<PulseMicrophone *>(self)->m_isToLook = true;
}

void PulseMicrophone::listen(const SoundSource &source) {
    endListening();
    const pa_sample_spec spec = sampleSpec();
    m_stream = pa_stream_new(m_context->get(), "Recording", &spec, nullptr);
    if (!m_stream)
        return;
    m_heard = source.name;
    pa_buffer_attr buffer{};
    buffer.maxlength = buffer.tlength = buffer.prebuf = buffer.minreq = static_cast<uint32_t>(-1);
    buffer.fragsize = static_cast<uint32_t>(pa_usec_to_bytes(pieceMilliseconds * PA_USEC_PER_MSEC, &spec));
    pa_stream_set_state_callback(m_stream, &PulseMicrophone::streamChanged, this);
    pa_stream_set_read_callback(m_stream, &PulseMicrophone::readable, this);
    // Not moved: when its device goes the server would carry it over to any other, an echo of what is played included.
    const auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE |
                                                      PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_stream, source.name.c_str(), &buffer, flags) < 0)
        endListening();
}

void PulseMicrophone::endListening() {
    m_heard.clear();
    if (!m_stream)
        return;
    pa_stream *const stream = std::exchange(m_stream, nullptr);
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}

void PulseMicrophone::streamChanged(pa_stream *stream, void *self) {
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED) {
        static_cast<PulseMicrophone *>(self)->endListening();
        static_cast<PulseMicrophone *>(self)->m_isToLook = true;
    }
}

void PulseMicrophone::readable(pa_stream *, size_t, void *self) {
    static_cast<PulseMicrophone *>(self)->read();
}

void PulseMicrophone::read() {
    while (m_stream && pa_stream_readable_size(m_stream) > 0) {
        const void *samples = nullptr;
        size_t bytes = 0;
        if (pa_stream_peek(m_stream, &samples, &bytes) < 0 || bytes == 0)
            return;
        if (samples) // else a hole, which the times of what follows tell
            give(static_cast<const float *>(samples), bytes);
        pa_stream_drop(m_stream);
    }
}

void PulseMicrophone::give(const float *samples, size_t bytes) {
    pa_usec_t age = 0;
    int isNegative = 0;
    // Of the sound that is read next. The server's first word on times comes a moment after the first sound.
    if (pa_stream_get_latency(m_stream, &age, &isNegative) < 0)
        return;
    const MediaTime now = std::chrono::steady_clock::now().time_since_epoch();
    const auto back = std::chrono::microseconds(age);
    const auto sample = m_placer.place(isNegative ? now + back : now - back, {samples, bytes / sizeof(float)});
    if (sample)
        m_gate.deliver(*sample);
}

} // namespace tavrine
