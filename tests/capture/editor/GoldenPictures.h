#pragma once

#include <QImage>
#include <QString>

#include <vector>

namespace tavrine {

/// One picture of each kind of annotation in each orientation, as they should look. Letters want the family "DejaVu
/// Sans".
struct GoldenPicture {
    QString name; ///< of the file, without ".png"
    QImage image;
};

[[nodiscard]] std::vector<GoldenPicture> goldenPictures();

} // namespace tavrine
