#pragma once

#include <optional>
#include <string>

namespace tavrine {

/// The servers that a locked process still reaches: each was called before the lock, and the call is handed to whoever
/// calls that address later. No other address is called any more, whatever the libraries or a hostile file want.
///
/// It stands on the C library's function `connect`, which this program has in its own name (Doors.cpp). One thread
/// until `close`; from then on any.
class Doors {
public:
    /// Calls the socket at `path`, a file's or, where there is none, an abstract one of that name; it is handed on
    /// once. Why it is not reached, otherwise.
    [[nodiscard]] static std::optional<std::string> open(const std::string &path);
    /// From now on there are no other addresses.
    static void close();
};

} // namespace tavrine
