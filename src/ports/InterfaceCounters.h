#pragma once

#include <QtGlobal>

#include <optional>
#include <vector>

namespace tavrine {

/// Bits of `InterfaceAddress::flags`.
namespace interfaceFlag {
inline constexpr quint32 up = 0x1;
inline constexpr quint32 loopback = 0x8;
inline constexpr quint32 running = 0x40;
} // namespace interfaceFlag

/// Bytes since the interface came to be. Each count begins anew after 4 GiB.
struct InterfaceData {
    quint32 inputBytes = 0;
    quint32 outputBytes = 0;
    bool operator==(const InterfaceData &) const = default;
};

/// One entry of the list of interfaces. An interface may have several, one for each of its addresses.
struct InterfaceAddress {
    quint32 flags = 0;
    bool isLinkLayer = false;               ///< it is the entry for the interface itself, not for an address of it
    std::optional<InterfaceData> data = {}; ///< only entries of the link layer have it
};

/// The machine's network interfaces and what went through them. Lives on the main thread; a call never waits.
///
///  1. Every interface has exactly one entry of the link layer, whether it has addresses or not.
///  2. Bytes that went through before the call are counted, those that an interface sends to itself twice.
class InterfaceCounters {
public:
    virtual ~InterfaceCounters() = default;

    /// The list as it is now. None when it could not be had whole.
    [[nodiscard]] virtual std::optional<std::vector<InterfaceAddress>> interfaces() = 0;
};

} // namespace tavrine
