#include "programs/movies/FirstFrame.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <memory>
#include <vector>

#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

namespace tavrine {

using movieProtocol::Report;

namespace {

constexpr std::int64_t mostPixels = 128'000'000; // of a frame; as of pictures
constexpr int mostPackets = 2000;                // until there is a frame

struct CloseDecoder {
    void operator()(AVCodecContext *decoder) const { avcodec_free_context(&decoder); }
};
struct FreeFrame {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct FreeScaler {
    void operator()(SwsContext *scaler) const { sws_freeContext(scaler); }
};
using Decoder = std::unique_ptr<AVCodecContext, CloseDecoder>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

Report failure(const std::string &words) {
    return {.kind = Report::Kind::failed, .words = words};
}

Decoder openDecoder(const AVStream *video) {
    const AVCodec *const codec = avcodec_find_decoder(video->codecpar->codec_id);
    Decoder decoder(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!decoder || avcodec_parameters_to_context(decoder.get(), video->codecpar) < 0)
        return nullptr;
    decoder->thread_count = 1;
    decoder->max_pixels = mostPixels;
    decoder->pkt_timebase = video->time_base;
    return avcodec_open2(decoder.get(), codec, nullptr) < 0 ? nullptr : std::move(decoder);
}

/// The first one that comes out; packets that are broken are passed over.
Frame decodeFirst(MovieFile &movie, const AVStream *video, AVCodecContext *decoder) {
    Frame frame(av_frame_alloc());
    const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    if (!frame || !packet)
        return nullptr;
    for (int i = 0; i < mostPackets; ++i) {
        const int read = av_read_frame(movie.context(), packet.get());
        if (read == AVERROR(EAGAIN))
            continue;
        const bool isOurs = read >= 0 && packet->stream_index == video->index;
        if (isOurs || read < 0) // at the end the decoder gives what it held back
            static_cast<void>(avcodec_send_packet(decoder, isOurs ? packet.get() : nullptr));
        av_packet_unref(packet.get());
        if (avcodec_receive_frame(decoder, frame.get()) >= 0)
            return frame;
        if (read < 0)
            return nullptr;
    }
    return nullptr;
}

/// Four bytes a pixel, without gaps between the rows. Empty where the frame is of a kind that nobody knows.
std::vector<std::uint8_t> scaled(const AVFrame &frame, int width, int height) {
    const std::unique_ptr<SwsContext, FreeScaler> scaler(
        sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), width, height,
                       AV_PIX_FMT_BGRA, SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!scaler)
        return {};
    // A movie that does not say so has the colours of its size.
    const bool isLarge = frame.height >= 720;
    const int space = frame.colorspace == AVCOL_SPC_UNSPECIFIED || frame.colorspace == AVCOL_SPC_RGB
                          ? (isLarge ? SWS_CS_ITU709 : SWS_CS_ITU601)
                          : frame.colorspace;
    const int *const coefficients = sws_getCoefficients(space);
    sws_setColorspaceDetails(scaler.get(), coefficients, frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0, coefficients, 1,
                             0, 1 << 16, 1 << 16);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    std::uint8_t *const planes[] = {pixels.data(), nullptr, nullptr, nullptr};
    const int strides[] = {width * 4, 0, 0, 0};
    return sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides) == height
               ? pixels
               : std::vector<std::uint8_t>();
}

bool writeAll(int file, const std::vector<std::uint8_t> &bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file, bytes.data() + written, bytes.size() - written);
        if (count < 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

Report writeFirstFrame(MovieFile &movie, int longestEdge, int result) {
    AVStream *const video = movie.video();
    const auto upright = video ? uprightOf(movie.context(), video) : std::nullopt;
    if (!upright)
        return failure("there is no picture in it");
    for (unsigned i = 0; i < movie.context()->nb_streams; ++i)
        if (movie.context()->streams[i] != video)
            movie.context()->streams[i]->discard = AVDISCARD_ALL;
    const Decoder decoder = openDecoder(video);
    const Frame frame = decoder ? decodeFirst(movie, video, decoder.get()) : nullptr;
    if (!frame || frame->width < 1 || frame->height < 1)
        return failure("it cannot be decoded");
    const double factor = std::min(1.0, double(longestEdge) / std::max(upright->width, upright->height));
    Report report{.kind = Report::Kind::frame,
                  .width = std::max(1, static_cast<int>(std::lround(upright->width * factor))),
                  .height = std::max(1, static_cast<int>(std::lround(upright->height * factor))),
                  .turn = upright->turn};
    const auto pixels = scaled(*frame, report.width, report.height);
    return !pixels.empty() && writeAll(result, pixels) ? report : failure("it cannot be shown");
}

} // namespace tavrine
