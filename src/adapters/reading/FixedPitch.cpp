#include "adapters/reading/FixedPitch.h"

#include "adapters/reading/Ink.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavrine::reading {
namespace {

constexpr qsizetype fewestCharacters = 10;
constexpr double crossedAtMost = 0.12; // part of the borders; letters of their own widths cross a third and more

/// What stands in each column of a line.
struct Columns {
    int left = 0;
    std::vector<bool> letters; ///< between the top and the baseline
    std::vector<bool> strokes; ///< anything at all, down to where underscores are
};

Columns columnsOf(const QImage &page, const QRect &box, int baseline) {
    // Cells reach a little over the ink of the first and the last letter.
    const int room = std::max(4, box.height());
    const int left = std::max(0, box.left() - room);
    const int right = std::min(page.width() - 1, box.right() + room);
    const int base = std::clamp(baseline, 0, page.height() - 1);
    const int top = std::clamp(std::min(box.top(), base), 0, page.height() - 1);
    const int bottom = std::min(page.height() - 1, base + std::max(3, (base - top) * 45 / 100));
    int ground = 0;
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x)
            ground = std::max(ground, int(page.constScanLine(y)[x]));
    Columns columns;
    columns.left = left;
    for (int x = left; x <= right; ++x) {
        bool hasLetter = false;
        bool hasStroke = false;
        for (int y = top; y <= bottom; ++y) {
            const int grey = page.constScanLine(y)[x];
            hasLetter = hasLetter || (y < base && grey < ground - inkOfLetters);
            hasStroke = hasStroke || grey < ground - (y < base ? inkOfLetters : inkOfStrokes);
        }
        columns.letters.push_back(hasLetter);
        columns.strokes.push_back(hasStroke);
    }
    return columns;
}

/// The part of the borders of a grid that go through a letter.
double crossedPart(const Columns &columns, double left, double pitch, double right) {
    int crossed = 0;
    int borders = 0;
    for (double x = left; x <= right; x += pitch) {
        const auto column = static_cast<qsizetype>(std::lround(x)) - columns.left;
        if (column < 0 || column >= static_cast<qsizetype>(columns.letters.size()))
            continue;
        ++borders;
        crossed += columns.letters[static_cast<size_t>(column)] ? 1 : 0;
    }
    return borders == 0 ? 1 : static_cast<double>(crossed) / borders;
}

bool isOneOf(QChar character, QStringView set) {
    return set.contains(character);
}

/// The engine takes the zero of these fonts, with its dot or stroke, for signs that programs do not have.
QString withZeros(QString letters) {
    for (qsizetype i = 0; i < letters.size(); ++i) {
        const QChar letter = letters.at(i);
        const bool isNumberBefore = i > 0 && (letters.at(i - 1).isDigit() || isOneOf(letters.at(i - 1), u".["));
        const bool isNameAfter = i + 1 < letters.size() && letters.at(i + 1).isLetter();
        if (isOneOf(letter, u"\u00AE\u00A9") || (letter == u'@' && isNumberBefore && !isNameAfter))
            letters[i] = u'0';
    }
    return letters;
}

/// The letters without the one that was read twice, as the engine does where two signs look alike; as they are when
/// there is no such place.
QString withoutDouble(QString letters) {
    struct Pair {
        QStringView both;
        qsizetype wrong; ///< which of the two is too many
    };
    static constexpr Pair pairs[] = {{u"1l", 1},  {u"l1", 0}, {u"lL", 1},      {u"Ll", 0}, {u"\"'", 1},
                                     {u"'\"", 0}, {u"''", 1}, {u"\u00AE@", 1}, {u"|l", 1}, {u"l|", 0}};
    for (const Pair &pair : pairs)
        if (const qsizetype place = letters.indexOf(pair.both); place >= 0)
            return letters.remove(place + pair.wrong, 1);
    return letters;
}

} // namespace

std::optional<Grid> gridOf(const QImage &page, const QRect &line, int baseline, qsizetype characters) {
    if (characters < fewestCharacters || line.width() < 4 * fewestCharacters || !page.rect().intersects(line))
        return std::nullopt;
    const Columns columns = columnsOf(page, line, baseline);
    const double right = line.right() + 1;
    const double about = static_cast<double>(line.width()) / static_cast<double>(characters);
    Grid best;
    double fewest = 1;
    // Fine enough that the last border is off by a quarter of a cell at most.
    const double pitchStep = 0.25 / static_cast<double>(characters);
    // The engine may have read some characters too many or too few.
    for (double pitch = about * 0.88; pitch <= about * 1.12; pitch += about * pitchStep) {
        for (double phase = 0.02; phase < 0.4; phase += 0.06) {
            const double left = line.left() - phase * pitch;
            const double crossed = crossedPart(columns, left, pitch, right + pitch / 2);
            if (crossed < fewest) {
                fewest = crossed;
                best = {left, pitch};
            }
        }
    }
    return fewest <= crossedAtMost ? std::optional(best) : std::nullopt;
}

QString onGrid(const QString &text, const Grid &grid, const QImage &page, const QRect &line, int baseline) {
    enum class Cell { blank, underscore, letter };
    const Columns columns = columnsOf(page, line, baseline);
    const auto count = static_cast<qsizetype>(columns.letters.size());
    std::vector<Cell> cells;
    for (double x = grid.left; x < line.right() + grid.pitch / 2; x += grid.pitch) {
        const double margin = std::max(1.0, grid.pitch * 0.12); // the borders belong to nobody
        const auto from = std::clamp<qsizetype>(std::lround(x + margin) - columns.left, 0, count);
        const auto to = std::clamp<qsizetype>(std::lround(x + grid.pitch - margin) - columns.left, from, count);
        const auto has = [&](const std::vector<bool> &ink) {
            return std::find(ink.begin() + from, ink.begin() + to, true) != ink.begin() + to;
        };
        cells.push_back(has(columns.letters) ? Cell::letter : has(columns.strokes) ? Cell::underscore : Cell::blank);
    }
    QString letters;
    for (const QChar character : text)
        if (!character.isSpace() && character != u'_')
            letters.append(character);
    const auto wanted = std::count(cells.begin(), cells.end(), Cell::letter);
    if (letters.size() == wanted + 1)
        letters = withoutDouble(letters);
    if (letters.size() != wanted)
        return text;
    letters = withZeros(letters);
    QString result;
    qsizetype used = 0;
    for (const Cell cell : cells) {
        if (cell == Cell::letter)
            result.append(letters.at(used++));
        else if (cell == Cell::underscore)
            result.append(u'_');
        else if (!result.isEmpty() && !result.endsWith(u' '))
            result.append(u' ');
    }
    return result.trimmed();
}

} // namespace tavrine::reading
