#include "adapters/wayland/screen/CopiedPixels.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include <wayland-client.h>

namespace tavrine {
namespace {

/// Where the channels of a pixel lie, little-endian, and how long each is.
struct Layout {
    std::uint32_t format;
    int bytes;
    int red, green, blue; ///< the lowest bit
    int bits;
};
constexpr Layout layouts[] = {
    {WL_SHM_FORMAT_XRGB8888, 4, 16, 8, 0, 8},      {WL_SHM_FORMAT_ARGB8888, 4, 16, 8, 0, 8},
    {WL_SHM_FORMAT_XBGR8888, 4, 0, 8, 16, 8},      {WL_SHM_FORMAT_ABGR8888, 4, 0, 8, 16, 8},
    {WL_SHM_FORMAT_RGBX8888, 4, 24, 16, 8, 8},     {WL_SHM_FORMAT_RGBA8888, 4, 24, 16, 8, 8},
    {WL_SHM_FORMAT_BGRX8888, 4, 8, 16, 24, 8},     {WL_SHM_FORMAT_BGRA8888, 4, 8, 16, 24, 8},
    {WL_SHM_FORMAT_XRGB2101010, 4, 20, 10, 0, 10}, {WL_SHM_FORMAT_ARGB2101010, 4, 20, 10, 0, 10},
    {WL_SHM_FORMAT_XBGR2101010, 4, 0, 10, 20, 10}, {WL_SHM_FORMAT_ABGR2101010, 4, 0, 10, 20, 10},
    {WL_SHM_FORMAT_RGB888, 3, 16, 8, 0, 8},        {WL_SHM_FORMAT_BGR888, 3, 0, 8, 16, 8},
};

const Layout *layoutOf(std::uint32_t format) {
    const auto *const found = std::find_if(std::begin(layouts), std::end(layouts),
                                           [format](const Layout &layout) { return layout.format == format; });
    return found == std::end(layouts) ? nullptr : found;
}

bool isPlainFormat(std::uint32_t format) {
    return format == WL_SHM_FORMAT_XRGB8888 || format == WL_SHM_FORMAT_ARGB8888;
}

quint32 plain(const std::uint8_t *at, const Layout &layout) {
    quint32 pixel = 0;
    std::memcpy(&pixel, at, static_cast<size_t>(layout.bytes)); // this machine is little-endian, as Wayland's formats
    const auto channel = [&](int shift) { return (pixel >> shift >> (layout.bits - 8)) & 0xffU; };
    return channel(layout.red) << 16 | channel(layout.green) << 8 | channel(layout.blue);
}

} // namespace

bool isKnownFormat(std::uint32_t format) {
    return layoutOf(format) != nullptr;
}

bool CopiedPixels::isKnown() const {
    return isKnownFormat(format);
}

bool CopiedPixels::isPlain() const {
    return isPlainFormat(format) && transform == WL_OUTPUT_TRANSFORM_NORMAL && !isUpsideDown &&
           lineBytes == size.width() * int{sizeof(quint32)};
}

QPoint CopiedPixels::inMemory(QPoint place) const {
    const QSize seen = seenSize();
    int x = place.x();
    int y = place.y();
    // The picture is turned against the clock on its way to the output, and mirrored before that.
    if (transform >= WL_OUTPUT_TRANSFORM_FLIPPED)
        x = seen.width() - 1 - x;
    switch (transform % 4) {
    case WL_OUTPUT_TRANSFORM_90:
        std::tie(x, y) = std::pair(y, seen.width() - 1 - x);
        break;
    case WL_OUTPUT_TRANSFORM_180:
        std::tie(x, y) = std::pair(seen.width() - 1 - x, seen.height() - 1 - y);
        break;
    case WL_OUTPUT_TRANSFORM_270:
        std::tie(x, y) = std::pair(seen.height() - 1 - y, x);
        break;
    default:
        break;
    }
    return {x, isUpsideDown ? size.height() - 1 - y : y};
}

QRect CopiedPixels::seen(const QRect &part) const {
    // Turning is its own opposite but for the quarter turns: the corners say it either way.
    const QSize whole = seenSize();
    if (part.isEmpty())
        return {};
    const QRect seenWhole({}, whole);
    const auto seenOf = [&](QPoint memory) {
        CopiedPixels back = *this;
        back.isUpsideDown = false;
        back.size = whole;
        if (transform == WL_OUTPUT_TRANSFORM_90)
            back.transform = WL_OUTPUT_TRANSFORM_270;
        else if (transform == WL_OUTPUT_TRANSFORM_270)
            back.transform = WL_OUTPUT_TRANSFORM_90;
        return back.inMemory({memory.x(), isUpsideDown ? size.height() - 1 - memory.y() : memory.y()});
    };
    const QPoint a = seenOf(part.topLeft());
    const QPoint b = seenOf(part.bottomRight());
    return QRect(QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
                 QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y()))) &
           seenWhole;
}

void CopiedPixels::putInto(PixelsToPaint target, QPoint to, const QRect &wanted) const {
    const Layout *const layout = layoutOf(format);
    const QRect part = wanted & QRect({}, seenSize()) & target.rect().translated(-to);
    if (!layout || part.isEmpty())
        return;
    const QPoint origin = inMemory({0, 0});
    const QPoint stepX = seenSize().width() > 1 ? inMemory({1, 0}) - origin : QPoint();
    const qsizetype step = qsizetype{stepX.y()} * lineBytes + qsizetype{stepX.x()} * layout->bytes;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const QPoint first = inMemory({part.left(), y});
        const std::uint8_t *from = data + qsizetype{first.y()} * lineBytes + qsizetype{first.x()} * layout->bytes;
        quint32 *const line = target.line(y + to.y()) + part.left() + to.x();
        if (isPlainFormat(format) && step == layout->bytes) {
            std::memcpy(line, from, static_cast<size_t>(part.width()) * sizeof(quint32));
            continue;
        }
        for (int x = 0; x < part.width(); ++x, from += step)
            line[x] = plain(from, *layout);
    }
}

} // namespace tavrine
