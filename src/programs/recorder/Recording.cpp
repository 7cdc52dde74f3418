#include "programs/recorder/Recording.h"

#include "base/ErrorText.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace tavrine {
namespace {

using namespace recorderProtocol;
using std::chrono::nanoseconds;

constexpr std::uint64_t ticksIn(std::chrono::nanoseconds length) {
    constexpr std::uint64_t half = 500'000'000;
    constexpr std::uint64_t second = 1'000'000'000;
    const auto count = static_cast<std::uint64_t>(length.count());
    return count / second * ticksPerSecond + (count % second * ticksPerSecond + half) / second;
}

const char *const noSense = "it was told what makes no sense";

/// Seconds since 1904, as the format counts.
std::uint64_t now1904() {
    constexpr std::uint64_t until1970 = 2'082'844'800;
    return static_cast<std::uint64_t>(std::time(nullptr)) + until1970;
}

} // namespace

Recording::Error Recording::take(std::string_view message, Descriptor memory,
                                 const std::function<void()> &pictureTaken) {
    const std::optional<Kind> kind = kindOf(message);
    if (!kind || m_endTime || (*kind == Kind::start) == m_movie.has_value())
        return noSense;
    const bool needsSession = *kind == Kind::picture || *kind == Kind::sound || *kind == Kind::finish;
    if (needsSession && !m_sessionTime)
        return noSense;
    switch (*kind) {
    case Kind::start:
        if (const auto told = startIn(message))
            return start(*told);
        return noSense;
    case Kind::session:
        if (const auto told = sessionIn(message); told && !m_sessionTime) {
            m_sessionTime = nanoseconds(told->time);
            if (m_sound)
                m_placement.emplace(*m_sessionTime, m_start.sampleRate);
            return std::nullopt;
        }
        return noSense;
    case Kind::picture:
        if (const auto told = pictureIn(message))
            return addPicture(*told, std::move(memory), pictureTaken);
        return noSense;
    case Kind::sound:
        if (const auto told = soundIn(message, m_start.channels); told && m_sound)
            return addSound(*told);
        return noSense;
    case Kind::finish:
        if (const auto told = finishIn(message)) {
            m_endTime = told->time;
            return std::nullopt;
        }
        return noSense;
    }
    return noSense;
}

Recording::Error Recording::start(const Start &told) {
    m_start = told;
    m_pictures = PictureEncoder::make(
        {.width = told.width, .height = told.height, .bitRate = told.bitRate, .frameRate = told.frameRate});
    if (!m_pictures)
        return "the encoder takes no such pictures";
    m_film.emplace(told.width, told.height);
    MovieFormat format{.pictures = m_pictures->format(), .sound = {}, .made = now1904()};
    if (told.channels > 0) {
        m_sound =
            SoundEncoder::make({.channels = told.channels, .sampleRate = told.sampleRate, .bitRate = told.soundBitRate},
                               [this](std::string_view packet) {
                                   if (!m_waitingSince)
                                       m_waitingSince = Clock::now();
                                   m_movie->addPacket(packet);
                               });
        if (!m_sound)
            return "the encoder makes no such sound";
        format.sound = m_sound->format();
    }
    m_movie.emplace(m_disk, std::move(format));
    return std::nullopt;
}

std::uint64_t Recording::ticksOf(nanoseconds time) const {
    return ticksIn(std::max(time - *m_sessionTime, nanoseconds(0)));
}

