#pragma once

namespace tavrine::test {

/// How many times as much memory a process takes as it asked for: the sanitizer of threads remembers of each word who touched it.
#ifdef __SANITIZE_THREAD__
inline constexpr int shadows = 3;
#else
inline constexpr int shadows = 1;
#endif

} // namespace tavrine::test
