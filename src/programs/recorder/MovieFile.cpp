#include "programs/recorder/MovieFile.h"

#include "programs/recorder/BoxWriter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tavrine {
namespace {

constexpr std::uint64_t bytesOfBoxHead = 8;
constexpr std::uint64_t bytesOfLargeBoxHead = 16;

std::uint32_t durationOf(std::uint64_t ticks) {
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(ticks, 1, std::numeric_limits<std::uint32_t>::max()));
}

void freeBox(BoxWriter &out, std::uint64_t length) {
    out.u32(length);
    out.bytes("free");
    out.zeros(length - bytesOfBoxHead);
}

} // namespace

MovieFile::MovieFile(MovieStore &store, MovieFormat format, std::uint64_t room)
    : m_store(store), m_format(std::move(format)), m_room(room) {
    BoxWriter out;
    out.bytes(fileType());
    m_movieAt = out.size();
    out.bytes(openMovie(m_format));
    m_roomAt = out.size();
    freeBox(out, m_room);
    m_length = out.size();
    m_store.append(out.take());
}

void MovieFile::addPicture(std::string_view bytes, std::uint64_t ticks, bool isKey) {
    if (!m_tables.pictureSizes.empty()) {
        const std::uint32_t duration = durationOf(ticks - m_lastTime);
        m_tables.pictureDurations.back() = duration;
        if (!m_pictures.empty())
            m_pictures.back().duration = duration;
    }
    if (m_pictures.empty())
        m_firstPendingTime = ticks;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    m_pictures.push_back({.size = size, .duration = 1, .isKey = isKey});
    m_pictureBytes.append(bytes);
    m_tables.pictureSizes.push_back(size);
    m_tables.pictureDurations.push_back(1);
    if (isKey)
        m_tables.keyPictures.push_back(static_cast<std::uint32_t>(m_tables.pictureSizes.size()));
    m_lastTime = ticks;
}

void MovieFile::addPacket(std::string_view bytes) {
    m_packets.push_back(static_cast<std::uint32_t>(bytes.size()));
    m_packetBytes.append(bytes);
    m_tables.packetSizes.push_back(m_packets.back());
}

void MovieFile::writeFragment(std::uint32_t lastDuration) {
    if (!hasPending())
        return;
    if (!m_pictures.empty())
        m_pictures.back().duration = durationOf(lastDuration);
    const std::uint64_t packetTime = std::uint64_t(m_tables.packetSizes.size() - m_packets.size()) * samplesPerPacket;
    auto header = fragmentHeader(static_cast<std::uint32_t>(m_tables.fragments.size() + 1), m_pictures,
                                 m_firstPendingTime, m_packets, packetTime);
    Fragment fragment;
    fragment.picturesAt = m_length + header.bytes.size();
    fragment.pictures = static_cast<std::uint32_t>(m_pictures.size());
    fragment.soundAt = fragment.picturesAt + m_pictureBytes.size();
    fragment.packets = static_cast<std::uint32_t>(m_packets.size());
    fragment.end = fragment.soundAt + m_packetBytes.size();
    if (!m_pictures.empty())
        m_lastDurationAt = m_length + header.lastDurationPosition;
    m_tables.fragments.push_back(fragment);
    m_length = fragment.end;
    m_store.append(std::move(header.bytes) + std::exchange(m_pictureBytes, {}) + std::exchange(m_packetBytes, {}));
    m_pictures.clear();
    m_packets.clear();
}

void MovieFile::extendLastPicture(std::uint32_t duration) {
    if (m_lastDurationAt == 0 || !m_pictures.empty())
        return;
    BoxWriter out;
    out.u32(durationOf(duration));
    m_store.overwrite(m_lastDurationAt, out.take());
}

int MovieFile::finish(std::uint32_t lastDuration, std::uint64_t soundLength) {
    if (!m_tables.pictureDurations.empty())
        m_tables.pictureDurations.back() = durationOf(lastDuration);
    writeFragment(lastDuration);
    const MovieStore::State written = m_store.settle();
    m_tables.cut(written.length);
    if (m_tables.pictureSizes.empty())
        return written.error;
    writeIndex(soundLength, written.length);
    const int error = switchOver();
    return written.error != 0 ? written.error : error;
}

/// Into the room, or behind the data with the rest of the room freed. Nobody reads it yet.
void MovieFile::writeIndex(std::uint64_t soundLength, std::uint64_t length) {
    const std::uint64_t dataAt = m_roomAt + m_room;
    const std::uint64_t space = m_room - bytesOfBoxHead - bytesOfLargeBoxHead;
    std::string index = wholeMovie(m_format, m_tables, soundLength);
    const bool fits = index.size() == space || index.size() + bytesOfBoxHead <= space;
    BoxWriter out;
    if (fits)
        out.bytes(index);
    else
        m_store.append(std::move(index));
    if (out.size() < space)
        freeBox(out, space - out.size());
    out.u32(1); // the length follows the type
    out.bytes("mdat");
    out.u64(bytesOfLargeBoxHead + length - dataAt);
    m_store.overwrite(m_roomAt + bytesOfBoxHead, out.take());
    m_store.sync();
}

int MovieFile::switchOver() {
    if (const int error = m_store.settle().error)
        return error; // the fragments stay what is played
    BoxWriter out;
    out.u32(m_roomAt - m_movieAt + bytesOfBoxHead);
    out.bytes("free");
    m_store.overwrite(m_movieAt, out.take());
    return m_store.settle().error;
}

} // namespace tavrine
