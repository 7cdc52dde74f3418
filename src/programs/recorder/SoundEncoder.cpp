#include "programs/recorder/SoundEncoder.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace tavrine {
namespace {

/// After so many frames of silence the encoder, which looks back over two, says the same again.
constexpr int framesUntilSame = 16;

} // namespace

std::unique_ptr<SoundEncoder> SoundEncoder::make(const Settings &settings, Packet packet) {
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    std::unique_ptr<SoundEncoder> made(new SoundEncoder);
    made->m_context = codec ? avcodec_alloc_context3(codec) : nullptr;
    made->m_frame = av_frame_alloc();
    made->m_packet = av_packet_alloc();
    AVCodecContext *const context = made->m_context;
    if (!context || !made->m_frame || !made->m_packet)
        return nullptr;
    context->sample_fmt = AV_SAMPLE_FMT_FLTP;
    context->sample_rate = settings.sampleRate;
    context->bit_rate = settings.bitRate;
    av_channel_layout_default(&context->ch_layout, settings.channels);
    context->time_base = {1, settings.sampleRate};
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->thread_count = 1;
    av_log_set_level(AV_LOG_QUIET);
    if (avcodec_open2(context, codec, nullptr) != 0 || context->frame_size != int(samplesPerPacket))
        return nullptr;
    made->m_handler = std::move(packet);
    made->m_format = {.channels = settings.channels,
                      .sampleRate = settings.sampleRate,
                      .bitRate = settings.bitRate,
                      .priming = context->initial_padding,
                      .configuration = std::string(reinterpret_cast<const char *>(context->extradata),
                                                   static_cast<std::size_t>(context->extradata_size))};
    made->m_channels.assign(static_cast<std::size_t>(settings.channels), std::vector<float>(samplesPerPacket));
    AVFrame *const frame = made->m_frame;
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = settings.sampleRate;
    frame->nb_samples = static_cast<int>(samplesPerPacket);
    return av_channel_layout_copy(&frame->ch_layout, &context->ch_layout) == 0 ? std::move(made) : nullptr;
}

SoundEncoder::~SoundEncoder() {
    avcodec_free_context(&m_context);
    av_frame_free(&m_frame);
    av_packet_free(&m_packet);
}

bool SoundEncoder::add(const float *samples, std::int64_t count) {
    const std::size_t channels = m_channels.size();
    for (std::int64_t i = 0; i < count; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const float sample = *samples++;
            // What is no number would make the encoder give up.
            m_channels[channel][m_filled] = std::isfinite(sample) ? std::clamp(sample, -1.0F, 1.0F) : 0;
        }
        m_silentFrames = 0;
        if (++m_filled == samplesPerPacket && !encodeFrame())
            return false;
    }
    return true;
}

bool SoundEncoder::addSilence(std::int64_t count) {
    while (count > 0) {
        if (m_filled == 0 && m_silentFrames >= framesUntilSame && count >= std::int64_t(samplesPerPacket)) {
            m_encoded += samplesPerPacket;
            count -= samplesPerPacket;
            m_handler(m_lastPacket); // hours of it cost nothing
            continue;
        }
        const std::int64_t some =
            std::min<std::int64_t>(count, std::int64_t(samplesPerPacket) - std::int64_t(m_filled));
        const bool isWhole = m_filled == 0 && some == std::int64_t(samplesPerPacket);
        for (std::vector<float> &channel : m_channels)
            std::fill_n(channel.begin() + static_cast<std::ptrdiff_t>(m_filled), some, 0.0F);
        m_filled += static_cast<std::size_t>(some);
        count -= some;
        if (m_filled == samplesPerPacket) {
            if (!encodeFrame())
                return false;
            m_silentFrames = isWhole ? m_silentFrames + 1 : 0;
        }
    }
    return true;
}

bool SoundEncoder::finish() {
    const std::size_t rest = samplesPerPacket - m_filled;
    if (rest < samplesPerPacket && !addSilence(static_cast<std::int64_t>(rest)))
        return false;
    return encode(nullptr);
}

bool SoundEncoder::encodeFrame() {
    m_filled = 0;
    for (std::size_t channel = 0; channel < m_channels.size(); ++channel)
        m_frame->data[channel] = reinterpret_cast<std::uint8_t *>(m_channels[channel].data());
    m_frame->extended_data = m_frame->data;
    m_frame->pts = m_encoded;
    m_encoded += samplesPerPacket;
    return encode(m_frame);
}

bool SoundEncoder::encode(const AVFrame *frame) {
    if (avcodec_send_frame(m_context, frame) != 0)
        return false;
    while (true) {
        const int answer = avcodec_receive_packet(m_context, m_packet);
        if (answer == AVERROR(EAGAIN) || answer == AVERROR_EOF)
            return true;
        if (answer != 0)
            return false;
        m_lastPacket.assign(reinterpret_cast<const char *>(m_packet->data), static_cast<std::size_t>(m_packet->size));
        av_packet_unref(m_packet);
        m_handler(m_lastPacket);
    }
}

} // namespace tavrine
