#pragma once

#include <string_view>

namespace tavrine::feedProtocol {

/// What TavrineFeedVerifier is given and tells: its arguments are the makers' keys, descriptor 3 is the feed, and it
/// says one of these lines. Without Qt.

inline constexpr int file = 3;
inline constexpr std::string_view good = "good";       ///< signed as it is, by one of the keys
inline constexpr std::string_view refused = "refused"; ///< anything else that it has looked at

/// The signature is the last line of the feed, a comment of XML, and signs all bytes before it: base64 of the 64 bytes
/// of Ed25519 between these two. packaging/sign-feed writes it.
inline constexpr std::string_view beforeSignature = "<!-- ed25519 ";
inline constexpr std::string_view afterSignature = " -->\n";

} // namespace tavrine::feedProtocol
