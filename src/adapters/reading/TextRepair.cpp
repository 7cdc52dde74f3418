#include "adapters/reading/TextRepair.h"

#include "adapters/reading/FixedPitch.h"
#include "adapters/reading/Ink.h"

#include <algorithm>
#include <cmath>

namespace tavrine::reading {
namespace {

// In heights of a capital. An underscore is some 0.7 wide, a blank at least 0.3; letters stand at most 0.1 apart, but
// for the fixed widths of programs, where nothing is mended by mistake: there a blank is 0.8.
constexpr double shortestUnderscore = 0.5;
constexpr double underscoreWidth = 0.8;
constexpr double widestBlankWithinWord = 0.15;
constexpr double lowestStroke = 0.45; // under the baseline

bool isDarkerThan(int grey, const QImage &page, int x, int top, int bottom) {
    for (int y = top; y <= bottom; ++y)
        if (page.constScanLine(y)[x] < grey)
            return true;
    return false;
}

int lightest(const QImage &page, int left, int right, int top, int bottom) {
    int grey = 0;
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x)
            grey = std::max(grey, int(page.constScanLine(y)[x]));
    return grey;
}

struct Gap {
    int blank = 0;             ///< the widest run of columns without ink
    int low = 0;               ///< the widest run of columns with ink below the baseline alone
    bool isUnderlined = false; ///< the letters on both sides have ink below the baseline too
};

/// What lies between two words. Their boxes are a little off, so it looks some way into either.
Gap gapBetween(const ReadWord &left, const ReadWord &right, int capital, const QImage &page) {
    const int baseline = std::clamp((left.baseline + right.baseline) / 2, 0, page.height() - 1);
    const int top = std::max(0, baseline - capital);
    const int bottom = std::min(page.height() - 1, baseline + static_cast<int>(std::ceil(lowestStroke * capital)));
    const int within = capital / 2;
    const int from = std::max(0, std::min(left.box.right(), right.box.left()) - within);
    const int to = std::min(page.width() - 1, std::max(left.box.right(), right.box.left()) + within);
    const int ground = lightest(page, from, to, top, bottom);
    const int underBaseline = std::min(baseline + 1, bottom);
    Gap gap;
    int blank = 0;
    int low = 0;
    int letters[2] = {};
    int underlined[2] = {};
    const int middle = (from + to) / 2;
    for (int x = from; x <= to; ++x) {
        const bool inLetters = isDarkerThan(ground - inkOfLetters, page, x, top, std::max(top, baseline - 1));
        const bool hasLowInk = isDarkerThan(ground - inkOfStrokes, page, x, underBaseline, bottom);
        const bool isLow = !inLetters && hasLowInk;
        const size_t side = x < middle ? 0 : 1;
        letters[side] += inLetters ? 1 : 0;
        underlined[side] += inLetters && hasLowInk ? 1 : 0;
        blank = inLetters || isLow ? 0 : blank + 1;
        low = isLow ? low + 1 : 0;
        gap.blank = std::max(gap.blank, blank);
        gap.low = std::max(gap.low, low);
    }
    gap.isUnderlined = letters[0] > 0 && letters[1] > 0 && underlined[0] == letters[0] && underlined[1] == letters[1];
    return gap;
}

/// Of the line: most words have a letter of that height.
int capitalHeight(const std::vector<ReadWord> &words) {
    std::vector<int> heights;
    for (const ReadWord &word : words)
        heights.push_back(word.baseline - word.box.top());
    std::sort(heights.begin(), heights.end());
    return heights.empty() ? 0 : heights[heights.size() * 3 / 4];
}

QString between(const ReadWord &left, const ReadWord &right, int capital, const QImage &page) {
    const QString blank(QLatin1Char(' '));
    if (capital < 6) // nothing to measure by
        return blank;
    const Gap gap = gapBetween(left, right, capital, page);
    if (gap.isUnderlined)
        return blank;
    const bool isUnderscore =
        gap.low >= shortestUnderscore * capital && gap.blank <= 2 * widestBlankWithinWord * capital;
    const QChar underscore(u'_');
    if (isUnderscore) {
        if (left.text.endsWith(underscore) || right.text.startsWith(underscore))
            return {};
        return {std::max<qsizetype>(1, std::lround(gap.low / (underscoreWidth * capital))), underscore};
    }
    return gap.blank <= widestBlankWithinWord * capital ? QString() : blank;
}

} // namespace

QString joinedWords(const std::vector<ReadWord> &words, const QImage &page) {
    const int capital = capitalHeight(words);
    QString line;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            line += between(words[i - 1], words[i], capital, page);
        line += words[i].text;
    }
    return line;
}

QString repairedLine(const std::vector<ReadWord> &words, const QImage &page) {
    const QString line = joinedWords(words, page);
    QRect box;
    std::vector<int> baselines;
    for (const ReadWord &word : words) {
        box |= word.box;
        baselines.push_back(word.baseline);
    }
    if (words.empty())
        return line;
    std::sort(baselines.begin(), baselines.end());
    const int baseline = baselines[baselines.size() / 2];
    const auto grid = gridOf(page, box, baseline, line.size());
    return grid ? onGrid(line, *grid, page, box, baseline) : line;
}

QStringList withPlausibleQuotes(QStringList lines) {
    constexpr QChar openDouble(0x201C);
    constexpr QChar closeDouble(0x201D);
    constexpr QChar openSingle(0x2018);
    constexpr QChar closeSingle(0x2019);
    constexpr QChar straightDouble(u'"');
    constexpr QChar straightSingle(u'\'');
    const QString all = lines.join(QLatin1Char('\n'));
    const auto opens = all.count(openDouble);
    const auto closes = all.count(closeDouble);
    const bool isTypographic =
        std::min(opens, closes) * 4 >= std::max(opens, closes) * 3 && opens + closes > all.count(straightDouble);
    const bool hasTypographicSingles = all.count(closeSingle) > all.count(straightSingle);
    for (QString &line : lines) {
        if (!isTypographic) {
            // One mark that was read as two.
            for (const QChar quote : {openDouble, closeDouble}) {
                line.replace(QString(straightDouble) + quote, QString(straightDouble));
                line.replace(QString(quote) + straightDouble, QString(straightDouble));
                line.replace(quote, straightDouble);
            }
        }
        if (!hasTypographicSingles) {
            line.replace(openSingle, straightSingle);
            line.replace(closeSingle, straightSingle);
        }
    }
    return lines;
}

} // namespace tavrine::reading
