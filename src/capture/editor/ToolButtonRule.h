#pragma once

#include "capture/editor/DrawingPath.h"

namespace tavrine {

/// What a press on a tool's button leads to.
struct ToolPress {
    DrawingTool current = DrawingTool::pen; ///< the tool that is selected afterwards
    bool showSizePicker = false;            ///< whether the button's popover is open afterwards
    bool operator==(const ToolPress &) const = default;
};

/// A press on the button of `tool`: another tool is selected and offers its sizes; the selected one opens and closes
/// them. The eraser has none. A disabled button leaves all as it is.
[[nodiscard]] constexpr ToolPress pressedTool(DrawingTool tool, DrawingTool current, bool showSizePicker,
                                              bool isDisabled) {
    if (isDisabled)
        return {current, showSizePicker};
    if (tool != current)
        return {tool, tool == DrawingTool::eraser ? showSizePicker : true};
    return {current, tool == DrawingTool::eraser ? showSizePicker : !showSizePicker};
}

} // namespace tavrine
