#pragma once

namespace tavrine {

/// True when something accepts connections at the sound server's usual place, or the person names another server.
[[nodiscard]] bool soundServerAnswers();

} // namespace tavrine
