#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the two halves of the worker say to each other over a socket pair: frames of a kind, a length and a payload of
/// numbers and texts. The half that runs the script is hostile, so everything read here is checked and nothing trusted.
namespace tavrine {

enum class FrameKind : std::uint8_t {
    locked,  // script half: locked down, standard input not yet read. A text in it: not locked, and why.
    go,      // network half: locked down too, read the script now
    log,     // script half: one line
    result,  // script half: the end and its text; nothing follows
    request, // script half: id, url, method, headers, body
    answer,  // network half: id, whether it failed, error, status, body
};

struct Frame {
    FrameKind kind = FrameKind::log;
    std::string payload;
};

class FrameWriter {
public:
    explicit FrameWriter(FrameKind kind);
    FrameWriter &number(std::uint32_t value);
    FrameWriter &text(std::string_view text);
    /// Whole, ready for the socket.
    [[nodiscard]] std::string take();

private:
    std::string m_bytes;
};

class FrameReader {
public:
    explicit FrameReader(std::string_view payload) : m_rest(payload) {}
    [[nodiscard]] std::optional<std::uint32_t> number();
    [[nodiscard]] std::optional<std::string_view> text();
    [[nodiscard]] bool isAtEnd() const { return m_rest.empty(); }

private:
    std::string_view m_rest;
};

/// Puts frames together from pieces as they arrive.
class FrameAssembler {
public:
    void add(std::string_view bytes);
    /// The next whole frame, if there is one.
    [[nodiscard]] std::optional<Frame> next();
    /// True once a frame announced a length over the limit or an unknown kind: the other side is not ours any more.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }

private:
    std::string m_bytes;
    std::size_t m_start = 0;
    bool m_isBroken = false;
};

/// Blocks until all is sent; false when the other half has gone.
bool sendWhole(int socket, std::string_view bytes);

} // namespace tavrine
