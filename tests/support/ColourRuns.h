#pragma once

#include <QImage>
#include <QRect>

#include <cstdlib>

namespace tavrine::testing {

/// A movie's colours are not the screen's to the last bit.
[[nodiscard]] inline bool isLike(QRgb seen, QRgb wanted) {
    const auto differ = [](int one, int other) { return std::abs(one - other) > 24; };
    return !differ(qRed(seen), qRed(wanted)) && !differ(qGreen(seen), qGreen(wanted)) &&
           !differ(qBlue(seen), qBlue(wanted));
}

/// What a colour fills in a picture, by rows in which at least so many pixels beside each other have it.
[[nodiscard]] inline QRect filledBy(QRgb colour, const QImage &picture, int atLeast) {
    QRect filled;
    for (int y = 0; y < picture.height(); ++y) {
        int begin = 0;
        for (int x = 0; x <= picture.width(); ++x) {
            if (x < picture.width() && isLike(picture.pixel(x, y), colour))
                continue;
            if (x - begin >= atLeast)
                filled |= QRect(begin, y, x - begin, 1);
            begin = x + 1;
        }
    }
    return filled;
}

} // namespace tavrine::testing
