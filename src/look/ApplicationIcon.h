#pragma once

#include <QIcon>

namespace tavrine::look {

/// The program's own icon, for the windows that a task bar shows. Decoded when it is first asked for.
[[nodiscard]] QIcon applicationIcon();

} // namespace tavrine::look
