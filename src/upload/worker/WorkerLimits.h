#pragma once

#include <chrono>
#include <cstddef>

/// How much of everything a script may have. What is over a limit is cut, refused or ends the run, never the record.
namespace tavrine::limits {

inline constexpr std::size_t kib = 1024;
inline constexpr std::size_t mib = 1024 * kib;

/// The three texts that come in. A screen of 8K, noisy, is a PNG of about 100 MiB.
inline constexpr std::size_t inputBytes = 128 * mib;
/// What the script's process may have beyond its empty world. Enforced by the kernel where the engine asks it for
/// memory, and by the watch below for the part that the engine reserved before the script.
inline constexpr std::size_t scriptMemory = 1024 * mib;
inline constexpr std::chrono::milliseconds memoryWatch{25};
/// What the process that speaks to the network may have.
inline constexpr std::size_t networkMemory = 1024 * mib;

inline constexpr std::size_t logLines = 1000;
inline constexpr std::size_t logLineBytes = 8 * kib;
inline constexpr std::size_t logBytes = 512 * kib;
inline constexpr std::size_t messageBytes = 16 * kib;
/// A longer link is refused: half a link is none.
inline constexpr std::size_t urlBytes = 256 * kib;

inline constexpr std::size_t requestBytes = 160 * mib;
inline constexpr std::size_t requestUrlBytes = 64 * kib;
inline constexpr std::size_t requestHeaders = 100;
inline constexpr std::size_t requestHeaderBytes = 64 * kib;
inline constexpr std::size_t responseBytes = 8 * mib;
inline constexpr std::size_t responseHeaderBytes = 256 * kib;
inline constexpr std::size_t requestsAtOnce = 16;
inline constexpr int redirects = 5;
inline constexpr std::chrono::seconds connectTimeOut{10};
/// Below the run's own limit, so that the script hears of it first.
inline constexpr std::chrono::seconds exchangeTimeOut{28};
inline constexpr std::size_t timers = 10'000;

} // namespace tavrine::limits
