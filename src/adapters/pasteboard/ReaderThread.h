#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace tavrine {

/// Starts the thread of a `PasteboardReader`: it opens its connection, and then runs. Waits for the first of that, as
/// what is copied after the reader was made is a change and what stood before is none; for `longest` at most, as who
/// has the other end may hang.
[[nodiscard]] std::thread startReaderThread(std::function<void()> open, std::function<void()> run,
                                            std::chrono::milliseconds longest);

} // namespace tavrine
