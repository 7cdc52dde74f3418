#include "support/CastNode.h"

#include "support/Wait.h"

#include <QImage>

#include <algorithm>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tavrine::test {
namespace {

constexpr int buffers = 4;
constexpr int bytesPerPixel = 4;
constexpr timespec beat{.tv_sec = 0, .tv_nsec = 4'000'000};
constexpr int mostRepeats = 250; // a second

const spa_pod *formatOf(spa_pod_builder &builder, QSize size, spa_video_format format, bool hasModifier) {
    const spa_rectangle pixels{static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height())};
    const spa_fraction any{0, 1};
    const spa_fraction least{1, 1};
    const spa_fraction most{1000, 1};
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format, SPA_POD_Id(format), 0);
    if (hasModifier) {
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_modifier, SPA_POD_PROP_FLAG_MANDATORY);
        spa_pod_builder_long(&builder, 0); // lines as they are, in the card's memory
    }
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&pixels), SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_Fraction(&any), SPA_FORMAT_VIDEO_maxFramerate,
                        SPA_POD_CHOICE_RANGE_Fraction(&most, &least, &most), 0);
    return static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

} // namespace

struct CastNode::Parts {
    explicit Parts(const Offer &wanted) : offer(wanted), picture(wanted.size, QImage::Format_RGB32) { picture.fill(0); }

    [[nodiscard]] int stride() const { return picture.width() * bytesPerPixel; }
    [[nodiscard]] std::uint32_t pictureBytes() const { return static_cast<std::uint32_t>(stride() * picture.height()); }
    [[nodiscard]] std::uint32_t really(bool isFirst) const {
        return isFirst || offer.memoryBytes < 0 ? pictureBytes() : static_cast<std::uint32_t>(offer.memoryBytes);
    }

    /// What is offered: the first is liked best.
    std::vector<const spa_pod *> formats(spa_pod_builder &builder) const {
        const auto format = offer.colours == Colours::redFirst ? SPA_VIDEO_FORMAT_RGBx : SPA_VIDEO_FORMAT_BGRx;
        std::vector<const spa_pod *> all;
        if (offer.memory != Memory::mapped)
            all.push_back(formatOf(builder, picture.size(), format, true));
        if (offer.memory != Memory::graphics)
            all.push_back(formatOf(builder, picture.size(), format, false));
        return all;
    }
    void tellBuffers() const {
        std::uint8_t room[512];
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, room, sizeof room);
        const auto *param = static_cast<const spa_pod *>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers, SPA_POD_Int(buffers),
            SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
            SPA_POD_Int(static_cast<int>(pictureBytes())), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(stride()),
            SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemFd)));
        pw_stream_update_params(stream, &param, 1);
    }
    void addBuffer(pw_buffer &buffer) {
        spa_data &data = buffer.buffer->datas[0];
        const bool isFirst = made++ == 0;
        data.type = SPA_DATA_MemFd;
        data.flags = SPA_DATA_FLAG_READWRITE;
        data.fd = ::memfd_create("cast", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        data.mapoffset = 0;
        data.maxsize = pictureBytes();
        (void)!::ftruncate(static_cast<int>(data.fd), really(isFirst));
        if (offer.isSealed)
            ::fcntl(static_cast<int>(data.fd), F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL);
        files.push_back(static_cast<int>(data.fd));
        data.data = ::mmap(nullptr, data.maxsize, PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(data.fd), 0);
        buffer.user_data = isFirst ? this : nullptr;
    }
    void removeBuffer(pw_buffer &buffer) {
        const spa_data &data = buffer.buffer->datas[0];
        std::erase(files, static_cast<int>(data.fd));
        ::munmap(data.data, data.maxsize);
        ::close(static_cast<int>(data.fd));
    }
    bool give(const Said &said) {
        pw_buffer *const buffer = pw_stream_get_state(stream, nullptr) == PW_STREAM_STATE_STREAMING
                                      ? pw_stream_dequeue_buffer(stream)
                                      : nullptr;
        if (!buffer)
            return false;
        const spa_data &data = buffer->buffer->datas[0];
        const QImage image =
            offer.colours == Colours::redFirst ? picture.convertToFormat(QImage::Format_RGBX8888) : picture;
        std::memcpy(data.data, image.constBits(), std::min({pictureBytes(), really(buffer->user_data), data.maxsize}));
        data.chunk->offset = said.offset;
        data.chunk->stride = said.stride ? said.stride : stride();
        data.chunk->size = said.isEmpty ? 0 : data.maxsize;
        data.chunk->flags = said.isCorrupted ? SPA_CHUNK_FLAG_CORRUPTED : SPA_CHUNK_FLAG_NONE;
        pw_stream_queue_buffer(stream, buffer);
        pw_stream_trigger_process(stream);
        return true;
    }
    void giveWhatIsDue() {
        if (isDue && give({}))
            isDue = false;
    }
    void begin() {
        beats = 0;
        ++looks;
        if (offer.stillFrom > 0 && looks >= offer.stillFrom)
            isDue = true;
        giveWhatIsDue();
    }
    /// Again and again: what stands in line goes out, and buffers that were let go come back.
    void beat() {
        giveWhatIsDue();
        if (pw_stream_get_state(stream, nullptr) != PW_STREAM_STATE_STREAMING || offer.stillFrom > 0)
            return;
        if (offer.repeatsFirst && beats++ < mostRepeats)
            isDue = true;
        pw_stream_trigger_process(stream);
    }

    const Offer offer;
    QImage picture;
    bool isDue = false;
    int made = 0;           ///< buffers
    int beats = 0;          ///< since somebody looks
    int looks = 0;          ///< that were begun
    std::vector<int> files; ///< of the buffers
    pw_thread_loop *loop = nullptr;
    pw_context *context = nullptr;
    pw_core *core = nullptr;
    pw_stream *stream = nullptr;
    spa_source *timer = nullptr;
    spa_hook hook{};
};

