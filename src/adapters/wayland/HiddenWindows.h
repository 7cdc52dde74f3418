#pragma once

namespace tavrine::hiddenWindows {

/// Keeps the toolkit's threads away from a window while it is hidden or destroyed. When its compositor has shown a
/// picture, a thread of the toolkit's is told, and works on the window; Qt 6.4 takes the same callback away on the main
/// thread without a lock, whereupon it is let go twice, or told of a window that is gone. Windows are hidden many
/// hundred times a day, so this ended the program now and then.
///
/// Called on the main thread when the toolkit has its connection, by whoever makes windows; again does nothing. Without
/// a compositor it does nothing either.
void guard();

} // namespace tavrine::hiddenWindows
