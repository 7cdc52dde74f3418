#pragma once

#include <cstring>

namespace tavrine {

/// What the system says of an error number. Any thread: each has a text of its own in the C library that this is built
/// for, until its next call.
[[nodiscard]] inline const char *errorText(int number) {
    return std::strerror(number); // NOLINT(concurrency-mt-unsafe): it was shared by all threads up to glibc 2.31
}

} // namespace tavrine
