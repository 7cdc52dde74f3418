#pragma once

namespace tavrine {

/// This process from its first to its last line, when it plays the sound that it was given open.
[[noreturn]] void playSound();

} // namespace tavrine
