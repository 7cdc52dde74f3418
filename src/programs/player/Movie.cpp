#include "programs/player/Movie.h"

#include "programs/player/MpvSettings.h"

#include <clocale>
#include <utility>

namespace tavrine {
namespace {

constexpr std::uint64_t lookRequest = 1;
constexpr std::uint64_t shownRequest = 2;

constexpr MpvSetting settings[] = {
    // The other outputs want a graphics card.
    {"vo", "x11"},
    {"hwdec", "no"},
    {"vd-lavc-threads", "1"},
    {"loop-file", "inf"},
    {"keep-open", "yes"}, // a single frame, with which no loop gets further, stays where it is
    {"force-media-title", "Recording"},
    {"pulse-buffer", "40"}, // milliseconds, after which a word to be silent counts
    // The window has an owner, who has the keys and the pointer.
    {"input-vo-keyboard", "no"},
    {"input-cursor", "no"},
    {"cursor-autohide", "no"},
    {"stop-screensaver", "no"},
    {"osd-level", "0"},
};

} // namespace

Movie::Movie(Handlers handlers, void (*wake)(void *), void *data)
    : m_handlers(std::move(handlers)), m_wake(wake), m_data(data) {}

std::optional<std::string> Movie::open(int descriptor, std::uint32_t window, Sound sound) {
    std::setlocale(LC_NUMERIC, "C"); // as the library asks
    m_mpv = mpv_create();
    if (!m_mpv)
        return "there is no memory for a player";
    const std::string windowNumber = std::to_string(window);
    const MpvSetting here[] = {{"wid", windowNumber.c_str()}, {"ao", sound == Sound::heard ? "pulse,null" : "null"}};
    int error = setAll(m_mpv, mpvSettings);
    if (error >= 0)
        error = setAll(m_mpv, settings);
    if (error >= 0)
        error = setAll(m_mpv, here);
    if (error >= 0)
        error = mpv_initialize(m_mpv);
    if (error >= 0) {
        mpv_set_wakeup_callback(m_mpv, m_wake, m_data);
        const std::string place = "fd://" + std::to_string(descriptor);
        const char *load[] = {"loadfile", place.c_str(), nullptr};
        error = mpv_command_async(m_mpv, 0, load);
    }
    return error < 0 ? std::optional<std::string>(mpv_error_string(error)) : std::nullopt;
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
