#include "adapters/cast/CastReader.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr int bytesPerPixel = 4;
constexpr std::uint32_t longestSide = 16384; ///< more than any desktop has; a size is the compositor's word
constexpr std::uint32_t mostPictures = 60;   ///< a second

void beginOnce() {
    static std::once_flag begun;
    std::call_once(begun, [] { pw_init(nullptr, nullptr); });
}

const spa_pod *acceptedFormats(spa_pod_builder &builder) {
    const spa_rectangle usual{1920, 1080};
    const spa_rectangle least{1, 1};
    const spa_rectangle most{longestSide, longestSide};
    const spa_fraction any{0, 1};
    const spa_fraction fastest{1000, 1};
    const spa_fraction wanted{mostPictures, 1};
    return static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
        SPA_POD_CHOICE_ENUM_Id(5, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRA,
                               SPA_VIDEO_FORMAT_RGBx, SPA_VIDEO_FORMAT_RGBA),
        SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&usual, &least, &most), SPA_FORMAT_VIDEO_framerate,
        SPA_POD_CHOICE_RANGE_Fraction(&any, &any, &fastest), SPA_FORMAT_VIDEO_maxFramerate,
        SPA_POD_CHOICE_RANGE_Fraction(&wanted, &any, &fastest)));
}

/// Memory that is mapped here: no pictures of the graphics card's.
const spa_pod *acceptedBuffers(spa_pod_builder &builder) {
    return static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr))));
}

/// No file is below it, or one that nobody can shorten any more. Compositors seal theirs.
bool cannotShrink(const spa_data &data) {
    if (data.type != SPA_DATA_MemFd)
        return true;
    const int seals = ::fcntl(static_cast<int>(data.fd), F_GET_SEALS);
    return seals >= 0 && (seals & F_SEAL_SHRINK) != 0;
}

/// Memory that is mapped beyond the end of its file must not be touched.
std::int64_t roomIn(const spa_data &data) {
    struct stat file {};
    if (data.type != SPA_DATA_MemFd)
        return data.maxsize;
    return ::fstat(static_cast<int>(data.fd), &file) == 0
               ? std::min(std::int64_t{data.maxsize}, std::int64_t{file.st_size} - std::int64_t{data.mapoffset})
               : 0;
}

} // namespace

struct CastReader::Hook {
    spa_hook hook{};
};

struct CastEvents {
    static void stateChanged(void *self, pw_stream_state /*before*/, pw_stream_state state, const char *error) {
        auto *const reader = static_cast<CastReader *>(self);
        if (state == PW_STREAM_STATE_ERROR || state == PW_STREAM_STATE_UNCONNECTED)
            reader->m_lost = QStringLiteral("The desktop has ended its pictures: ") +
                             QString::fromUtf8(error ? error : "it said nothing more.");
    }
    static void formatChanged(void *self, std::uint32_t id, const spa_pod *format) {
        if (format && id == SPA_PARAM_Format)
            static_cast<CastReader *>(self)->agreeOn(format);
    }
    static void bufferRemoved(void *self, pw_buffer *buffer) {
        auto *const reader = static_cast<CastReader *>(self);
        if (reader->m_picture == buffer)
            reader->m_picture = nullptr;
    }
    static void pictureCame(void *self) { static_cast<CastReader *>(self)->take(); }

    static const pw_stream_events *all() {
        static const pw_stream_events events = [] {
            pw_stream_events made{};
            made.version = PW_VERSION_STREAM_EVENTS;
            made.state_changed = stateChanged;
            made.param_changed = formatChanged;
            made.remove_buffer = bufferRemoved;
            made.process = pictureCame;
            return made;
        }();
        return &events;
    }
};

CastReader::CastReader() : m_hook(std::make_unique<Hook>()) {
    beginOnce();
    m_loop = pw_loop_new(nullptr);
    // For good: pictures are announced by a thread of PipeWire's, which would take them itself while nobody is in the
    // loop, and wake nobody.
    if (m_loop)
        pw_loop_enter(m_loop);
    m_context = m_loop ? pw_context_new(m_loop, nullptr, 0) : nullptr;
}

CastReader::~CastReader() {
    if (m_stream) {
        spa_hook_remove(&m_hook->hook);
        pw_stream_destroy(m_stream);
    }
    if (m_core)
        pw_core_disconnect(m_core);
    if (m_context)
        pw_context_destroy(m_context);
    if (m_loop) {
        pw_loop_leave(m_loop);
        pw_loop_destroy(m_loop);
    }
}

