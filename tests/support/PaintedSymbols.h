#pragma once

#include "look/Symbols.h"
#include "support/PaintedWords.h"

#include <QImage>

#include <algorithm>
#include <cstdlib>

namespace tavrine::test {

/// Whether both have one shape, whatever the colour: as thick everywhere, in the same measure.
inline bool areOfOneShape(const QImage &one, const QImage &other) {
    const auto thickest = [](const QImage &image) {
        int most = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                most = std::max(most, qAlpha(image.pixel(x, y)));
        return most;
    };
    const int mostOfOne = thickest(one);
    const int mostOfOther = thickest(other);
    if (one.size() != other.size() || mostOfOne == 0 || mostOfOther == 0)
        return false;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            if (std::abs(qAlpha(one.pixel(x, y)) * 255 / mostOfOne - qAlpha(other.pixel(x, y)) * 255 / mostOfOther) > 4)
                return false;
    return true;
}

/// The symbols among the pictures that were painted, told by their shapes. Names of one shape are all told.
inline QStringList symbolsOn(const WordsDevice &device) {
    QStringList found;
    for (const QPixmap &pixmap : device.pixmaps())
        for (const QString &name : look::symbolNames())
            if (areOfOneShape(pixmap.toImage(), look::symbolPixmap(name, pixmap.width(), Qt::black, 1).toImage()))
                found.append(name);
    return found;
}

} // namespace tavrine::test
