#pragma once

#include "shell/Triggers.h"

namespace tavrine {

/// One feature that can be switched off, as the shell drives it. What only one tool can do is an operation of its own
/// class.
///
/// Lives on the main thread, as long as the process. Made at the launch, whether its switch is on or not; what costs
/// time or memory is made at its first use.
class Tool {
public:
    virtual ~Tool() = default;

    /// Its step within the launch, for a tool that has one.
    virtual void launch(bool /*isOn*/) {}
    /// A turn after its switch was flipped, and only then.
    virtual void setOn(bool isOn) = 0;
    /// A trigger of this tool was used while its switch is on.
    virtual void open(Trigger trigger);
};

} // namespace tavrine
