#pragma once

#include <optional>
#include <string>

namespace tavrine::screenServer {

/// Opens the door to the X server of this machine that the environment names, and tells the library with what it gets
/// in: neither is looked for later. Why there is none, otherwise. Before other threads.
[[nodiscard]] std::optional<std::string> open();

} // namespace tavrine::screenServer
