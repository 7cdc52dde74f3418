#pragma once

#include <QString>

namespace tavrine {

/// What the editor shows while no script is saved: an explanation, an example in comments, and an error.
[[nodiscard]] QString defaultUploadScript();

/// A whole uploader for ImgBB that lacks only the person's key.
[[nodiscard]] QString imgBBUploadScript();

} // namespace tavrine
