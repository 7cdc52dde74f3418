#pragma once

#include "ports/Instance.h"

#include <memory>

namespace tavrine {

class Desktop;

/// Whether this start goes on or hands what it asks for to the program that runs. Asked before anything else is made: a
/// start beside a running program is a message and an end. What goes on is told of further starts by its desktop.
[[nodiscard]] Instance becomeOnlyInstance(const StartRequest &request);

/// The desktop that this process runs on. Called before the toolkit starts.
[[nodiscard]] std::unique_ptr<Desktop> makeDesktop();

} // namespace tavrine
