#pragma once

#include "base/Descriptor.h"

#include <functional>
#include <memory>

class QObject;
class QString;

namespace tavrine {

class GnomeShell;

/// Where a program that this one starts finds a file of this process that has no name.
[[nodiscard]] QString pathOf(const Descriptor &file);

/// How the picture of a screen that has more pixels than its plane is made as large as the plane: mixed, as it looks
/// best, or left out of, so that each colour is one of the screen's.
enum class Shrinking { mixed, leftOut };

/// Takes a picture of all screens, without the pointer, into a nameless file as `PictureFileHead` says. The shell packs
/// it, a thread unpacks it. `answered` is called on the main thread in a later turn: with nothing when the shell does
/// not give one. Not called when `context` is gone.
void takeScreenFile(GnomeShell &shell, Shrinking shrinking, QObject *context,
                    std::function<void(const std::shared_ptr<Descriptor> &file)> answered);

} // namespace tavrine
