#include "adapters/linux/RecorderProtocol.h"

#include "adapters/linux/HelperLines.h"

#include <cstring>
#include <type_traits>

namespace tavrine::recorderProtocol {
namespace {

constexpr std::int32_t mostBitRate = 1'000'000'000;
constexpr std::int32_t mostFrameRate = 1'000;
constexpr std::int32_t mostChannels = 2;
constexpr std::int32_t leastSampleRate = 8'000;
constexpr std::int32_t mostSampleRate = 96'000;
constexpr std::int32_t leastSoundBitRate = 8'000;
constexpr std::int32_t mostSoundBitRate = 512'000;
constexpr std::int32_t bytesPerPixel = 4;

/// Numbers one after the other.
class Bytes {
public:
    explicit Bytes(Kind kind) { add(kind); }
    template <class Value>
    Bytes &add(const Value &value) {
        static_assert(std::is_trivially_copyable_v<Value>);
        m_bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
        return *this;
    }
    [[nodiscard]] std::string take() { return std::move(m_bytes); }

private:
    std::string m_bytes;
};

/// And back. Once something was missing, all is zero and nothing is whole.
class Reading {
public:
    Reading(std::string_view message, Kind kind) : m_rest(message) { m_isWhole = next<Kind>() == kind; }

    template <class Value>
    Value next() {
        static_assert(std::is_trivially_copyable_v<Value>);
        Value value{};
        if (m_rest.size() < sizeof value) {
            m_isWhole = false;
            return value;
        }
        std::memcpy(&value, m_rest.data(), sizeof value);
        m_rest.remove_prefix(sizeof value);
        return value;
    }
    template <class Value>
    std::vector<Value> allOfTheRest(std::size_t most) {
        std::vector<Value> values;
        if (m_rest.size() % sizeof(Value) != 0 || m_rest.size() / sizeof(Value) > most) {
            m_isWhole = false;
            return values;
        }
        values.resize(m_rest.size() / sizeof(Value));
        if (!values.empty())
            std::memcpy(values.data(), m_rest.data(), m_rest.size());
        m_rest = {};
        return values;
    }
    /// Nothing was missing and nothing is left.
    [[nodiscard]] bool isWhole() const { return m_isWhole && m_rest.empty(); }

private:
    std::string_view m_rest;
    bool m_isWhole = false;
};

template <class Number>
constexpr bool isWithin(Number value, Number least, Number most) {
    return value >= least && value <= most;
}

bool isTime(std::int64_t time) {
    return time >= 0;
}

bool isSide(std::int32_t side) {
    return isWithin(side, leastSide, mostSide) && side % 2 == 0;
}

bool isSound(const Start &start) {
    return isWithin(start.channels, 1, mostChannels) && isWithin(start.sampleRate, leastSampleRate, mostSampleRate) &&
           isWithin(start.soundBitRate, leastSoundBitRate, mostSoundBitRate);
}

} // namespace

std::string messageOf(const Start &start) {
    return Bytes(Kind::start).add(start).take();
}

std::string messageOf(const Session &session) {
    return Bytes(Kind::session).add(session).take();
}

std::string messageOf(const Picture &picture) {
    Bytes bytes(Kind::picture);
    const bool isWhole = picture.isWhole || picture.changed.size() > mostParts;
    bytes.add(picture.buffer).add(picture.time).add(picture.number).add(picture.bytesPerLine);
    bytes.add(std::uint32_t(isWhole));
    if (!isWhole)
        for (const Area &area : picture.changed)
            bytes.add(area);
    return bytes.take();
}

std::string messageOf(std::int64_t time, const float *samples, std::size_t count) {
    return Bytes(Kind::sound).add(time).take().append(reinterpret_cast<const char *>(samples), count * sizeof(float));
}

std::string messageOf(const Finish &finish) {
    return Bytes(Kind::finish).add(finish).take();
}

std::optional<Kind> kindOf(std::string_view message) {
    if (message.size() < sizeof(Kind))
        return std::nullopt;
    std::uint32_t kind = 0;
    std::memcpy(&kind, message.data(), sizeof kind);
    return isWithin(kind, std::uint32_t(Kind::start), std::uint32_t(Kind::finish)) ? std::optional(Kind(kind))
                                                                                   : std::nullopt;
}

std::optional<Start> startIn(std::string_view message) {
    Reading reading(message, Kind::start);
    const auto start = reading.next<Start>();
    const bool isSilent = start.channels == 0 && start.sampleRate == 0 && start.soundBitRate == 0;
    const bool isMeant = isSide(start.width) && isSide(start.height) && isWithin(start.bitRate, 1'000, mostBitRate) &&
                         isWithin(start.frameRate, 1, mostFrameRate) && (isSilent || isSound(start));
    return reading.isWhole() && isMeant ? std::optional(start) : std::nullopt;
}

std::optional<Session> sessionIn(std::string_view message) {
    Reading reading(message, Kind::session);
    const auto session = reading.next<Session>();
    return reading.isWhole() && isTime(session.time) ? std::optional(session) : std::nullopt;
}

std::optional<Picture> pictureIn(std::string_view message) {
    Reading reading(message, Kind::picture);
    Picture picture;
    picture.buffer = reading.next<std::uint32_t>();
    picture.time = reading.next<std::int64_t>();
    picture.number = reading.next<std::uint64_t>();
    picture.bytesPerLine = reading.next<std::int32_t>();
    const auto isWhole = reading.next<std::uint32_t>();
    picture.isWhole = isWhole == 1;
    picture.changed = reading.allOfTheRest<Area>(picture.isWhole ? 0 : mostParts);
    const bool isMeant = picture.buffer < mostBuffers && isTime(picture.time) && isWhole <= 1 &&
                         isWithin(picture.bytesPerLine, leastSide * bytesPerPixel, 2 * mostSide * bytesPerPixel);
    return reading.isWhole() && isMeant ? std::optional(std::move(picture)) : std::nullopt;
}

std::optional<Sound> soundIn(std::string_view message, int channels) {
    Reading reading(message, Kind::sound);
    Sound sound;
    sound.time = reading.next<std::int64_t>();
    const auto each = static_cast<std::size_t>(channels);
    sound.samples = reading.allOfTheRest<float>(mostSamples * each);
    const bool isMeant = isTime(sound.time) && each > 0 && sound.samples.size() % each == 0;
    return reading.isWhole() && isMeant ? std::optional(std::move(sound)) : std::nullopt;
}

std::optional<Finish> finishIn(std::string_view message) {
    Reading reading(message, Kind::finish);
    const auto finish = reading.next<Finish>();
    return reading.isWhole() && isTime(finish.time) ? std::optional(finish) : std::nullopt;
}

std::string messageOf(const Report &report) {
    std::string message(reinterpret_cast<const char *>(&report.kind), sizeof report.kind);
    return message + HelperLines::words(report.words);
}

std::optional<Report> reportIn(std::string_view message) {
    std::uint32_t kind = 0;
    if (message.size() < sizeof kind || message.size() > sizeof kind + HelperLines::longest)
        return std::nullopt;
    std::memcpy(&kind, message.data(), sizeof kind);
    const Report report{.kind = Report::Kind(kind), .words = std::string(message.substr(sizeof kind))};
    const bool isFailure = report.kind == Report::Kind::failed || report.kind == Report::Kind::diskIsFull;
    if (!isWithin(kind, std::uint32_t(Report::Kind::taken), std::uint32_t(Report::Kind::diskIsFull)) ||
        isFailure == report.words.empty())
        return std::nullopt;
    return report;
}

} // namespace tavrine::recorderProtocol
