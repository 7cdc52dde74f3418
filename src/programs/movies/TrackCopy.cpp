#include "programs/movies/TrackCopy.h"

#include <cerrno>
#include <cstring>
#include <memory>

extern "C" {
#include <libavcodec/packet.h>
#include <libavutil/mem.h>
}

namespace tavrine {
namespace {

constexpr auto failedMemory = "memory is wanting";

struct FreePacket {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

/// The movie that is written. The library reads it again at the end, to put its index in front.
class Copy {
public:
    Copy(int descriptor, const std::function<void()> &isUsed)
        : m_descriptor(descriptor), m_isUsed(isUsed), m_file(descriptor, OpenFile::Use::writing, isUsed) {}
    ~Copy() { avformat_free_context(m_context); }
    Copy(const Copy &) = delete;
    Copy &operator=(const Copy &) = delete;

    [[nodiscard]] int begin(const AVStream *from) {
        int error = avformat_alloc_output_context2(&m_context, nullptr, "mp4", nullptr);
        if (error < 0 || !m_file.context())
            return AVERROR(ENOMEM);
        m_context->pb = m_file.context();
        m_context->opaque = this;
        m_context->io_open = &Copy::openAgain;
        m_context->io_close2 = &Copy::closeAgain;
        error = addTrack(from);
        if (error < 0)
            return error;
        AVDictionary *options = nullptr;
        av_dict_set(&options, "movflags", "+faststart", 0);
        error = avformat_write_header(m_context, &options);
        av_dict_free(&options);
        return error;
    }
    [[nodiscard]] int write(AVPacket *packet, const AVStream *from) {
        packet->stream_index = 0;
        packet->pos = -1;
        av_packet_rescale_ts(packet, from->time_base, m_context->streams[0]->time_base);
        m_count += 1;
        return av_write_frame(m_context, packet);
    }
    [[nodiscard]] int end() {
        const int error = av_write_trailer(m_context);
        avio_flush(m_context->pb);
        if (m_count == 0)
            return AVERROR_INVALIDDATA;
        return error < 0 ? error : m_context->pb->error;
    }

private:
    [[nodiscard]] int addTrack(const AVStream *from) {
        AVStream *const to = avformat_new_stream(m_context, nullptr);
        if (!to)
            return AVERROR(ENOMEM);
        if (const int error = avcodec_parameters_copy(to->codecpar, from->codecpar); error < 0)
            return error;
        to->codecpar->codec_tag = 0;     // this format's own
        to->time_base = from->time_base; // so that no time is rounded
        to->avg_frame_rate = from->avg_frame_rate;
        to->sample_aspect_ratio = from->sample_aspect_ratio;
        for (int i = 0; i < from->nb_side_data; ++i) { // how it is turned, among others
            const AVPacketSideData &data = from->side_data[i];
            std::uint8_t *const same = av_stream_new_side_data(to, data.type, data.size);
            if (!same)
                return AVERROR(ENOMEM);
            std::memcpy(same, data.data, data.size);
        }
        return 0;
    }

    static int openAgain(AVFormatContext *context, AVIOContext **file, const char *, int flags, AVDictionary **) {
        auto *const self = static_cast<Copy *>(context->opaque);
        if (self->m_again || (flags & AVIO_FLAG_WRITE) != 0)
            return AVERROR(EPERM);
        self->m_again = std::make_unique<OpenFile>(self->m_descriptor, OpenFile::Use::reading, self->m_isUsed);
        *file = self->m_again->context();
        return *file ? 0 : AVERROR(ENOMEM);
    }
    static int closeAgain(AVFormatContext *context, AVIOContext *) {
        static_cast<Copy *>(context->opaque)->m_again.reset();
        return 0;
    }

    int m_descriptor;
    const std::function<void()> &m_isUsed;
    OpenFile m_file;
    std::unique_ptr<OpenFile> m_again;
    AVFormatContext *m_context = nullptr;
    std::int64_t m_count = 0;
};

} // namespace

std::optional<std::string> copyVideoTrack(MovieFile &movie, int result, const std::function<void()> &isUsed) {
    const AVStream *const video = movie.video();
    if (!video)
        return "there is no picture in it";
    for (unsigned i = 0; i < movie.context()->nb_streams; ++i)
        if (movie.context()->streams[i] != video)
            movie.context()->streams[i]->discard = AVDISCARD_ALL;
    const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    if (!packet)
        return failedMemory;
    Copy copy(result, isUsed);
    int error = copy.begin(video);
    int read = 0;
    while (error >= 0 && (read = av_read_frame(movie.context(), packet.get())) >= 0) {
        if (packet->stream_index == video->index)
            error = copy.write(packet.get(), video);
        av_packet_unref(packet.get());
    }
    if (error >= 0 && read != AVERROR_EOF)
        error = read;
    if (error >= 0)
        error = copy.end();
    return error < 0 ? std::optional(wordsOf(error)) : std::nullopt;
}

} // namespace tavrine
