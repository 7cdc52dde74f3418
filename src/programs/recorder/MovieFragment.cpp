#include "programs/recorder/BoxWriter.h"
#include "programs/recorder/MovieIndex.h"
#include "programs/recorder/MovieTracks.h"

namespace tavrine {
namespace {

using namespace movieTracks;

constexpr std::uint32_t bytesOfBoxHead = 8;

} // namespace

FragmentHeader fragmentHeader(std::uint32_t number, const std::vector<PendingPicture> &pictures,
                              std::uint64_t pictureTime, const std::vector<std::uint32_t> &packets,
                              std::uint64_t packetTime) {
    constexpr std::uint32_t fromTheFragment = 0x20000; // offsets count from the first byte of "moof"
    constexpr std::uint32_t offset = 0x1;
    constexpr std::uint32_t durations = 0x100;
    constexpr std::uint32_t sizes = 0x200;
    constexpr std::uint32_t flags = 0x400;
    FragmentHeader header;
    BoxWriter out;
    std::vector<std::pair<std::size_t, std::uint64_t>> offsets; // their positions, and what stands before in the data
    std::uint64_t data = 0;
    const auto track = [&](std::uint32_t id, std::uint64_t time, std::uint32_t with, std::size_t count, auto samples) {
        out.box("traf", [&] {
            out.fullBox("tfhd", 0, fromTheFragment, [&] { out.u32(id); });
            out.fullBox("tfdt", 1, 0, [&] { out.u64(time); });
            out.fullBox("trun", 0, with | offset | sizes, [&] {
                out.u32(count);
                offsets.emplace_back(out.size(), data);
                out.u32(0);
                samples();
            });
        });
    };
    out.box("moof", [&] {
        out.fullBox("mfhd", 0, 0, [&] { out.u32(number); });
        if (!pictures.empty())
            track(pictureTrack, pictureTime, durations | flags, pictures.size(), [&] {
                for (const PendingPicture &picture : pictures) {
                    header.lastDurationPosition = out.size();
                    out.u32(picture.duration);
                    out.u32(picture.size);
                    out.u32(picture.isKey ? dependsOnNone : dependsOnOthers);
                    data += picture.size;
                }
            });
        if (!packets.empty())
            track(soundTrack, packetTime, 0, packets.size(), [&] {
                for (const std::uint32_t size : packets) {
                    out.u32(size);
                    data += size;
                }
            });
    });
    for (const auto &[position, before] : offsets)
        out.patch(position, static_cast<std::uint32_t>(out.size() + bytesOfBoxHead + before));
    out.u32(bytesOfBoxHead + data);
    out.bytes("mdat");
    header.bytes = out.take();
    return header;
}

} // namespace tavrine
