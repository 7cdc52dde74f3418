#pragma once

#include <memory>

namespace tavrine {

class Desktop;

/// The desktop that this process runs on. Called before the toolkit starts.
[[nodiscard]] std::unique_ptr<Desktop> makeDesktop();

} // namespace tavrine
