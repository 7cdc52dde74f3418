#pragma once

#include <unistd.h>

namespace tavrine {

/// The number that a sanitized build keeps open everywhere: what it finds behind a wall can be told in no other
/// way, for there nothing can be opened and the error output leads nowhere. Above what a program opens. The next one
/// is the second runtime's.
inline constexpr int numberOfFindings = 900;

/// Closes what a starting program left open beside the three that it gives. To be called before anything else is
/// opened.
inline void closeForeignDescriptors() {
#ifdef TAVRINE_SANITIZED
    ::close_range(STDERR_FILENO + 1, unsigned(numberOfFindings) - 1, 0);
#else
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
#endif
}

} // namespace tavrine
