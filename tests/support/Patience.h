#pragma once

#include <chrono>

namespace tavrine::test {

/// How long what another process does is waited for, where nothing else is said. Under sanitizers a program takes up to
/// ten times as long, and its compositor longer to read it.
#ifdef TAVRINE_SLOW_PROGRAMS
inline constexpr std::chrono::seconds patience{40};
#else
inline constexpr std::chrono::seconds patience{10};
#endif

} // namespace tavrine::test
