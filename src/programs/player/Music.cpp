#include "programs/player/Music.h"

#include "programs/player/MpvSettings.h"

#include <clocale>
#include <utility>

namespace tavrine {
namespace {

constexpr std::uint64_t lookRequest = 1;

/// Sounds alone.
constexpr MpvSetting settings[] = {
    {"vid", "no"},
    {"vo", "null"},
    // The output is opened once and never again, so that nothing is heard elsewhere; and loops have no gap.
    {"ao", "pulse"},
    {"gapless-audio", "yes"},
    {"force-media-title", "Lo-Fi Vibe"},
};

} // namespace

Music::Music(Handlers handlers, void (*wake)(void *), void *data)
    : m_handlers(std::move(handlers)), m_wake(wake), m_data(data) {}

std::optional<std::string> Music::open(int descriptor) {
    std::setlocale(LC_NUMERIC, "C"); // as the library asks
    m_mpv = mpv_create();
    if (!m_mpv)
        return "there is no memory for a player";
    m_error = setAll(m_mpv, mpvSettings);
    if (m_error >= 0)
        m_error = setAll(m_mpv, settings);
    if (m_error >= 0)
        m_error = mpv_initialize(m_mpv);
    if (m_error >= 0) {
        mpv_set_wakeup_callback(m_mpv, m_wake, m_data);
        const std::string place = "fd://" + std::to_string(descriptor);
        const char *load[] = {"loadfile", place.c_str(), nullptr};
        m_error = mpv_command_async(m_mpv, 0, load);
    }
    return m_error < 0 ? std::optional<std::string>(mpv_error_string(m_error)) : std::nullopt;
}

void Music::play(int loops) {
    m_isPlaying = true;
    m_isEndless = loops < 0;
    mpv_set_property_string(m_mpv, "loop-file", loops < 0 ? "inf" : std::to_string(loops).c_str());
    mpv_set_property_string(m_mpv, "pause", "no");
}

void Music::look() {
    mpv_get_property_async(m_mpv, lookRequest, "time-pos", MPV_FORMAT_DOUBLE);
}

void Music::work() {
    for (const mpv_event *event = mpv_wait_event(m_mpv, 0); event->event_id != MPV_EVENT_NONE;
         event = mpv_wait_event(m_mpv, 0))
        handle(*event);
}

void Music::handle(const mpv_event &event) {
    switch (event.event_id) {
    case MPV_EVENT_PLAYBACK_RESTART: // for every loop, too
        if (!std::exchange(m_isReady, true))
            m_handlers.ready();
        break;
    case MPV_EVENT_END_FILE:
        end(*static_cast<const mpv_event_end_file *>(event.data));
        break;
    case MPV_EVENT_GET_PROPERTY_REPLY:
        if (event.reply_userdata == lookRequest && event.error >= 0) {
            const double position =
                *static_cast<const double *>(static_cast<const mpv_event_property *>(event.data)->data);
            if (std::exchange(m_position, position) != position)
                m_handlers.wentOn();
        }
        break;
    default:
        break;
    }
}

void Music::end(const mpv_event_end_file &end) {
    if (end.reason == MPV_END_FILE_REASON_REDIRECT)
        return; // a list of others, none of which can be opened; their ends follow
    if (end.reason == MPV_END_FILE_REASON_ERROR)
        m_handlers.failed(end.error == MPV_ERROR_AO_INIT_FAILED, mpv_error_string(end.error));
    else if (!m_isReady) // a file in which there is nothing
        m_handlers.failed(false, mpv_error_string(MPV_ERROR_NOTHING_TO_PLAY));
    else if (!m_isPlaying) // the library is through with a moment of sound while it still holds it at its beginning
        m_handlers.failed(false, "the sound is too short to be played");
    else if (m_isEndless) // the library ends loops in which it gets nowhere
        m_handlers.failed(false, "the sound is too short to be repeated");
    else
        m_handlers.ended();
}

} // namespace tavrine
