#pragma once

#include <span>

#include <mpv/client.h>

namespace tavrine {

struct MpvSetting {
    const char *option;
    const char *value;
};

/// A player of one file and of nothing else: no settings of the person's mpv, no scripts, no downloads, no other files
/// beside the one, nothing on the picture. To be followed by what is played and how.
inline constexpr MpvSetting mpvSettings[] = {
    {"config", "no"},
    {"terminal", "no"},
    {"load-scripts", "no"},
    {"load-stats-overlay", "no"},
    {"load-osd-console", "no"},
    {"load-auto-profiles", "no"},
    {"osc", "no"},
    {"ytdl", "no"},
    {"input-default-bindings", "no"},
    {"sid", "no"},
    {"audio-display", "no"},
    {"access-references", "no"},
    {"ordered-chapters", "no"},
    {"audio-file-auto", "no"},
    {"sub-auto", "no"},
    {"cover-art-auto", "no"},
    {"autoload-files", "no"},
    {"resume-playback", "no"},
    {"reset-on-next-file", "pause"},
    // Of a local file nothing is kept but what is decoded next.
    {"cache", "no"},
    {"demuxer-max-bytes", "2MiB"},
    {"demuxer-max-back-bytes", "0"},
    {"audio-client-name", "Tavrine"},
    {"replaygain", "no"},
    {"pause", "yes"},
};

/// Sets them one after the other until one fails: negative then, as the library counts its errors.
[[nodiscard]] inline int setAll(mpv_handle *mpv, std::span<const MpvSetting> settings) {
    int error = 0;
    for (const MpvSetting &setting : settings) {
        if (error >= 0)
            error = mpv_set_option_string(mpv, setting.option, setting.value);
    }
    return error;
}

} // namespace tavrine
