#pragma once

namespace tavrine {

/// What a button that uploads a picture is at.
enum class UploadButtonState { idle = 0, uploading = 1, done = 2 };

} // namespace tavrine
