#pragma once

namespace tavrine::test {

/// How many times as much memory a process takes as it asked for: the sanitizer of threads remembers of each word who touched it.
#ifdef __SANITIZE_THREAD__
inline constexpr int shadows = 3;
inline constexpr int watchers = 1; ///< threads of its own
#else
inline constexpr int shadows = 1;
inline constexpr int watchers = 0;
#endif

} // namespace tavrine::test
