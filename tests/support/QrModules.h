#pragma once

#include <QImage>
#include <QProcess>
#include <QRect>

#include <vector>

namespace tavrine::testing {

/// A QR code as a program of its own makes it, to be put on a screen: the light ground and the dark squares on it.
struct QrModules {
    QRect ground;
    std::vector<QRect> dark;
};

/// With its corner at `place`, each square `side` pixels wide. Empty when it could not be made.
[[nodiscard]] inline QrModules qrModules(const QString &payload, QPoint place, int side) {
    QProcess program;
    program.start(QStringLiteral("qrencode"),
                  {QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-s"), QStringLiteral("1"), payload});
    program.waitForFinished();
    const QImage squares = QImage::fromData(program.readAllStandardOutput());
    QrModules code{QRect(place, squares.size() * side), {}};
    for (int y = 0; y < squares.height(); ++y)
        for (int x = 0; x < squares.width(); ++x)
            if (qGray(squares.pixel(x, y)) < 128)
                code.dark.emplace_back(place + QPoint(x, y) * side, QSize(side, side));
    return code;
}

} // namespace tavrine::testing
