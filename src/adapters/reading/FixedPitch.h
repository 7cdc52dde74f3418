#pragma once

#include <QImage>
#include <QRect>
#include <QString>

#include <optional>

namespace tavrine::reading {

/// Lines of programs and terminals stand on a grid: each character has a cell of one width. The engine knows nothing of
/// it and is wrong about blanks and underscores there; the page is not.
struct Grid {
    double left = 0;  ///< of the first cell
    double pitch = 0; ///< width of a cell
    bool operator==(const Grid &) const = default;
};

/// The grid on which a line stands, by the ink that no border of a cell crosses; none for a line whose letters have
/// widths of their own, or that is too short to tell. `line` is the line's box on the page, which is grey and dark on
/// light; `characters` how many were read, blanks included; `baseline` the row that letters stand on.
[[nodiscard]] std::optional<Grid> gridOf(const QImage &page, const QRect &line, int baseline, qsizetype characters);

/// The line with its blanks and underscores where the page has them, and a letter less where one was read twice. As it
/// was when the cells with letters are not as many as the letters that were read: then nothing is known.
[[nodiscard]] QString onGrid(const QString &text, const Grid &grid, const QImage &page, const QRect &line,
                             int baseline);

} // namespace tavrine::reading