CastNode::CastNode(const Offer &offer) : m_parts(std::make_unique<Parts>(offer)) {
    pw_init(nullptr, nullptr);
    Parts &parts = *m_parts;
    parts.loop = pw_thread_loop_new("cast", nullptr);
    parts.context = pw_context_new(pw_thread_loop_get_loop(parts.loop), nullptr, 0);
    parts.core = pw_context_connect(parts.context, nullptr, 0);
    parts.stream = pw_stream_new(parts.core, "cast", pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", nullptr));
    static const pw_stream_events events = [] {
        pw_stream_events made{};
        made.version = PW_VERSION_STREAM_EVENTS;
        made.state_changed = [](void *self, pw_stream_state /*before*/, pw_stream_state state, const char * /*error*/) {
            if (state == PW_STREAM_STATE_STREAMING)
                static_cast<Parts *>(self)->begin();
        };
        made.param_changed = [](void *self, std::uint32_t id, const spa_pod *param) {
            if (param && id == SPA_PARAM_Format)
                static_cast<Parts *>(self)->tellBuffers();
        };
        made.add_buffer = [](void *self, pw_buffer *buffer) { static_cast<Parts *>(self)->addBuffer(*buffer); };
        made.remove_buffer = [](void *self, pw_buffer *buffer) { static_cast<Parts *>(self)->removeBuffer(*buffer); };
        return made;
    }();
    pw_stream_add_listener(parts.stream, &parts.hook, &events, &parts);
    std::uint8_t room[2048];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, room, sizeof room);
    auto formats = parts.formats(builder);
    pw_stream_connect(parts.stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_ALLOC_BUFFERS),
                      formats.data(), static_cast<std::uint32_t>(formats.size()));
    parts.timer = pw_loop_add_timer(
        pw_thread_loop_get_loop(parts.loop), [](void *self, std::uint64_t) { static_cast<Parts *>(self)->beat(); },
        &parts);
    timespec first = beat;
    timespec next = beat;
    pw_loop_update_timer(pw_thread_loop_get_loop(parts.loop), parts.timer, &first, &next, false);
    pw_thread_loop_start(parts.loop);
}

CastNode::~CastNode() {
    Parts &parts = *m_parts;
    pw_thread_loop_lock(parts.loop);
    pw_loop_destroy_source(pw_thread_loop_get_loop(parts.loop), parts.timer);
    spa_hook_remove(&parts.hook);
    pw_stream_destroy(parts.stream);
    pw_core_disconnect(parts.core);
    pw_context_destroy(parts.context);
    pw_thread_loop_unlock(parts.loop);
    pw_thread_loop_stop(parts.loop);
    pw_thread_loop_destroy(parts.loop);
}

std::uint32_t CastNode::number() const {
    std::uint32_t number = SPA_ID_INVALID;
    static_cast<void>(testing::waitUntil([&] {
        pw_thread_loop_lock(m_parts->loop);
        number = pw_stream_get_node_id(m_parts->stream);
        pw_thread_loop_unlock(m_parts->loop);
        return number != SPA_ID_INVALID;
    }));
    return number;
}

bool CastNode::isSeen() const {
    pw_thread_loop_lock(m_parts->loop);
    const bool isSeen = pw_stream_get_state(m_parts->stream, nullptr) == PW_STREAM_STATE_STREAMING;
    pw_thread_loop_unlock(m_parts->loop);
    return isSeen;
}

void CastNode::paint(const QRect &area, std::uint32_t colour) {
    pw_thread_loop_lock(m_parts->loop);
    QImage &picture = m_parts->picture;
    for (int y = area.top(); y <= area.bottom(); ++y)
        std::fill_n(reinterpret_cast<QRgb *>(picture.scanLine(y)) + area.x(), area.width(), colour);
    m_parts->isDue = true;
    m_parts->giveWhatIsDue();
    pw_thread_loop_unlock(m_parts->loop);
}

void CastNode::paint(std::uint32_t colour) {
    paint(m_parts->picture.rect(), colour);
}

void CastNode::hide(std::uint32_t colour) {
    pw_thread_loop_lock(m_parts->loop);
    m_parts->picture.fill(colour);
    m_parts->isDue = false;
    pw_thread_loop_unlock(m_parts->loop);
}

bool CastNode::give(const Said &said) {
    pw_thread_loop_lock(m_parts->loop);
    const bool isGiven = m_parts->give(said);
    pw_thread_loop_unlock(m_parts->loop);
    return isGiven;
}

bool CastNode::takeMemoryAway() {
    pw_thread_loop_lock(m_parts->loop);
    m_parts->isDue = false; // nobody paints there any more
    const bool isTaken = std::ranges::all_of(m_parts->files, [](int file) { return ::ftruncate(file, 0) == 0; });
    pw_thread_loop_unlock(m_parts->loop);
    return isTaken;
}

void CastNode::resize(QSize size) {
    pw_thread_loop_lock(m_parts->loop);
    m_parts->picture = QImage(size, QImage::Format_RGB32);
    m_parts->picture.fill(0);
    std::uint8_t room[2048];
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, room, sizeof room);
    auto formats = m_parts->formats(builder);
    pw_stream_update_params(m_parts->stream, formats.data(), static_cast<std::uint32_t>(formats.size()));
    pw_thread_loop_unlock(m_parts->loop);
}

} // namespace tavrine::test
