#include "programs/recorder/PictureEncoder.h"

#include <algorithm>
#include <cstdint>

extern "C" {
#include <x264.h>
}

namespace tavrine {
namespace {

static_assert(X264_MBINFO_CONSTANT == 1);

constexpr int kilobit = 1000;
constexpr int bt709 = 1;
constexpr int chromaInTheMiddle = 1; // of its four pixels, for it is their mean
/// Seconds of the average rate that a burst may take.
constexpr int secondsOfBuffer = 2;
/// Without it a still screen is polished at ten megabits a second.
constexpr int leastQuantizer = 12;

void setRate(x264_param_t &parameters, const PictureEncoder::Settings &settings) {
    const int rate = std::max(settings.bitRate / kilobit, 1);
    parameters.rc.i_rc_method = X264_RC_ABR;
    parameters.rc.i_bitrate = rate;
    parameters.rc.i_vbv_max_bitrate = rate;
    parameters.rc.i_vbv_buffer_size = rate * secondsOfBuffer;
    parameters.rc.i_qp_min = leastQuantizer;
    parameters.rc.i_aq_mode = X264_AQ_VARIANCE; // for .0034 of likeness, a millisecond and a quarter of 1080p
    parameters.rc.f_aq_strength = 1.0F;
}

bool setParameters(x264_param_t &parameters, const PictureEncoder::Settings &settings) {
    if (x264_param_default_preset(&parameters, "ultrafast", "zerolatency") != 0)
        return false;
    parameters.i_log_level = X264_LOG_NONE;
    parameters.i_threads = 1; // two cost 8 % more
    parameters.b_sliced_threads = 0;
    parameters.i_width = settings.width;
    parameters.i_height = settings.height;
    parameters.i_csp = X264_CSP_I420;
    parameters.i_fps_num = static_cast<std::uint32_t>(settings.frameRate);
    parameters.i_fps_den = 1;
    parameters.i_timebase_num = 1;
    parameters.i_timebase_den = ticksPerSecond;
    parameters.b_vfr_input = 0;                         // holds a picture back; times pass through nevertheless
    parameters.i_keyint_max = X264_KEYINT_MAX_INFINITE; // by the clock instead
    parameters.analyse.b_transform_8x8 = 1;             // costs nothing, and makes the profile High
    parameters.analyse.b_mb_info = 1;
    parameters.b_repeat_headers = 0;
    parameters.b_annexb = 0;
    parameters.b_aud = 0;
    parameters.vui.b_fullrange = 0;
    parameters.vui.i_colorprim = bt709;
    parameters.vui.i_transfer = bt709;
    parameters.vui.i_colmatrix = bt709;
    parameters.vui.i_chroma_loc = chromaInTheMiddle;
    setRate(parameters, settings);
    return x264_param_apply_profile(&parameters, "high") == 0;
}

} // namespace

std::unique_ptr<PictureEncoder> PictureEncoder::make(const Settings &settings) {
    x264_param_t parameters;
    if (!setParameters(parameters, settings))
        return nullptr;
    x264_t *const encoder = x264_encoder_open(&parameters);
    if (!encoder)
        return nullptr;
    PictureFormat format;
    format.width = settings.width;
    format.height = settings.height;
    x264_nal_t *units = nullptr;
    int count = 0;
    if (x264_encoder_headers(encoder, &units, &count) >= 0)
        for (int i = 0; i < count; ++i) {
            constexpr int lengthBytes = 4;
            const std::string bytes(reinterpret_cast<const char *>(units[i].p_payload + lengthBytes),
                                    static_cast<std::size_t>(units[i].i_payload - lengthBytes));
            if (units[i].i_type == NAL_SPS)
                format.sequenceParameters = bytes;
            else if (units[i].i_type == NAL_PPS)
                format.pictureParameters = bytes;
        }
    std::unique_ptr<PictureEncoder> made(new PictureEncoder(encoder, std::move(format)));
    constexpr std::size_t leastBytes = 4;
    return made->m_format.sequenceParameters.size() >= leastBytes ? std::move(made) : nullptr;
}

PictureEncoder::~PictureEncoder() {
    x264_encoder_close(m_encoder);
}

std::optional<PictureEncoder::Encoded> PictureEncoder::encode(FilmPicture &picture, std::int64_t ticks,
                                                              bool isKeyWanted) {
    const FilmPixels &pixels = picture.pixels();
    x264_picture_t input;
    x264_picture_init(&input);
    input.i_pts = ticks;
    input.i_type = isKeyWanted ? X264_TYPE_IDR : X264_TYPE_AUTO;
    input.img.i_csp = X264_CSP_I420;
    input.img.i_plane = 3;
    input.img.plane[0] = pixels.luma;
    input.img.plane[1] = pixels.blue;
    input.img.plane[2] = pixels.red;
    input.img.i_stride[0] = static_cast<int>(pixels.lumaPerLine);
    input.img.i_stride[1] = input.img.i_stride[2] = static_cast<int>(pixels.chromaPerLine);
    input.prop.mb_info = isKeyWanted ? nullptr : picture.constantBlocks().data();
    x264_nal_t *units = nullptr;
    int count = 0;
    x264_picture_t output;
    const int bytes = x264_encoder_encode(m_encoder, &units, &count, &input, &output);
    if (bytes <= 0 || count <= 0)
        return std::nullopt;
    // The units stand one behind the other.
    return Encoded{.bytes = {reinterpret_cast<const char *>(units[0].p_payload), static_cast<std::size_t>(bytes)},
                   .isKey = output.b_keyframe != 0};
}

} // namespace tavrine
