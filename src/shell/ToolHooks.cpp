#include "shell/ToolHooks.h"

namespace tavrine {

ToolHooks::~ToolHooks() = default;

} // namespace tavrine
