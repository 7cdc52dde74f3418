#pragma once

#include "upload/worker/Http.h"

#include <optional>
#include <string>
#include <string_view>

/// What a script may ask for, and what a redirect may do. Pure functions.
namespace tavrine {

/// Why a request is refused before anything is sent; none when it is sound.
[[nodiscard]] std::optional<std::string> refusal(const HttpRequest &request);

/// "http" or "https" in lower case; empty for every other URL.
[[nodiscard]] std::string schemeOf(std::string_view url);

/// Whether a header tells where the body ends. That is told by who sends it: a server that is told otherwise as well
/// can be made to see a second request in the body.
[[nodiscard]] bool isFraming(std::string_view headerName);

/// Changes `request` into the one that follows a redirect of `status` to `location`, as browsers do: a POST becomes a
/// GET at 301 and 302, all but HEAD at 303; where the host or port changes, all that the script named stays behind but
/// what says how the body is to be read. A text when it may not be followed.
[[nodiscard]] std::optional<std::string> followRedirect(HttpRequest &request, long status, const std::string &location);

} // namespace tavrine
