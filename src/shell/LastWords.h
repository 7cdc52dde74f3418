#pragma once

namespace tavrine {

/// Has the program say on the error output what signal ended it: one line, and behind it where it was if the fault was
/// its own. Then the signal does what it always did, so that the status and the core are those of the signal.
///
///  1. Nothing else changes: no signal is outlived, and nothing is written or handed over at the end that was
///     not before.
///  2. A signal that somebody handles or ignores already (a sanitizer, nohup) stays theirs.
///  3. A fault is told on a stack of its own on the thread that calls this, so that a stack that is full is told there
///     too. Other threads tell on their own stack.
///  4. What the program starts is not touched: a new program begins without handlers, and a fork says nothing.
///  5. An error output that nobody empties holds up no end: the words are lost then, or cut off
///     after three seconds by an alarm, which then is the signal that the program ends by.
///
/// To be called once, from the main thread, before anything can fail.
void tellLastWords();

} // namespace tavrine
