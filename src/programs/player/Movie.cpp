#include "programs/player/Movie.h"

#include "base/ErrorText.h"
#include "programs/player/MpvSettings.h"

#include <cerrno>
#include <clocale>
#include <utility>

#include <sys/mman.h>

namespace tavrine {
namespace {

constexpr std::uint64_t lookRequest = 1;
constexpr std::uint64_t shownRequest = 2;

constexpr MpvSetting settings[] = {
    {"vo", "libmpv"},
    {"video-timing-offset", "0"}, // a frame comes when it is time for it, and nobody waits with it in hand
    {"hwdec", "no"},
    {"vd-lavc-threads", "1"},
    {"loop-file", "inf"},
    {"keep-open", "yes"}, // a single frame, with which no loop gets further, stays where it is
    {"force-media-title", "Recording"},
    {"pulse-buffer", "40"}, // milliseconds, after which a word to be silent counts
    {"osd-level", "0"},
};

} // namespace

Movie::Movie(Handlers handlers, void (*wake)(void *), void *data)
    : m_handlers(std::move(handlers)), m_wake(wake), m_data(data) {}

std::optional<std::string> Movie::open(int movie, int memory, Sound sound) {
    m_memory = ::mmap(nullptr, playerProtocol::pictureBytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
    if (m_memory == MAP_FAILED)
        return std::string("its memory: ") + errorText(errno);
    std::setlocale(LC_NUMERIC, "C"); // as the library asks
    m_mpv = mpv_create();
    if (!m_mpv)
        return "there is no memory for a player";
    int error = start(sound);
    if (error >= 0) {
        mpv_set_wakeup_callback(m_mpv, m_wake, m_data);
        mpv_render_context_set_update_callback(m_pictures, m_wake, m_data);
        const std::string place = "fd://" + std::to_string(movie);
        const char *load[] = {"loadfile", place.c_str(), nullptr};
        error = mpv_command_async(m_mpv, 0, load);
    }
    return error < 0 ? std::optional<std::string>(mpv_error_string(error)) : std::nullopt;
}

/// A renderer has to be there before a movie is.
int Movie::start(Sound sound) {
    const MpvSetting here[] = {{"ao", sound == Sound::heard ? "pulse,null" : "null"}};
    int error = setAll(m_mpv, mpvSettings);
    if (error >= 0)
        error = setAll(m_mpv, settings);
    if (error >= 0)
        error = setAll(m_mpv, here);
    if (error >= 0)
        error = mpv_initialize(m_mpv);
    if (error < 0)
        return error;
    char inMemory[] = MPV_RENDER_API_TYPE_SW;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_API_TYPE, inMemory}, {MPV_RENDER_PARAM_INVALID, nullptr}};
    return mpv_render_context_create(&m_pictures, m_mpv, parameters);
}

void Movie::setPictureSize(playerProtocol::PictureSize size) {
    m_size = size;
    m_isWaiting = m_hasFrame;
    showPicture();
}

void Movie::nextPicture() {
    m_isMemoryOurs = true;
    showPicture();
}

void Movie::showPicture() {
    if (!m_isWaiting || !m_isMemoryOurs || m_size.width == 0)
        return;
    m_isWaiting = false;
    int size[] = {m_size.width, m_size.height};
    int waitsForItsTime = 0;
    char format[] = "bgr0";
    std::size_t row =
        static_cast<std::size_t>(playerProtocol::pixelsInRow(m_size.width)) * playerProtocol::bytesOfPixel;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_SW_SIZE, size},
                                     {MPV_RENDER_PARAM_SW_FORMAT, format},
                                     {MPV_RENDER_PARAM_SW_STRIDE, &row},
                                     {MPV_RENDER_PARAM_SW_POINTER, m_memory},
                                     {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForItsTime},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    if (mpv_render_context_render(m_pictures, parameters) < 0)
        return;
    m_isMemoryOurs = false;
    m_handlers.picture(m_size);
}

// Commands do not wait for the library, which may be busy with a file that never ends.
void Movie::setPaused(bool isPaused) {
    int flag = isPaused;
    mpv_set_property_async(m_mpv, 0, "pause", MPV_FORMAT_FLAG, &flag);
}

void Movie::setMuted(bool isMuted) {
    int flag = isMuted;
    mpv_set_property_async(m_mpv, 0, "mute", MPV_FORMAT_FLAG, &flag);
}

void Movie::look() {
    mpv_get_property_async(m_mpv, lookRequest, "idle-active", MPV_FORMAT_FLAG);
}

void Movie::work() {
    for (const mpv_event *event = mpv_wait_event(m_mpv, 0); event->event_id != MPV_EVENT_NONE;
         event = mpv_wait_event(m_mpv, 0))
        handle(*event);
    if (mpv_render_context_update(m_pictures) & MPV_RENDER_UPDATE_FRAME)
        m_hasFrame = m_isWaiting = true;
    showPicture();
}

void Movie::handle(const mpv_event &event) {
    if (event.event_id == MPV_EVENT_PLAYBACK_RESTART && !m_isReady) { // for every loop, too
        mpv_get_property_async(m_mpv, shownRequest, "vo-configured", MPV_FORMAT_FLAG);
    } else if (event.event_id == MPV_EVENT_GET_PROPERTY_REPLY && event.reply_userdata == lookRequest) {
        m_handlers.isAlive();
    } else if (event.event_id == MPV_EVENT_GET_PROPERTY_REPLY && event.reply_userdata == shownRequest) {
        const bool isShown =
            event.error >= 0 && *static_cast<const int *>(static_cast<const mpv_event_property *>(event.data)->data);
        if (!isShown)
            m_handlers.failed(false, "there is no picture in it");
        else if (!std::exchange(m_isReady, true))
            m_handlers.ready();
    } else if (event.event_id == MPV_EVENT_END_FILE) {
        const auto &end = *static_cast<const mpv_event_end_file *>(event.data);
        if (end.reason == MPV_END_FILE_REASON_REDIRECT)
            return; // a list of others, none of which can be opened; their ends follow
        const bool isError = end.reason == MPV_END_FILE_REASON_ERROR;
        m_handlers.failed(isError && end.error == MPV_ERROR_VO_INIT_FAILED,
                          mpv_error_string(isError ? end.error : MPV_ERROR_NOTHING_TO_PLAY));
    }
}

} // namespace tavrine
