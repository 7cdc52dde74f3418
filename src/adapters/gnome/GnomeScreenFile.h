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

/// Takes a picture of all screens, without the pointer, into a nameless file as `PictureFileHead` says. The shell packs
/// it, a thread unpacks it. `answered` is called on the main thread in a later turn: with nothing when the shell does
/// not give one. Not called when `context` is gone.
void takeScreenFile(GnomeShell &shell, QObject *context,
                    std::function<void(const std::shared_ptr<Descriptor> &file)> answered);

} // namespace tavrine
