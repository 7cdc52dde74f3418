#pragma once

#include <string>

namespace tavrine {

/// What becomes of this program when its compositor goes, ends one of its connections, or hears what it does not bear.
///
/// The toolkit cannot go on without its connection, and what stood on the others, as the clipboard's contents and the
/// windows, is gone in any case. So the program ends at once, with one line on the error output and a status by which
/// the session starts it again. What is to be kept is written as it changes, so an end costs nothing at any moment.
namespace compositorLoss {

/// Of `sysexits.h`: a service that this program needs is not there.
inline constexpr int exitStatus = 69;

/// Has the toolkit's own connection end like that as well, and has what libwayland says of an error told before it, in
/// a line of its own: where it sees a fault of ours, libwayland aborts the process and says nothing else. Leaves out
/// what the toolkit says of this program's own choice of buffers. Called before the toolkit starts.
void watchToolkit();

/// May be called on any thread, and by several at once: all connections end in the same moment, and the first has the
/// word.
[[noreturn]] void endProgram(const std::string &reason);

} // namespace compositorLoss
} // namespace tavrine
