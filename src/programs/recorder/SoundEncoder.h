#pragma once

#include "programs/recorder/MovieIndex.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace tavrine {

/// AAC by libavcodec.
class SoundEncoder {
public:
    struct Settings {
        int channels = 0;
        int sampleRate = 0;
        int bitRate = 0; ///< bit/s
    };
    using Packet = std::function<void(std::string_view bytes)>;

    /// Null when the library makes no such sound.
    [[nodiscard]] static std::unique_ptr<SoundEncoder> make(const Settings &settings, Packet packet);
    ~SoundEncoder();
    SoundEncoder(const SoundEncoder &) = delete;
    SoundEncoder &operator=(const SoundEncoder &) = delete;

    [[nodiscard]] const SoundFormat &format() const { return m_format; }

    /// Each false when the library failed. `samples` are of all channels in turn.
    [[nodiscard]] bool add(const float *samples, std::int64_t count);
    [[nodiscard]] bool addSilence(std::int64_t count);
    /// What is left comes out.
    [[nodiscard]] bool finish();

private:
    SoundEncoder() = default;
    [[nodiscard]] bool encodeFrame();
    [[nodiscard]] bool encode(const AVFrame *frame);

    AVCodecContext *m_context = nullptr;
    AVFrame *m_frame = nullptr;
    AVPacket *m_packet = nullptr;
    SoundFormat m_format;
    Packet m_handler;
    std::vector<std::vector<float>> m_channels; ///< the frame that is being filled
    std::size_t m_filled = 0;
    std::int64_t m_encoded = 0; ///< samples
    int m_silentFrames = 0;     ///< in a row, until now
    std::string m_lastPacket;
};

} // namespace tavrine
