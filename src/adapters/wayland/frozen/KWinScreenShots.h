#pragma once

#include "adapters/wayland/screen/CopiedPixels.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrine {

/// Pictures of KWin's outputs out of its service on the session bus, which it has for the programs whose desktop file
/// asks for it. For one freezing; one thread.
///
/// The bus' library is loaded here and not with the program: other compositors need none of it.
class KWinScreenShots {
public:
    /// Null where there is no bus, or nothing to speak with it.
    [[nodiscard]] static std::unique_ptr<KWinScreenShots> open();
    ~KWinScreenShots();
    KWinScreenShots(const KWinScreenShots &) = delete;
    KWinScreenShots &operator=(const KWinScreenShots &) = delete;

    /// An output's own pixels, upright and without the pointer; they are there until the next question. None when KWin
    /// refuses, or is late.
    [[nodiscard]] std::optional<CopiedPixels> take(const std::string &output);

private:
    struct Bus;

    explicit KWinScreenShots(std::unique_ptr<Bus> bus);

    std::unique_ptr<Bus> m_bus;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace tavrine
