#include "programs/movies/MovieFile.h"

#include "adapters/linux/MovieProtocol.h"

#include <cmath>
#include <utility>

extern "C" {
#include <libavutil/mem.h>
}

namespace tavrine {
namespace {

/// What recordings are, ours and those of browsers. Lists of other files are none.
constexpr auto formats = "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm";
constexpr std::int64_t mostProbed = 5'000'000;                         // bytes, as the library does it
constexpr std::int64_t longestProbed = std::int64_t{2} * AV_TIME_BASE; // of the movie

/// Of the display matrix, which is in fixed point: turns by right angles and mirrors, for nobody records anything else.
std::array<int, 4> turnOf(const AVStream *video) {
    constexpr std::array<int, 4> none{1, 0, 0, 1};
    std::size_t size = 0;
    const auto *const matrix =
        reinterpret_cast<const std::int32_t *>(av_stream_get_side_data(video, AV_PKT_DATA_DISPLAYMATRIX, &size));
    if (!matrix || size < 9 * sizeof(std::int32_t))
        return none;
    const auto sign = [](std::int32_t number) { return number > 0 ? 1 : number < 0 ? -1 : 0; };
    const std::array<int, 4> turn{sign(matrix[0]), sign(matrix[1]), sign(matrix[3]), sign(matrix[4])};
    const bool isStraight = turn[0] != 0 && turn[3] != 0 && turn[1] == 0 && turn[2] == 0;
    const bool isCrossed = turn[0] == 0 && turn[3] == 0 && turn[1] != 0 && turn[2] != 0;
    return isStraight || isCrossed ? turn : none;
}

} // namespace

std::string wordsOf(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> words{};
    av_strerror(error, words.data(), words.size());
    return words.data();
}

MovieFile::MovieFile(int descriptor, std::function<void()> isUsed)
    : m_file(descriptor, OpenFile::Use::reading, std::move(isUsed)) {}

MovieFile::~MovieFile() {
    avformat_close_input(&m_context);
}

std::optional<std::string> MovieFile::open() {
    m_context = avformat_alloc_context();
    if (!m_context || !m_file.context())
        return "memory is wanting";
    m_context->pb = m_file.context();
    m_context->format_whitelist = av_strdup(formats);
    m_context->probesize = mostProbed;
    m_context->max_analyze_duration = longestProbed;
    // The file is all there is: nothing that it names is opened.
    m_context->io_open = [](AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **) {
        return AVERROR(EPERM);
    };
    if (const int error = avformat_open_input(&m_context, "", nullptr, nullptr); error < 0)
        return wordsOf(error);
    if (const int error = avformat_find_stream_info(m_context, nullptr); error < 0)
        return wordsOf(error);
    return std::nullopt;
}

AVStream *MovieFile::video() const {
    for (unsigned i = 0; i < m_context->nb_streams; ++i) {
        AVStream *const stream = m_context->streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            return stream;
    }
    return nullptr;
}

bool MovieFile::hasAudio() const {
    for (unsigned i = 0; i < m_context->nb_streams; ++i) {
        if (m_context->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            return true;
    }
    return false;
}

std::optional<Upright> uprightOf(AVFormatContext *context, AVStream *video) {
    const AVRational shape = av_guess_sample_aspect_ratio(context, video, nullptr);
    const double stretch = shape.num > 0 && shape.den > 0 ? av_q2d(shape) : 1.0;
    const double width = std::round(video->codecpar->width * stretch);
    const int height = video->codecpar->height;
    if (!(width >= 1 && width <= movieProtocol::mostPixels) || height < 1 || height > movieProtocol::mostPixels)
        return std::nullopt;
    return Upright{.width = static_cast<int>(width), .height = height, .turn = turnOf(video)};
}

} // namespace tavrine
