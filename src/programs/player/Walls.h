#pragma once

#include "walls/LockDown.h"

namespace tavrine {

/// For a process that decodes what may be hostile and hands it to the sound server: no file is opened any more, no
/// other address is called than those of sockets on this machine, no program is started. To be called by the only
/// thread there is, with the libraries loaded, the sound open and not yet read.
///
/// Others of the same person may look into it: the sound server does, to know with whom it speaks.
[[nodiscard]] LockDownError lockSoundPlayer();

/// The same for one that shows pictures, with its door open (Doors.h): it reaches nothing but that.
[[nodiscard]] LockDownError lockMoviePlayer();

} // namespace tavrine
