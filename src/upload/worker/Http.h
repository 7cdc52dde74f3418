#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>

namespace tavrine {

struct HttpRequest {
    std::uint32_t id = 0;
    std::string url;
    std::string method;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
};

/// What became of it: a failure in words, or a status and the body's bytes.
struct HttpAnswer {
    std::uint32_t id = 0;
    std::string failure; // empty: the exchange was completed
    std::uint32_t status = 0;
    std::string body;
};

/// HTTP exchanges that run side by side. In a module of its own, loaded at the first request: the library behind it and
/// the thirty that it needs would double the start of a script that does without.
class Http {
public:
    virtual ~Http() = default;
    virtual void start(HttpRequest request) = 0;
    /// Waits until an exchange moves on, one of `others` is ready or the time is up; fills in their `revents`.
    virtual void wait(std::vector<pollfd> &others, std::chrono::milliseconds longest) = 0;
    /// Those that have ended since the last call.
    [[nodiscard]] virtual std::vector<HttpAnswer> takeEnded() = 0;
};

/// What the module exports, and its name.
using MakeHttp = Http *();
inline constexpr const char *makeHttpSymbol = "tavrineMakeHttp";
inline constexpr const char *httpModule = "upload_http.so";

} // namespace tavrine
