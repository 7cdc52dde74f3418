#pragma once

#include <string>

#include <sys/socket.h>

/// Which addresses are the internet's. Pure functions.
namespace tavrine {

/// False for this machine, private networks, the link and groups; also for what leads to one of them from IPv6, and for
/// families other than the internet's two.
[[nodiscard]] bool isPublicAddress(const sockaddr &address);
/// The same of an address as text; false for what is none.
[[nodiscard]] bool isPublicAddress(const std::string &text);
/// Whether a host is an address already, with the brackets of IPv6 or without.
[[nodiscard]] bool isAddress(const std::string &host);

} // namespace tavrine
