#include "upload/worker/Frames.h"

#include "upload/worker/WorkerLimits.h"

#include <cerrno>
#include <cstring>

#include <sys/socket.h>

namespace tavrine {
namespace {

constexpr std::size_t headSize = 5; // the kind and the payload's length
constexpr std::size_t largestPayload = limits::requestBytes + limits::mib;

std::uint32_t numberAt(std::string_view bytes) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data(), sizeof value); // both halves are one program on one machine
    return value;
}

void append(std::string &bytes, std::uint32_t value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof raw);
}

} // namespace

FrameWriter::FrameWriter(FrameKind kind) {
    m_bytes += static_cast<char>(kind);
    append(m_bytes, 0);
}

FrameWriter &FrameWriter::number(std::uint32_t value) {
    append(m_bytes, value);
    return *this;
}

FrameWriter &FrameWriter::text(std::string_view text) {
    append(m_bytes, static_cast<std::uint32_t>(text.size()));
    m_bytes.append(text);
    return *this;
}

std::string FrameWriter::take() {
    const auto length = static_cast<std::uint32_t>(m_bytes.size() - headSize);
    std::memcpy(m_bytes.data() + 1, &length, sizeof length);
    return std::move(m_bytes);
}

std::optional<std::uint32_t> FrameReader::number() {
    if (m_rest.size() < sizeof(std::uint32_t))
        return std::nullopt;
    const std::uint32_t value = numberAt(m_rest);
    m_rest.remove_prefix(sizeof value);
    return value;
}

std::optional<std::string_view> FrameReader::text() {
    const auto length = number();
    if (!length || m_rest.size() < *length)
        return std::nullopt;
    const std::string_view text = m_rest.substr(0, *length);
    m_rest.remove_prefix(*length);
    return text;
}

void FrameAssembler::add(std::string_view bytes) {
    if (m_start == m_bytes.size() || m_start > limits::mib) {
        m_bytes.erase(0, m_start);
        m_start = 0;
    }
    m_bytes.append(bytes);
}

std::optional<Frame> FrameAssembler::next() {
    const std::string_view rest = std::string_view(m_bytes).substr(m_start);
    if (m_isBroken || rest.size() < headSize)
        return std::nullopt;
    const auto kind = static_cast<std::uint8_t>(rest[0]);
    const std::size_t length = numberAt(rest.substr(1));
    m_isBroken = kind > static_cast<std::uint8_t>(FrameKind::answer) || length > largestPayload;
    if (m_isBroken || rest.size() - headSize < length)
        return std::nullopt;
    m_start += headSize + length;
    return Frame{static_cast<FrameKind>(kind), std::string(rest.substr(headSize, length))};
}

bool sendWhole(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent > 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace tavrine
