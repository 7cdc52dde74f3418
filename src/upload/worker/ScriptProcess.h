#pragma once

namespace tavrine {

/// The half of the worker that runs the script: makes the world, locks itself in, waits for the word to go on, reads
/// standard input, and answers over `socket`. Never returns. Standard output and error lead nowhere in it.
[[noreturn]] void runScriptProcess(int socket);

} // namespace tavrine
