#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The index of an MPEG-4 file: what its tracks are, and where each sample stands. Plain values and the bytes that they
/// become.
namespace tavrine {

inline constexpr std::uint32_t ticksPerSecond = 90'000; ///< of the pictures, and of the movie
inline constexpr std::uint32_t samplesPerPacket = 1024; ///< AAC's own

struct PictureFormat {
    int width = 0;
    int height = 0;
    std::string sequenceParameters; ///< H.264's sets, without a start code
    std::string pictureParameters;
};

struct SoundFormat {
    int channels = 0;
    int sampleRate = 0;
    int bitRate = 0;
    int priming = 0;           ///< samples that the encoder puts before the first real one
    std::string configuration; ///< AudioSpecificConfig
};

struct MovieFormat {
    PictureFormat pictures;
    std::optional<SoundFormat> sound;
    std::uint64_t made = 0; ///< seconds since 1904
};

/// A piece of the file: some pictures, and behind them the sound of the same time.
struct Fragment {
    std::uint64_t end = 0; ///< where the file ends when this is its last
    std::uint64_t picturesAt = 0;
    std::uint32_t pictures = 0;
    std::uint64_t soundAt = 0;
    std::uint32_t packets = 0;
};

/// All samples in order.
struct SampleTables {
    std::vector<Fragment> fragments;
    std::vector<std::uint32_t> pictureSizes;
    std::vector<std::uint32_t> pictureDurations; ///< ticks
    std::vector<std::uint32_t> keyPictures;      ///< counted from 1
    std::vector<std::uint32_t> packetSizes;

    /// Drops what does not stand within the first `length` bytes of the file.
    void cut(std::uint64_t length);
};

/// "ftyp", the first box.
[[nodiscard]] std::string fileType();
/// "moov" of a file whose samples are in fragments.
[[nodiscard]] std::string openMovie(const MovieFormat &format);
/// "moov" that holds all samples; `soundLength` counts the samples that are to be heard. A track of sound without
/// sound is left out.
[[nodiscard]] std::string wholeMovie(const MovieFormat &format, const SampleTables &tables, std::uint64_t soundLength);

/// A sample of a fragment that is being written.
struct PendingPicture {
    std::uint32_t size = 0;
    std::uint32_t duration = 0;
    bool isKey = false;
};
struct FragmentHeader {
    std::string bytes;                    ///< "moof", and the head of the "mdat" behind it
    std::size_t lastDurationPosition = 0; ///< in them: the duration of the last picture
};
/// `number` counts from 1; the times are of the first picture, in ticks, and of the first packet, in samples.
[[nodiscard]] FragmentHeader fragmentHeader(std::uint32_t number, const std::vector<PendingPicture> &pictures,
                                            std::uint64_t pictureTime, const std::vector<std::uint32_t> &packets,
                                            std::uint64_t packetTime);

} // namespace tavrine
