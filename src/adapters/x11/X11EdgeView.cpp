#include "adapters/x11/X11EdgeView.h"

#include "adapters/linux/IdleMemory.h"
#include "adapters/x11/X11WindowDescription.h"

#include <QBackingStore>
#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <utility>
#include <vector>

#include <xcb/shape.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto toRest = 1s;      // who comes and goes shall not wait for a picture each time
constexpr QSize noPicture(1, 1); // none at all is no size for it

/// To whole pixels, each edge by itself.
QRect inPixels(const QRect &points, double scale) {
    const QPointF corner = QPointF(points.topLeft()) * scale;
    const QPointF end = QPointF(points.topLeft() + QPoint(points.width(), points.height())) * scale;
    return {QPoint(qRound(corner.x()), qRound(corner.y())),
            QSize(qRound(end.x()) - qRound(corner.x()), qRound(end.y()) - qRound(corner.y()))};
}

xcb_rectangle_t rectangle(int x, int y, int width, int height) {
    return {static_cast<qint16>(x), static_cast<qint16>(y), static_cast<quint16>(std::max(0, width)),
            static_cast<quint16>(std::max(0, height))};
}

/// The pixels that a path covers for the most part, as bands from top to bottom.
std::vector<xcb_rectangle_t> pixelsOf(const QPainterPath &path, QSize size) {
    std::vector<xcb_rectangle_t> bands;
    if (size.isEmpty())
        return bands;
    QImage picture(size, QImage::Format_Alpha8);
    picture.fill(0);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, Qt::black);
    painter.end();
    size_t bandAbove = 0; ///< where the band of the line above begins
    for (int y = 0; y < size.height(); ++y) {
        const uchar *line = picture.constScanLine(y);
        const uchar *const end = line + size.width();
        const size_t band = bands.size();
        for (const uchar *at = line; at != end;) {
            const uchar *first = std::find_if(at, end, [](uchar alpha) { return alpha >= 128; });
            at = std::find_if(first, end, [](uchar alpha) { return alpha < 128; });
            if (first != at)
                bands.push_back(rectangle(int(first - line), y, int(at - first), 1));
        }
        const auto isSame = [](const xcb_rectangle_t &a, const xcb_rectangle_t &b) {
            return a.x == b.x && a.width == b.width && a.y + a.height == b.y;
        };
        if (const auto here = bands.begin() + static_cast<std::ptrdiff_t>(band);
            band > bandAbove &&
            std::equal(bands.begin() + static_cast<std::ptrdiff_t>(bandAbove), here, here, bands.end(), isSame)) {
            bands.resize(band);
            std::for_each(bands.begin() + static_cast<std::ptrdiff_t>(bandAbove), bands.end(),
                          [](xcb_rectangle_t &above) { ++above.height; });
        } else {
            bandAbove = band;
        }
    }
    return bands;
}

} // namespace

X11EdgeView::X11EdgeView(const EdgeWindowDescription &description) : EdgeView(description) {
    m_restsSoon.setSingleShot(true);
    m_restsSoon.setInterval(toRest);
    QObject::connect(&m_restsSoon, &QTimer::timeout, this, [this] { rest(); });
    windowHandle()->installEventFilter(this);
    follow();
}

void X11EdgeView::setComposited(bool isComposited) {
    m_isComposited = isComposited;
    cut();
    flush();
}

double X11EdgeView::scale() const {
    return windowHandle() ? windowHandle()->devicePixelRatio() : 1;
}

void X11EdgeView::shapeInput() {
    m_hasBeenInUse = m_hasBeenInUse || !ignoresMouseEvents();
    m_restsSoon.start();
    auto *connection = windowHandle() ? qtConnection() : nullptr;
    if (!connection)
        return;
    const QRect area = inPixels(takingPart(), scale());
    const xcb_rectangle_t pixels = rectangle(area.x(), area.y(), area.width(), area.height());
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         static_cast<xcb_window_t>(winId()), 0, 0, ignoresMouseEvents() ? 0 : 1, &pixels);
    flush();
}

/// Without a compositor what is not drawn would be black.
void X11EdgeView::cut() {
    auto *connection = windowHandle() ? qtConnection() : nullptr;
    if (!connection || (m_isComposited && !m_isCut))
        return;
    const auto id = static_cast<xcb_window_t>(winId());
    m_isCut = !m_isComposited;
    if (m_isComposited) {
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id, 0, 0, XCB_PIXMAP_NONE);
        return;
    }
    const QRect part = shownPart();
    QPainterPath outline = m_description.outline ? m_description.outline(part.size()) : QPainterPath();
    if (!m_description.outline)
        outline.addRect(QRectF(QPointF(), part.size()));
    const QSize pixels = inPixels(QRect(QPoint(), part.size()), scale()).size();
    const std::vector<xcb_rectangle_t> bands = pixelsOf(QTransform::fromScale(scale(), scale()).map(outline), pixels);
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_YX_BANDED, id,
                         static_cast<qint16>(qRound(part.x() * scale())),
                         static_cast<qint16>(qRound(part.y() * scale())), static_cast<quint32>(bands.size()),
                         bands.data());
}

void X11EdgeView::flush() {
    if (auto *connection = qtConnection())
        xcb_flush(connection);
}

/// The picture has the window's largest size, of which a small part shows at rest.
void X11EdgeView::rest() {
    if (!ignoresMouseEvents() || isChanging())
        return;
    if (QBackingStore *picture = backingStore())
        picture->resize(noPicture);
    if (std::exchange(m_hasBeenInUse, false))
        giveIdleMemoryBack();
}

/// The toolkit would show what is uncovered out of a picture that is not there.
bool X11EdgeView::eventFilter(QObject * /*watched*/, QEvent *event) {
    if (event->type() == QEvent::Expose && backingStore() && backingStore()->size() == noPicture)
        update();
    return false;
}

bool X11EdgeView::event(QEvent *event) {
    const bool isHandled = EdgeView::event(event);
    if (event->type() == QEvent::UpdateRequest) // it was painted
        m_restsSoon.start();
    return isHandled;
}

} // namespace tavrine
