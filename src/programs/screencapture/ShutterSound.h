#pragma once

namespace tavrine {

/// Plays the desktop's sound for a picture taken, in a process of its own that the caller neither waits for nor hears
/// of: with no sound server, or one that hangs, nothing happens, and after some seconds nothing is left.
///
/// To be called when no other thread runs.
void playShutterSound();

} // namespace tavrine