Recording::Error Recording::addPicture(const Picture &picture, Descriptor memory,
                                       const std::function<void()> &pictureTaken) {
    if (memory.isOpen() && !m_memory.map(picture.buffer, memory))
        return noSense;
    const auto pixels = m_memory.pixels(picture.buffer, m_start.width, m_start.height, picture.bytesPerLine);
    if (!pixels || picture.time - m_sessionTime->count() > mostNanoseconds)
        return noSense;
    const bool isFirst = !m_lastNumber;
    if (isFirst || picture.isWhole || picture.number != *m_lastNumber + 1) {
        m_film->replace(*pixels);
    } else {
        std::vector<Part> changed;
        for (const Area &area : picture.changed)
            changed.push_back({area.left, area.top, area.width, area.height});
        m_film->update(*pixels, changed);
    }
    m_lastNumber = picture.number;
    pictureTaken();

    // The movie begins with its first picture, and time goes on.
    const std::uint64_t ticks = isFirst ? 0 : std::max(ticksOf(nanoseconds(picture.time)), m_lastTicks + 1);
    if (m_movie->hasPending() && ticks >= m_fragmentTicks + ticksIn(fragmentLength))
        writeFragment(static_cast<std::uint32_t>(ticks - m_lastTicks));
    const bool isKey = !m_lastKeyTicks || ticks >= *m_lastKeyTicks + ticksIn(keyPeriod);
    const auto encoded = m_pictures->encode(*m_film, static_cast<std::int64_t>(ticks), isKey);
    if (!encoded)
        return "the encoder failed";
    if (encoded->isKey)
        m_lastKeyTicks = ticks;
    m_lastArrival = Clock::now();
    m_extended = m_lastArrival;
    if (!m_waitingSince || !m_movie->hasPending()) {
        m_waitingSince = m_lastArrival;
        m_fragmentTicks = ticks;
    }
    m_movie->addPicture(encoded->bytes, ticks, encoded->isKey);
    m_lastTicks = ticks;
    if (isFirst) // at once: from here on there is something to play
        writeFragment(static_cast<std::uint32_t>(ticksPerSecond / static_cast<std::uint32_t>(m_start.frameRate)));
    return std::nullopt;
}

Recording::Error Recording::addSound(const Sound &sound) {
    const std::int64_t channels = m_start.channels;
    const std::int64_t count = static_cast<std::int64_t>(sound.samples.size()) / channels;
    const auto place = m_placement->place(nanoseconds(sound.time), count);
    if (!place)
        return noSense;
    const bool isEncoded = m_sound->addSilence(place->silence) &&
                           m_sound->add(sound.samples.data() + place->skipped * channels, count - place->skipped);
    return isEncoded ? std::nullopt : Error("the encoder of sound failed");
}

std::uint32_t Recording::shownUntil(Clock::time_point now) const {
    const auto shown = std::chrono::duration_cast<nanoseconds>(now - m_lastArrival);
    return static_cast<std::uint32_t>(
        std::clamp<std::uint64_t>(ticksIn(std::max(shown, nanoseconds(0))), 1, std::uint32_t(-1)));
}

void Recording::writeFragment(std::uint32_t lastDuration) {
    m_movie->writeFragment(lastDuration);
    m_waitingSince.reset();
}

std::optional<Recording::Clock::time_point> Recording::writeWhatIsDue(Clock::time_point now) {
    if (!m_lastNumber)
        return std::nullopt;
    if (m_movie->hasPending() && m_waitingSince && now >= *m_waitingSince + fragmentLength) {
        writeFragment(shownUntil(now));
        m_extended = now;
    }
    if (now >= m_extended + extendPeriod) {
        m_movie->extendLastPicture(shownUntil(now));
        m_extended = now;
    }
    const Clock::time_point extension = m_extended + extendPeriod;
    return m_waitingSince ? std::min(extension, *m_waitingSince + fragmentLength) : extension;
}

void Recording::noteRoom(int error) {
    m_isDiskFull = error == ENOSPC || error == EDQUOT;
}

Recording::Error Recording::finish(Clock::time_point now) {
    if (!m_lastNumber) {
        noteRoom(m_disk.settle().error);
        return "there was no picture";
    }
    const bool isSoundWhole = !m_sound || m_sound->finish();
    std::uint64_t lastDuration = shownUntil(now);
    if (m_endTime) {
        const std::uint64_t end = ticksOf(nanoseconds(std::min(*m_endTime, m_sessionTime->count() + mostNanoseconds)));
        lastDuration = end > m_lastTicks ? end - m_lastTicks : 0;
    }
    const std::uint64_t least = ticksPerSecond / static_cast<std::uint64_t>(m_start.frameRate);
    const auto duration = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(lastDuration, least, std::uint32_t(-1)));
    const auto soundLength = static_cast<std::uint64_t>(m_placement ? m_placement->length() : 0);
    if (const int error = m_movie->finish(duration, soundLength)) {
        noteRoom(error);
        return errorText(error);
    }
    return isSoundWhole ? std::nullopt : Error("the encoder of sound failed");
}

} // namespace tavrine
