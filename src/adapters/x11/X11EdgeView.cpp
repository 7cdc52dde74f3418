#include "adapters/x11/X11EdgeView.h"

#include "adapters/x11/X11WindowDescription.h"

#include <QEasingCurve>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <vector>

#include <xcb/shape.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto betweenSteps = 17ms; // no more than sixty a second

/// Slow at both ends, as the desktop's own windows move.
double eased(double part) {
    static const QEasingCurve curve = [] {
        QEasingCurve bezier(QEasingCurve::BezierSpline);
        bezier.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
        return bezier;
    }();
    return curve.valueForProgress(part);
}

QRectF between(const QRectF &a, const QRectF &b, double part) {
    const auto mix = [part](double from, double to) { return from + (to - from) * part; };
    return {mix(a.x(), b.x()), mix(a.y(), b.y()), mix(a.width(), b.width()), mix(a.height(), b.height())};
}

/// To whole points, each edge by itself, so that a part that grows keeps its middle.
QRect whole(const QRectF &rect) {
    const QPoint corner(qRound(rect.left()), qRound(rect.top()));
    return {corner, QSize(qRound(rect.right()) - corner.x(), qRound(rect.bottom()) - corner.y())};
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

X11EdgeView::X11EdgeView(const EdgeWindowDescription &description)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus),
      m_description(description) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setWindowTitle(description.title);
    m_steps.setTimerType(Qt::PreciseTimer);
    m_steps.setInterval(betweenSteps);
    QObject::connect(&m_steps, &QTimer::timeout, this, [this] { step(); });
    setFrame(QRectF(QPointF(), description.largestSize), 0ms);
    create();
    // The toolkit moves what was on a screen that has gone, and another screen may have another scale.
    QObject::connect(windowHandle(), &QWindow::screenChanged, this, [this] {
        QMetaObject::invokeMethod(
            this, [this] { setFrame(m_frame, 0ms); }, Qt::QueuedConnection);
    });
    shapeInput();
}

void X11EdgeView::setContent(QWidget *content) {
    delete m_content.data();
    m_content = content;
    if (!content)
        return;
    content->setParent(this);
    showPart(m_part);
    content->show();
}

QRect X11EdgeView::placeFor(const QRectF &frame) const {
    const QSize size(qCeil(std::max(m_description.largestSize.width(), frame.width())),
                     qCeil(std::max(m_description.largestSize.height(), frame.height())));
    return {QPoint(qRound(frame.center().x() - size.width() * 0.5), qRound(frame.top())), size};
}

void X11EdgeView::setFrame(const QRectF &frame, std::chrono::milliseconds duration) {
    m_frame = frame;
    const QRect place = placeFor(frame);
    const bool isElsewhere = place != geometry();
    if (isElsewhere)
        setGeometry(place);
    m_from = m_part;
    m_to = frame.translated(-place.topLeft());
    m_duration = duration;
    m_sinceBegin.start();
    if (duration > 0ms && isVisible() && !isElsewhere) {
        m_steps.start();
    } else {
        m_steps.stop();
        showPart(m_to);
    }
    shapeInput();
}

void X11EdgeView::step() {
    const double part = std::min(1.0, double(m_sinceBegin.elapsed()) / double(m_duration.count()));
    if (part >= 1)
        m_steps.stop();
    showPart(part < 1 ? between(m_from, m_to, eased(part)) : m_to);
}

void X11EdgeView::showPart(const QRectF &part) {
    m_part = part;
    if (m_content)
        m_content->setGeometry(whole(part));
    cut();
}

void X11EdgeView::setIgnoresMouseEvents(bool ignores) {
    m_ignoresMouseEvents = ignores;
    shapeInput();
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
    auto *connection = windowHandle() ? qtConnection() : nullptr;
    if (!connection)
        return;
    const QRect area = whole(QRectF(whole(m_to).topLeft() * scale(), QSizeF(whole(m_to).size()) * scale()));
    const xcb_rectangle_t pixels = rectangle(area.x(), area.y(), area.width(), area.height());
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         static_cast<xcb_window_t>(winId()), 0, 0, m_ignoresMouseEvents ? 0 : 1, &pixels);
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
    const QRect part = whole(m_part);
    QPainterPath outline = m_description.outline ? m_description.outline(part.size()) : QPainterPath();
    if (!m_description.outline)
        outline.addRect(QRectF(QPointF(), part.size()));
    const QSize pixels = whole(QRectF(QPointF(), QSizeF(part.size()) * scale())).size();
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

void X11EdgeView::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_steps.stop(); // the next showing begins where this change would have ended
    showPart(m_to);
}

} // namespace tavrine
