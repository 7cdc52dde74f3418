#pragma once

namespace tavrine {

/// This process from its first to its last line, when it shows the movie that it was given open in the memory that it
/// was given, too.
[[noreturn]] void showMovie();

} // namespace tavrine