std::optional<QString> CastReader::open(std::uint32_t node, Descriptor remote) {
    if (m_context)
        m_core = remote.isOpen() ? pw_context_connect_fd(m_context, remote.release(), nullptr, 0)
                                 : pw_context_connect(m_context, nullptr, 0);
    if (!m_core)
        return QStringLiteral("There is no PipeWire to see the screen by.");
    m_stream = pw_stream_new(m_core, "Tavrine",
                             pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture",
                                               PW_KEY_MEDIA_ROLE, "Screen", "node.dont-fallback", "true", nullptr));
    if (!m_stream)
        return QStringLiteral("There is no memory for a stream.");
    pw_stream_add_listener(m_stream, &m_hook->hook, CastEvents::all(), this);
    std::uint8_t room[1024];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, room, sizeof room);
    const spa_pod *formats = acceptedFormats(builder);
    // When the compositor ends the cast this ends too; else the next best source would come in its place, a camera.
    const auto flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                                    PW_STREAM_FLAG_DONT_RECONNECT);
    if (pw_stream_connect(m_stream, PW_DIRECTION_INPUT, node, flags, &formats, 1) < 0)
        return QStringLiteral("PipeWire does not give the screen's pictures.");
    return m_lost;
}

int CastReader::descriptor() const {
    return m_loop ? pw_loop_get_fd(m_loop) : -1;
}

void CastReader::dispatch() {
    if (m_loop)
        pw_loop_iterate(m_loop, 0);
}

void CastReader::agreeOn(const spa_pod *format) {
    letGo(); // what is there is of another kind
    spa_video_info_raw info{};
    if (spa_format_video_raw_parse(format, &info) < 0 || info.size.width == 0 || info.size.height == 0 ||
        info.size.width > longestSide || info.size.height > longestSide) {
        m_lost = QStringLiteral("The desktop's pictures are of a kind that is not known.");
        return;
    }
    m_size = QSize(static_cast<int>(info.size.width), static_cast<int>(info.size.height));
    m_isRedFirst = info.format == SPA_VIDEO_FORMAT_RGBx || info.format == SPA_VIDEO_FORMAT_RGBA;
    std::uint8_t room[256];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, room, sizeof room);
    const spa_pod *buffers = acceptedBuffers(builder);
    pw_stream_update_params(m_stream, &buffers, 1);
}

/// What a compositor says of its memory is believed as far as it is mapped here and a file is below it. It is read
/// once: it lies in memory that the compositor can still write.
std::optional<CastLines> CastReader::linesOf(const pw_buffer &buffer) const {
    const spa_buffer &pictures = *buffer.buffer;
    if (pictures.n_datas < 1 || !pictures.datas[0].data)
        return std::nullopt;
    const spa_data &data = pictures.datas[0];
    spa_chunk chunk{};
    std::memcpy(&chunk, data.chunk, sizeof chunk);
    if (chunk.size == 0 || (chunk.flags & SPA_CHUNK_FLAG_CORRUPTED) != 0) // the pointer alone, or nothing
        return std::nullopt;
    return wholeLines(m_size, {chunk.offset, chunk.stride}, roomIn(data));
}

void CastReader::take() {
    while (pw_buffer *const next = pw_stream_dequeue_buffer(m_stream)) {
        const bool isSealed = next->buffer->n_datas > 0 && cannotShrink(next->buffer->datas[0]); // before its length
        const auto lines = linesOf(*next);
        if (!lines) {
            pw_stream_queue_buffer(m_stream, next);
            continue;
        }
        letGo();
        m_picture = next;
        m_lines = *lines;
        m_cannotShrink = isSealed;
    }
}

/// Of the memory of the picture. A mapping whose file was shortened ends who reads it, so that a file which can be is
/// read as such: what it has no more is black.
void CastReader::copyBytes(std::int64_t from, std::size_t count, void *into) const {
    const spa_data &data = m_picture->buffer->datas[0];
    if (m_cannotShrink) {
        std::memcpy(into, static_cast<const std::uint8_t *>(data.data) + from, count);
        return;
    }
    const ssize_t got = ::pread(static_cast<int>(data.fd), into, count, std::int64_t{data.mapoffset} + from);
    const std::size_t there = std::max<ssize_t>(got, 0);
    std::memset(static_cast<std::uint8_t *>(into) + there, 0, count - there);
}

void CastReader::readLine(int y, int from, int count, std::uint32_t *into) const {
    copyBytes(m_lines.offset + std::int64_t{m_lines.stride} * y + std::int64_t{from} * bytesPerPixel,
              static_cast<std::size_t>(count) * bytesPerPixel, into);
    constexpr std::uint32_t noMeaning = 0xff000000U;
    std::transform(into, into + count, into, [isRedFirst = m_isRedFirst](std::uint32_t pixel) {
        return noMeaning | (isRedFirst ? (pixel & 0xff00U) | (pixel & 0xffU) << 16 | (pixel >> 16 & 0xffU) : pixel);
    });
}

void CastReader::letGo() {
    if (m_picture)
        pw_stream_queue_buffer(m_stream, std::exchange(m_picture, nullptr));
}

void CastReader::setLooking(bool isLooking) {
    if (m_stream)
        pw_stream_set_active(m_stream, isLooking);
}

} // namespace tavrine
