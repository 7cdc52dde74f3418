#pragma once

#include "base/Descriptor.h"

#include <memory>
#include <optional>
#include <string>

namespace tavrine {

/// One name on its way to its addresses, on a thread of its own. The C library has no way to end a lookup: whoever
/// gives it up leaves the thread behind, to end with the process, and waits for nothing.
class NameLookup {
public:
    /// How many may go on at once, those that were given up among them: each is a thread.
    static constexpr int most = 32;

    /// Writes to the eventfd `wake` when there is news; null when there are too many.
    [[nodiscard]] static std::unique_ptr<NameLookup> start(const std::string &host, int wake);

    struct Outcome {
        std::string addresses; ///< with commas between them, those of IPv6 in brackets; empty: none
        std::string failure;   ///< the C library's words
    };
    /// None while it goes on.
    [[nodiscard]] std::optional<Outcome> outcome() const;

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};

} // namespace tavrine
