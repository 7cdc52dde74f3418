#include "shell/tools/Tool.h"

namespace tavrine {

void Tool::open(Trigger /*trigger*/) {
    Q_ASSERT_X(false, "Tool::open", "this tool has no trigger");
}

} // namespace tavrine
