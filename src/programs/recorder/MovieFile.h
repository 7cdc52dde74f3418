#pragma once

#include "programs/recorder/MovieIndex.h"
#include "programs/recorder/MovieStore.h"

#include <string_view>

namespace tavrine {

/// Writes one MPEG-4 movie of fragments, which plays up to its last fragment at any moment, and becomes one with an
/// index at its end.
///
/// While it is written: `ftyp`, `moov` without samples, a `free` box as room for the index, and fragments. At the end
/// the index goes into the room, and then one write of eight bytes turns the old `moov` and the head of the `free` box
/// into a `free` box, and with it all fragments into the contents of one `mdat`. An index that outgrew its room goes
/// behind the data.
///
/// Invariants:
/// 1. What stands in the file is a movie before and after each operation of the store.
/// 2. The times of pictures grow; the duration of one is the way to the next.
class MovieFile {
public:
    /// The index of twenty minutes with sound and a picture each sixtieth.
    static constexpr std::uint64_t roomOfIndex = std::uint64_t(1) << 20;

    MovieFile(MovieStore &store, MovieFormat format, std::uint64_t room = roomOfIndex);

    /// `ticks` is more than that of the picture before; that of the first is 0.
    void addPicture(std::string_view bytes, std::uint64_t ticks, bool isKey);
    /// The next packet of sound.
    void addPacket(std::string_view bytes);
    [[nodiscard]] bool hasPending() const { return !m_pictures.empty() || !m_packets.empty(); }

    /// Writes what was added since as one fragment. The last picture is shown for `lastDuration` ticks, as far as is
    /// known.
    void writeFragment(std::uint32_t lastDuration);
    /// The last picture is still shown, for so long by now. For what plays the file if nothing more comes.
    void extendLastPicture(std::uint32_t duration);

    /// Ends the movie: its last picture is shown for `lastDuration`, and `soundLength` samples of its sound are heard.
    /// 0, or errno's number of what could not be written; then the movie goes as far as the store took it.
    [[nodiscard]] int finish(std::uint32_t lastDuration, std::uint64_t soundLength);

private:
    void writeIndex(std::uint64_t soundLength, std::uint64_t length);
    [[nodiscard]] int switchOver();

    MovieStore &m_store;
    MovieFormat m_format;
    std::uint64_t m_room; ///< bytes of the free box
    std::uint64_t m_movieAt = 0;
    std::uint64_t m_roomAt = 0;
    std::uint64_t m_length = 0; ///< of the file, when all is written
    SampleTables m_tables;
    std::vector<PendingPicture> m_pictures;
    std::string m_pictureBytes;
    std::vector<std::uint32_t> m_packets;
    std::string m_packetBytes;
    std::uint64_t m_lastTime = 0; ///< of the last picture
    std::uint64_t m_firstPendingTime = 0;
    std::uint64_t m_lastDurationAt = 0; ///< in the file; 0 before the first
};

} // namespace tavrine
