#pragma once

#include <QImage>
#include <QString>

namespace tavrine {

/// Icons of files where no theme has any: a folder, and a sheet of paper with a sign of its kind, which is the name
/// that themes know the kind by ("image-png").
[[nodiscard]] QImage drawnFolderIcon(int pixels);
[[nodiscard]] QImage drawnFileIcon(const QString &kind, int pixels);

} // namespace tavrine
