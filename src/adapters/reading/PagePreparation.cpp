#include "adapters/reading/PagePreparation.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tavrine::reading {
namespace {

constexpr int tileSide = 16; // a line of small text: most of a tile is ground
constexpr int darkerThanGround = 160;
constexpr int lowestLine = 6;       // less is a rule or a dash
constexpr int highestLine = 80;     // more is a picture
constexpr int largeLine = 17;       // letters of 16 pixels and more
constexpr double mostPixels = 64e6; // a byte each, and the recogniser keeps several copies
constexpr int longestSide = 32000;  // the recogniser counts in 16 bits

/// The grey that half of the tile's pixels do not reach: its ground, as letters cover less than half.
int middleGrey(const QImage &grey, const QRect &tile) {
    std::array<int, 256> counts{};
    for (int y = tile.top(); y <= tile.bottom(); ++y) {
        const uchar *line = grey.constScanLine(y);
        for (int x = tile.left(); x <= tile.right(); ++x)
            ++counts[line[x]];
    }
    int left = tile.width() * tile.height() / 2;
    for (int value = 0; value < 256; ++value) {
        left -= counts[static_cast<size_t>(value)];
        if (left < 0)
            return value;
    }
    return 255;
}

/// Tiles of a kind, row by row.
class Tiles {
public:
    Tiles(int columns, int rows) : m_columns(columns), m_rows(rows), m_isDark(static_cast<size_t>(columns * rows)) {}
    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] int rows() const { return m_rows; }
    [[nodiscard]] bool isDark(int x, int y) const { return m_isDark[index(x, y)]; }
    /// Whether a tile beside it is of the other kind: the edge between them runs through one of the two.
    [[nodiscard]] bool isAtEdge(int x, int y) const {
        const bool own = isDark(x, y);
        return (x > 0 && isDark(x - 1, y) != own) || (x + 1 < m_columns && isDark(x + 1, y) != own) ||
               (y > 0 && isDark(x, y - 1) != own) || (y + 1 < m_rows && isDark(x, y + 1) != own);
    }
    void setDark(int x, int y, bool isDark) { m_isDark[index(x, y)] = isDark; }

    /// Each tile as most of those round it: a fat letter or a small picture makes no region of its own.
    [[nodiscard]] Tiles smoothed() const {
        Tiles result(m_columns, m_rows);
        for (int y = 0; y < m_rows; ++y)
            for (int x = 0; x < m_columns; ++x)
                result.setDark(x, y, isMostlyDarkRound(x, y));
        return result;
    }

private:
    [[nodiscard]] size_t index(int x, int y) const { return static_cast<size_t>(y * m_columns + x); }
    [[nodiscard]] bool isMostlyDarkRound(int x, int y) const {
        int dark = 0;
        int all = 0;
        for (int v = std::max(0, y - 1); v <= std::min(m_rows - 1, y + 1); ++v)
            for (int u = std::max(0, x - 1); u <= std::min(m_columns - 1, x + 1); ++u) {
                ++all;
                dark += isDark(u, v) ? 1 : 0;
            }
        return 2 * dark == all ? isDark(x, y) : 2 * dark > all;
    }

    int m_columns;
    int m_rows;
    std::vector<bool> m_isDark;
};

/// Rows and columns of a tile that are dark from end to end are no letters but the ground of the neighbour.
void lightenGround(QImage &grey, const QRect &tile) {
    for (int y = tile.top(); y <= tile.bottom(); ++y) {
        uchar *line = grey.scanLine(y) + tile.left();
        if (std::all_of(line, line + tile.width(), [](uchar value) { return value < 128; }))
            std::for_each(line, line + tile.width(), [](uchar &value) { value = static_cast<uchar>(255 - value); });
    }
    for (int x = tile.left(); x <= tile.right(); ++x) {
        bool isDark = true;
        for (int y = tile.top(); isDark && y <= tile.bottom(); ++y)
            isDark = grey.constScanLine(y)[x] < 128;
        for (int y = tile.top(); isDark && y <= tile.bottom(); ++y)
            grey.scanLine(y)[x] = static_cast<uchar>(255 - grey.constScanLine(y)[x]);
    }
}

} // namespace

