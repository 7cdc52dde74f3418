#include "programs/player/ScreenServer.h"

#include "programs/player/Doors.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <X11/Xauth.h>
#include <X11/Xlib.h>
#include <unistd.h>

namespace tavrine::screenServer {
namespace {

constexpr std::string_view socketsFolder = "/tmp/.X11-unix/X"; // where every server of this machine has its socket

/// The number in ":1" or "unix:1.0", as it is written there.
std::optional<std::string> displayNumber(std::string_view display) {
    const std::size_t colon = display.rfind(':');
    if (colon == std::string_view::npos || (colon != 0 && display.substr(0, colon) != "unix"))
        return std::nullopt;
    std::string_view number = display.substr(colon + 1);
    number = number.substr(0, number.find('.'));
    int value = -1;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    const bool isWhole = error == std::errc() && end == number.data() + number.size() && value >= 0;
    return isWhole ? std::optional(std::string(number)) : std::nullopt;
}

/// What the person's file of keys has for the server; servers without keys there are, too.
void takeKey(const std::string &number) {
    constexpr std::string_view kind = "MIT-MAGIC-COOKIE-1";
    std::array<char, 256> host{};
    if (::gethostname(host.data(), host.size() - 1) != 0)
        return;
    const std::string_view name(host.data());
    const std::unique_ptr<Xauth, decltype(&XauDisposeAuth)> key(
        XauGetAuthByAddr(FamilyLocal, static_cast<unsigned short>(name.size()), name.data(),
                         static_cast<unsigned short>(number.size()), number.c_str(),
                         static_cast<unsigned short>(kind.size()), kind.data()),
        &XauDisposeAuth);
    if (key && key->name && key->data)
        XSetAuthorization(key->name, key->name_length, key->data, key->data_length);
}

} // namespace

std::optional<std::string> open() {
    const char *const display = std::getenv("DISPLAY");
    const auto number = displayNumber(display ? display : "");
    if (!number)
        return "there is no screen of this machine";
    takeKey(*number);
    return Doors::open(std::string(socketsFolder) + *number);
}

} // namespace tavrine::screenServer
