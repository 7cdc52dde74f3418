#pragma once

namespace tavrine {

class NotchViewModel;
struct DroppedContent;

/// Puts what was dropped on the shelf: files if there are any, else pictures, else the text. False when nothing of it
/// can be kept. Without a model there is no shelf.
[[nodiscard]] bool performDragOperation(NotchViewModel *viewModel, const DroppedContent &content);

} // namespace tavrine