QImage greyOf(const QImage &image) {
    if (image.isNull())
        return {};
    if (!image.hasAlphaChannel())
        return image.convertToFormat(QImage::Format_Grayscale8);
    QImage opaque(image.size(), QImage::Format_RGB32);
    if (opaque.isNull())
        return {};
    opaque.fill(Qt::white);
    QImage picture = image;
    picture.setDevicePixelRatio(1);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque.convertToFormat(QImage::Format_Grayscale8);
}

QImage withDarkLetters(QImage grey) {
    if (grey.isNull())
        return grey;
    const auto tileRect = [&](int x, int y) {
        return QRect(x * tileSide, y * tileSide, tileSide, tileSide).intersected(grey.rect());
    };
    Tiles tiles((grey.width() + tileSide - 1) / tileSide, (grey.height() + tileSide - 1) / tileSide);
    for (int y = 0; y < tiles.rows(); ++y)
        for (int x = 0; x < tiles.columns(); ++x)
            tiles.setDark(x, y, middleGrey(grey, tileRect(x, y)) < 128);
    tiles = tiles.smoothed().smoothed();
    for (int row = 0; row < grey.height(); ++row) {
        uchar *line = grey.scanLine(row);
        for (int x = 0; x < tiles.columns(); ++x) {
            if (!tiles.isDark(x, row / tileSide))
                continue;
            const int end = std::min((x + 1) * tileSide, grey.width());
            for (int i = x * tileSide; i < end; ++i)
                line[i] = static_cast<uchar>(255 - line[i]);
        }
    }
    for (int y = 0; y < tiles.rows(); ++y)
        for (int x = 0; x < tiles.columns(); ++x)
            if (tiles.isAtEdge(x, y))
                lightenGround(grey, tileRect(x, y));
    return grey;
}

std::optional<int> lineHeightOf(const QImage &page) {
    constexpr int strips = 12; // narrow enough that few pictures and window edges get into each
    std::vector<int> heights;
    for (int strip = 0; strip < strips; ++strip) {
        const int left = page.width() * strip / strips;
        const int right = page.width() * (strip + 1) / strips;
        int height = 0;
        for (int y = 0; y <= page.height(); ++y) {
            const uchar *line = y < page.height() ? page.constScanLine(y) : nullptr;
            const bool hasInk =
                line && std::any_of(line + left, line + right, [](uchar value) { return value < darkerThanGround; });
            if (hasInk) {
                ++height;
            } else {
                if (height >= lowestLine && height <= highestLine)
                    heights.push_back(height);
                height = 0;
            }
        }
    }
    if (heights.empty())
        return std::nullopt;
    const auto middle = heights.begin() + static_cast<qsizetype>(heights.size() / 2);
    std::nth_element(heights.begin(), middle, heights.end());
    return *middle;
}

double readingScale(const QSize &size, std::optional<int> lineHeight) {
    const double pixels = static_cast<double>(size.width()) * size.height();
    if (pixels <= 0)
        return 1;
    const double longest = std::max(size.width(), size.height());
    const double wanted = lineHeight && *lineHeight >= largeLine ? 1 : 2;
    return std::min({wanted, std::sqrt(mostPixels / pixels), longestSide / longest});
}

QImage preparedPage(const QImage &image) {
    const QImage page = withDarkLetters(greyOf(image));
    if (page.isNull())
        return page;
    const double scale = readingScale(page.size(), lineHeightOf(page));
    if (scale == 1)
        return page;
    const QSize size = (QSizeF(page.size()) * scale).toSize().expandedTo({1, 1});
    return page.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_Grayscale8);
}

} // namespace tavrine::reading
