#pragma once

#include <QLatin1String>

namespace tavrine {

/// What a start of the program finds.
enum class Instance {
    first,         ///< it is the only one: go on
    handedOver,    ///< another one runs and has been told; end with status 0
    otherIsSilent, ///< another one runs and does not answer; end with status 1. A line on standard error has told it
};

/// What a start of the program asks of the one that runs; empty for no more than to come forward.
namespace startAction {
inline constexpr QLatin1String shelf("shelf"); ///< opens the shelf for the keyboard
} // namespace startAction

} // namespace tavrine
