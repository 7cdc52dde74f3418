#pragma once

#include <chrono>
#include <cstddef>

struct pa_context;
struct pa_stream;
struct pa_threaded_mainloop;

namespace tavrine::test {

/// A program that plays silence on a device of a sound server, and then a tone of which it knows when it is heard.
class TonePlayer {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr int hertz = 500;
    static constexpr float level = 0.4F;

    /// On the server that the environment names.
    explicit TonePlayer(const char *device);
    ~TonePlayer();
    TonePlayer(const TonePlayer &) = delete;
    TonePlayer &operator=(const TonePlayer &) = delete;

    /// Begins the tone within half a second; the moment at which its first sample is heard.
    [[nodiscard]] Clock::time_point begin();

private:
    void write(std::size_t bytes);

    pa_threaded_mainloop *m_loop;
    pa_context *m_context = nullptr;
    pa_stream *m_stream = nullptr;
    long long m_written = 0;    ///< samples
    long long m_toneStart = -1; ///< the first of the tone
};

} // namespace tavrine::test
