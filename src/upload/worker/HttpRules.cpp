#include "upload/worker/HttpRules.h"

#include "upload/worker/WorkerLimits.h"

#include <algorithm>
#include <cctype>

namespace tavrine {
namespace {

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return lower;
}

/// A token of RFC 9110, which names of headers and methods are.
bool isToken(std::string_view text) {
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [marks](char c) {
        return (static_cast<unsigned char>(c) < 0x80 && std::isalnum(static_cast<unsigned char>(c))) ||
               marks.find(c) != std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

/// User, host and port as they are written.
std::string_view authorityOf(std::string_view url) {
    const std::size_t start = url.find("://");
    if (start == std::string_view::npos)
        return {};
    const std::string_view rest = url.substr(start + 3);
    return rest.substr(0, rest.find_first_of("/?#"));
}

/// Scheme, host and port as they are written.
std::string originOf(std::string_view url) {
    std::string_view authority = authorityOf(url);
    authority.remove_prefix(authority.rfind('@') == std::string_view::npos ? 0 : authority.rfind('@') + 1);
    std::string origin = schemeOf(url) + "://" + lowerCase(authority);
    const std::string standardPort = schemeOf(url) == "https" ? ":443" : ":80";
    if (origin.size() > standardPort.size() && origin.ends_with(standardPort))
        origin.resize(origin.size() - standardPort.size());
    return origin;
}

/// A key can stand in any header, so another server gets those alone that hold none.
bool mayGoElsewhere(std::string_view lowerCaseName) {
    constexpr std::string_view names[] = {"accept", "accept-language", "content-type", "content-language"};
    return std::find(std::begin(names), std::end(names), lowerCaseName) != std::end(names);
}

} // namespace

std::string schemeOf(std::string_view url) {
    for (const std::string_view scheme : {"http", "https"}) {
        if (lowerCase(url.substr(0, scheme.size() + 3)) == std::string(scheme) + "://")
            return std::string(scheme);
    }
    return {};
}

std::optional<std::string> refusal(const HttpRequest &request) {
    if (schemeOf(request.url).empty())
        return "Only http and https URLs can be requested.";
    const bool hasControl = std::any_of(request.url.begin(), request.url.end(),
                                        [](char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F; });
    // Programs do not agree on whether a backslash ends the host.
    const bool isAmbiguous = authorityOf(request.url).find('\\') != std::string_view::npos;
    if (request.url.size() > limits::requestUrlBytes || hasControl || isAmbiguous)
        return "The URL is malformed.";
    if (!isToken(request.method) || request.method.size() > 32 || request.method == "CONNECT")
        return "The method is malformed.";
    if (request.headers.size() > limits::requestHeaders)
        return "There are too many headers.";
    std::size_t size = 0;
    for (const auto &[name, value] : request.headers) {
        size += name.size() + value.size();
        if (!isToken(name) || !isHeaderValue(value))
            return "A header is malformed.";
    }
    if (size > limits::requestHeaderBytes)
        return "The headers are too long.";
    if (request.body.size() > limits::requestBytes)
        return "The body is too long.";
    return std::nullopt;
}

bool isFraming(std::string_view headerName) {
    const std::string name = lowerCase(headerName);
    return name == "content-length" || name == "transfer-encoding";
}

std::optional<std::string> followRedirect(HttpRequest &request, long status, const std::string &location) {
    if (schemeOf(location) != schemeOf(request.url))
        return "The server redirects to another scheme.";
    const bool isPost = request.method == "POST";
    const bool losesBody = status == 303 ? request.method != "HEAD" : isPost && (status == 301 || status == 302);
    if (losesBody) {
        request.method = "GET";
        request.body.clear();
    }
    const bool isOtherOrigin = originOf(location) != originOf(request.url);
    std::erase_if(request.headers, [losesBody, isOtherOrigin](const auto &header) {
        const std::string name = lowerCase(header.first);
        return (losesBody && name.starts_with("content-")) || (isOtherOrigin && !mayGoElsewhere(name));
    });
    request.url = location;
    return refusal(request);
}

} // namespace tavrine
