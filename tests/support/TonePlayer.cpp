#include "support/TonePlayer.h"

#include <cmath>
#include <vector>

#include <pulse/pulseaudio.h>

namespace tavrine::test {
namespace {

constexpr int rate = 48'000;
constexpr pa_sample_spec format{PA_SAMPLE_FLOAT32NE, rate, 1};
constexpr std::uint32_t oneSecond = rate * sizeof(float);

} // namespace

TonePlayer::TonePlayer(const char *device) : m_loop(pa_threaded_mainloop_new()) {
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "a tone");
    const auto wake = [](auto *, void *self) {
        pa_threaded_mainloop_signal(static_cast<TonePlayer *>(self)->m_loop, 0);
    };
    pa_context_set_state_callback(m_context, wake, this);
    pa_context_connect(m_context, nullptr, PA_CONTEXT_NOFLAGS, nullptr);
    pa_threaded_mainloop_lock(m_loop);
    pa_threaded_mainloop_start(m_loop);
    while (PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context)) && pa_context_get_state(m_context) != PA_CONTEXT_READY)
        pa_threaded_mainloop_wait(m_loop);
    m_stream = pa_stream_new(m_context, "tone", &format, nullptr);
    pa_stream_set_state_callback(m_stream, wake, this);
    pa_stream_set_write_callback(
        m_stream, [](pa_stream *, std::size_t bytes, void *self) { static_cast<TonePlayer *>(self)->write(bytes); },
        this);
    // Much is written ahead, so that a busy machine breaks nothing.
    const pa_buffer_attr buffer{oneSecond, oneSecond / 4, 0, oneSecond / 50, static_cast<std::uint32_t>(-1)};
    pa_stream_connect_playback(m_stream, device, &buffer, PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
    while (PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream)) && pa_stream_get_state(m_stream) != PA_STREAM_READY)
        pa_threaded_mainloop_wait(m_loop);
    pa_threaded_mainloop_unlock(m_loop);
}

TonePlayer::~TonePlayer() {
    pa_threaded_mainloop_stop(m_loop);
    pa_stream_disconnect(m_stream);
    pa_stream_unref(m_stream);
    pa_context_disconnect(m_context);
    pa_context_unref(m_context);
    pa_threaded_mainloop_free(m_loop);
}

void TonePlayer::write(std::size_t bytes) {
    std::vector<float> samples(bytes / sizeof(float));
    for (float &sample : samples) {
        const long long since = m_toneStart < 0 ? -1 : m_written - m_toneStart;
        sample = since < 0 ? 0 : level * static_cast<float>(std::sin(2 * M_PI * hertz * double(since) / rate));
        ++m_written;
    }
    pa_stream_write(m_stream, samples.data(), samples.size() * sizeof(float), nullptr, 0, PA_SEEK_RELATIVE);
}

TonePlayer::Clock::time_point TonePlayer::begin() {
    pa_threaded_mainloop_lock(m_loop);
    m_toneStart = m_written + rate / 20;
    auto *const update = pa_stream_update_timing_info(
        m_stream,
        [](pa_stream *, int, void *self) { pa_threaded_mainloop_signal(static_cast<TonePlayer *>(self)->m_loop, 0); },
        this);
    while (update && pa_operation_get_state(update) == PA_OPERATION_RUNNING)
        pa_threaded_mainloop_wait(m_loop);
    if (update)
        pa_operation_unref(update);
    // What is heard at this moment, counted in the time of what was written.
    pa_usec_t heard = 0;
    pa_stream_get_time(m_stream, &heard);
    const auto now = Clock::now();
    const auto start = std::chrono::microseconds(m_toneStart * 1'000'000 / rate);
    pa_threaded_mainloop_unlock(m_loop);
    return now + start - std::chrono::microseconds(heard);
}

} // namespace tavrine::test
