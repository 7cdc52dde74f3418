#include "programs/recorder/MovieIndex.h"

#include "programs/recorder/BoxWriter.h"
#include "programs/recorder/MovieTracks.h"

#include <algorithm>
#include <numeric>

namespace tavrine {
namespace {

using namespace movieTracks;

constexpr std::uint32_t trackIsShown = 3; // enabled, in the movie
constexpr std::uint32_t undeterminedLanguage = 0x55c4;
constexpr std::uint32_t fixedOne = 0x10000;
constexpr std::uint32_t resolution = 72 * fixedOne; // of print, which nobody reads

/// What one track is, apart from its samples.
struct Track {
    std::uint32_t number;
    std::uint32_t timescale;
    std::uint64_t mediaDuration; ///< in its timescale
    std::uint64_t duration;      ///< in the movie's
    std::uint64_t skipped;       ///< samples before the first that is heard
};

void matrix(BoxWriter &out) {
    for (const std::uint32_t value : {fixedOne, 0u, 0u, 0u, fixedOne, 0u, 0u, 0u, 0x40000000u})
        out.u32(value);
}

void movieHeader(BoxWriter &out, std::uint64_t made, std::uint64_t duration) {
    out.fullBox("mvhd", 1, 0, [&] {
        out.u64(made);
        out.u64(made);
        out.u32(ticksPerSecond);
        out.u64(duration);
        out.u32(fixedOne); // rate
        out.u16(0x100);    // volume
        out.zeros(10);
        matrix(out);
        out.zeros(24);
        out.u32(soundTrack + 1);
    });
}

void trackHeader(BoxWriter &out, const MovieFormat &format, const Track &track) {
    const bool isPicture = track.number == pictureTrack;
    out.fullBox("tkhd", 1, trackIsShown, [&] {
        out.u64(format.made);
        out.u64(format.made);
        out.u32(track.number);
        out.u32(0);
        out.u64(track.duration);
        out.zeros(12); // reserved, layer, group
        out.u16(isPicture ? 0 : 0x100);
        out.u16(0);
        matrix(out);
        out.u32(isPicture ? std::uint64_t(format.pictures.width) * fixedOne : 0);
        out.u32(isPicture ? std::uint64_t(format.pictures.height) * fixedOne : 0);
    });
}

void avcConfiguration(BoxWriter &out, const PictureFormat &format) {
    out.box("avcC", [&] {
        out.u8(1);
        out.bytes(std::string_view(format.sequenceParameters).substr(1, 3)); // profile, constraints, level
        out.u8(0xff);                                                        // lengths of four bytes
        out.u8(0xe1);                                                        // one set
        out.u16(format.sequenceParameters.size());
        out.bytes(format.sequenceParameters);
        out.u8(1);
        out.u16(format.pictureParameters.size());
        out.bytes(format.pictureParameters);
        constexpr char high = 100;
        if (format.sequenceParameters[1] == high) {
            out.u8(0xfd); // 4:2:0
            out.u8(0xf8); // eight bits of luma
            out.u8(0xf8); // and of chroma
            out.u8(0);
        }
    });
}

void pictureEntry(BoxWriter &out, const PictureFormat &format) {
    out.box("avc1", [&] {
        out.zeros(6);
        out.u16(1); // the one data reference
        out.zeros(16);
        out.u16(static_cast<std::uint64_t>(format.width));
        out.u16(static_cast<std::uint64_t>(format.height));
        out.u32(resolution);
        out.u32(resolution);
        out.u32(0);
        out.u16(1); // frame in a sample
        out.zeros(32);
        out.u16(24); // depth
        out.u16(0xffff);
        avcConfiguration(out, format);
        out.box("colr", [&] {
            out.bytes("nclx");
            for (int i = 0; i < 3; ++i) // primaries, transfer and matrix of BT.709
                out.u16(1);
            out.u8(0); // limited range
        });
    });
}

/// A descriptor of MPEG-4's systems layer; all of ours are short.
template <class Contents>
void descriptor(BoxWriter &out, unsigned tag, std::size_t length, Contents contents) {
    out.u8(tag);
    out.u8(length);
    contents();
}

void soundEntry(BoxWriter &out, const SoundFormat &format) {
    const std::size_t configuration = format.configuration.size();
    out.box("mp4a", [&] {
        out.zeros(6);
        out.u16(1);
        out.zeros(8);
        out.u16(static_cast<std::uint64_t>(format.channels));
        out.u16(16); // bits of a sample, as the format wants it
        out.zeros(4);
        out.u32(static_cast<std::uint64_t>(format.sampleRate) * fixedOne);
        out.fullBox("esds", 0, 0, [&] {
            constexpr std::size_t head = 2;
            constexpr std::size_t decoder = 13;
            descriptor(out, 3, 3 + head + decoder + head + configuration + head + 1, [&] {
                out.u16(0);
                out.u8(0);
                descriptor(out, 4, decoder + head + configuration, [&] {
                    out.u8(0x40); // AAC
                    out.u8(0x15); // sound
                    out.zeros(3);
                    out.u32(static_cast<std::uint64_t>(format.bitRate));
                    out.u32(static_cast<std::uint64_t>(format.bitRate));
                    descriptor(out, 5, configuration, [&] { out.bytes(format.configuration); });
                });
                descriptor(out, 6, 1, [&] { out.u8(2); });
            });
        });
    });
}

/// Equal values in a row, as pairs.
void runs(BoxWriter &out, const std::vector<std::uint32_t> &values) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> found;
    for (const std::uint32_t value : values) {
        if (found.empty() || found.back().second != value)
            found.emplace_back(0, value);
        ++found.back().first;
    }
    out.u32(found.size());
    for (const auto &[count, value] : found) {
        out.u32(count);
        out.u32(value);
    }
}

/// Where the samples of one track stand: a chunk in each fragment that has some.
struct Chunk {
    std::uint64_t offset;
    std::uint32_t samples;
};

std::vector<Chunk> chunksOf(const std::vector<Fragment> &fragments, std::uint32_t track) {
    std::vector<Chunk> chunks;
    for (const Fragment &fragment : fragments) {
        const Chunk chunk = track == pictureTrack ? Chunk{fragment.picturesAt, fragment.pictures}
                                                  : Chunk{fragment.soundAt, fragment.packets};
        if (chunk.samples > 0)
            chunks.push_back(chunk);
    }
    return chunks;
}

void chunkTables(BoxWriter &out, const std::vector<Chunk> &chunks) {
    out.fullBox("stsc", 0, 0, [&] {
        const std::size_t count = out.size();
        out.u32(0);
        std::uint32_t entries = 0;
        for (std::size_t i = 0; i < chunks.size(); ++i) {
            if (i > 0 && chunks[i].samples == chunks[i - 1].samples)
                continue;
            out.u32(i + 1);
            out.u32(chunks[i].samples);
            out.u32(1);
            ++entries;
        }
        out.patch(count, entries);
    });
    out.fullBox("co64", 0, 0, [&] {
        out.u32(chunks.size());
        for (const Chunk &chunk : chunks)
            out.u64(chunk.offset);
    });
}

void sampleTable(BoxWriter &out, const MovieFormat &format, const SampleTables &tables, const Track &track) {
    const bool isPicture = track.number == pictureTrack;
    const std::vector<std::uint32_t> &sizes = isPicture ? tables.pictureSizes : tables.packetSizes;
    out.box("stbl", [&] {
        out.fullBox("stsd", 0, 0, [&] {
            out.u32(1);
            if (isPicture)
                pictureEntry(out, format.pictures);
            else
                soundEntry(out, *format.sound);
        });
        out.fullBox("stts", 0, 0, [&] {
            runs(out, isPicture ? tables.pictureDurations : std::vector<std::uint32_t>(sizes.size(), samplesPerPacket));
        });
        if (isPicture && !sizes.empty())
            out.fullBox("stss", 0, 0, [&] {
                out.u32(tables.keyPictures.size());
                for (const std::uint32_t picture : tables.keyPictures)
                    out.u32(picture);
            });
        out.fullBox("stsz", 0, 0, [&] {
            out.u32(0);
            out.u32(sizes.size());
            for (const std::uint32_t size : sizes)
                out.u32(size);
        });
        chunkTables(out, chunksOf(tables.fragments, track.number));
    });
}

void media(BoxWriter &out, const MovieFormat &format, const SampleTables &tables, const Track &track) {
    const bool isPicture = track.number == pictureTrack;
    out.box("mdia", [&] {
        out.fullBox("mdhd", 1, 0, [&] {
            out.u64(format.made);
            out.u64(format.made);
            out.u32(track.timescale);
            out.u64(track.mediaDuration);
            out.u16(undeterminedLanguage);
            out.u16(0);
        });
        out.fullBox("hdlr", 0, 0, [&] {
            out.u32(0);
            out.bytes(isPicture ? "vide" : "soun");
            out.zeros(12);
            out.bytes(isPicture ? "Picture" : "Sound");
            out.u8(0);
        });
        out.box("minf", [&] {
            if (isPicture)
                out.fullBox("vmhd", 0, 1, [&] { out.zeros(8); });
            else
                out.fullBox("smhd", 0, 0, [&] { out.zeros(4); });
            out.box("dinf", [&] {
                out.fullBox("dref", 0, 0, [&] {
                    out.u32(1);
                    out.fullBox("url ", 0, 1, [] {}); // in this file
                });
            });
            sampleTable(out, format, tables, track);
        });
    });
}

void trackBox(BoxWriter &out, const MovieFormat &format, const SampleTables &tables, const Track &track) {
    out.box("trak", [&] {
        trackHeader(out, format, track);
        if (track.skipped > 0)
            out.box("edts", [&] {
                out.fullBox("elst", 1, 0, [&] {
                    out.u32(1);
                    out.u64(track.duration);
                    out.u64(track.skipped);
                    out.u32(fixedOne);
                });
            });
        media(out, format, tables, track);
    });
}

Track soundTrackOf(const SoundFormat &format, std::uint64_t packets, std::uint64_t length) {
    const auto rate = static_cast<std::uint32_t>(format.sampleRate);
    return {.number = soundTrack,
            .timescale = rate,
            .mediaDuration = packets * samplesPerPacket,
            .duration = length * ticksPerSecond / rate,
            .skipped = static_cast<std::uint64_t>(format.priming)};
}

} // namespace

