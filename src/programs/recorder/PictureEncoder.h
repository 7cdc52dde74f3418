#pragma once

#include "programs/recorder/FilmPicture.h"
#include "programs/recorder/MovieIndex.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct x264_t;

namespace tavrine {

/// H.264 by libx264, a picture at a time, none held back. One thread.
class PictureEncoder {
public:
    struct Settings {
        int width = 0;
        int height = 0;
        int bitRate = 0; ///< bit/s
        int frameRate = 0;
    };
    /// Null when the library takes no such pictures.
    [[nodiscard]] static std::unique_ptr<PictureEncoder> make(const Settings &settings);
    ~PictureEncoder();
    PictureEncoder(const PictureEncoder &) = delete;
    PictureEncoder &operator=(const PictureEncoder &) = delete;

    [[nodiscard]] const PictureFormat &format() const { return m_format; }

    struct Encoded {
        std::string_view bytes; ///< until the next call
        bool isKey = false;
    };
    /// None when the library failed. `ticks` is more than that of the picture before.
    [[nodiscard]] std::optional<Encoded> encode(FilmPicture &picture, std::int64_t ticks, bool isKeyWanted);

private:
    PictureEncoder(x264_t *encoder, PictureFormat format) : m_encoder(encoder), m_format(std::move(format)) {}

    x264_t *m_encoder;
    PictureFormat m_format;
};

} // namespace tavrine
