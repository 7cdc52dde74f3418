#pragma once

class QPixmap;

namespace tavrine {

class SnippetPreviewModel;

/// Takes a capture out of its card with the pointer, as a PNG file and as a picture: whoever it is dropped on takes
/// what it knows. Returns when the drag is over; the card may be gone by then.
///
/// The file is made in the background while the pointer is on its way, and waited for only when it is asked for.
void dragSnip(SnippetPreviewModel &model, const QPixmap &picture);

} // namespace tavrine