void SampleTables::cut(std::uint64_t length) {
    while (!fragments.empty() && fragments.back().end > length)
        fragments.pop_back();
    std::size_t pictures = 0;
    std::size_t packets = 0;
    for (const Fragment &fragment : fragments) {
        pictures += fragment.pictures;
        packets += fragment.packets;
    }
    pictureSizes.resize(pictures);
    pictureDurations.resize(pictures);
    packetSizes.resize(packets);
    while (!keyPictures.empty() && keyPictures.back() > pictures)
        keyPictures.pop_back();
}

std::string fileType() {
    BoxWriter out;
    out.box("ftyp", [&] {
        out.bytes("isom");
        out.u32(0x200);
        out.bytes("isomiso6avc1mp41");
    });
    return out.take();
}

std::string openMovie(const MovieFormat &format) {
    BoxWriter out;
    const SampleTables none;
    out.box("moov", [&] {
        movieHeader(out, format.made, 0);
        trackBox(
            out, format, none,
            {.number = pictureTrack, .timescale = ticksPerSecond, .mediaDuration = 0, .duration = 0, .skipped = 0});
        if (format.sound)
            trackBox(out, format, none, soundTrackOf(*format.sound, 0, 0));
        out.box("mvex", [&] {
            const auto defaults = [&](std::uint32_t track, std::uint32_t duration, std::uint32_t flags) {
                out.fullBox("trex", 0, 0, [&] {
                    for (const std::uint32_t value : {track, 1u, duration, 0u, flags})
                        out.u32(value);
                });
            };
            defaults(pictureTrack, 0, dependsOnOthers);
            if (format.sound)
                defaults(soundTrack, samplesPerPacket, dependsOnNone);
        });
    });
    return out.take();
}

std::string wholeMovie(const MovieFormat &format, const SampleTables &tables, std::uint64_t soundLength) {
    const std::uint64_t pictures =
        std::accumulate(tables.pictureDurations.begin(), tables.pictureDurations.end(), std::uint64_t(0));
    const std::uint64_t packets = tables.packetSizes.size();
    std::optional<Track> sound;
    if (format.sound) {
        const auto priming = static_cast<std::uint64_t>(format.sound->priming);
        const std::uint64_t most = packets * samplesPerPacket;
        sound = soundTrackOf(*format.sound, packets, std::min(soundLength, most > priming ? most - priming : 0));
        if (packets == 0) // nothing of an empty track can be skipped
            sound->skipped = 0;
    }
    BoxWriter out;
    out.box("moov", [&] {
        movieHeader(out, format.made, std::max(pictures, sound ? sound->duration : 0));
        trackBox(out, format, tables,
                 {.number = pictureTrack,
                  .timescale = ticksPerSecond,
                  .mediaDuration = pictures,
                  .duration = pictures,
                  .skipped = 0});
        if (sound)
            trackBox(out, format, tables, *sound);
    });
    return out.take();
}

} // namespace tavrine
