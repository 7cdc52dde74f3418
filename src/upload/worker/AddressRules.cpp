#include "upload/worker/AddressRules.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace tavrine {
namespace {

/// The first `bits` of an address.
template <std::size_t size>
struct Network {
    std::array<std::uint8_t, size> address;
    unsigned bits;

    [[nodiscard]] bool contains(const std::uint8_t *other) const {
        const unsigned whole = bits / 8;
        const auto mask = static_cast<std::uint8_t>(0xFF00 >> (bits % 8));
        return std::equal(address.begin(), address.begin() + whole, other) &&
               (bits % 8 == 0 || (address[whole] & mask) == (other[whole] & mask));
    }
};

// The registries of special-purpose addresses (RFC 6890 and what followed), as far as they lead to somebody near.
constexpr Network<4> nearIPv4[] = {{{0, 0, 0, 0}, 8},      {{10, 0, 0, 0}, 8},     {{100, 64, 0, 0}, 10},
                                   {{127, 0, 0, 0}, 8},    {{169, 254, 0, 0}, 16}, {{172, 16, 0, 0}, 12},
                                   {{192, 168, 0, 0}, 16}, {{224, 0, 0, 0}, 3}};
constexpr Network<16> nearIPv6[] = {{{0xFC}, 7}, {{0xFE, 0x80}, 10}, {{0xFE, 0xC0}, 10}, {{0xFF}, 8}};
/// Those that carry an address of IPv4, and where in it.
constexpr struct {
    Network<16> network;
    unsigned at;
} carriers[] = {{{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}, 96}, 12},
                {{{0, 0x64, 0xFF, 0x9B}, 96}, 12},
                {{{0x20, 0x02}, 16}, 2},
                {{{}, 96}, 12}}; // ::1 and :: among them

bool isPublicIPv4(const std::uint8_t *address) {
    return std::none_of(std::begin(nearIPv4), std::end(nearIPv4),
                        [address](const auto &network) { return network.contains(address); });
}

bool isPublicIPv6(const std::uint8_t *address) {
    for (const auto &[network, at] : carriers) {
        if (network.contains(address))
            return isPublicIPv4(address + at);
    }
    return std::none_of(std::begin(nearIPv6), std::end(nearIPv6),
                        [address](const auto &network) { return network.contains(address); });
}

} // namespace

bool isPublicAddress(const sockaddr &address) {
    if (address.sa_family == AF_INET) {
        sockaddr_in known{};
        std::memcpy(&known, &address, sizeof known);
        return isPublicIPv4(reinterpret_cast<const std::uint8_t *>(&known.sin_addr));
    }
    if (address.sa_family == AF_INET6) {
        sockaddr_in6 known{};
        std::memcpy(&known, &address, sizeof known);
        return isPublicIPv6(known.sin6_addr.s6_addr);
    }
    return false;
}

bool isPublicAddress(const std::string &text) {
    std::array<std::uint8_t, 16> bytes{};
    if (inet_pton(AF_INET, text.c_str(), bytes.data()) == 1)
        return isPublicIPv4(bytes.data());
    return inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1 && isPublicIPv6(bytes.data());
}

bool isAddress(const std::string &host) {
    std::array<std::uint8_t, 16> bytes{};
    return host.starts_with('[') || inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 ||
           inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

} // namespace tavrine
