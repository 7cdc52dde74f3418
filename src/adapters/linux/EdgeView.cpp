#include "adapters/linux/EdgeView.h"

#include "adapters/linux/ScreenPlane.h"
#include "base/DesktopWords.h"

#include <QEasingCurve>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>

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

} // namespace

EdgeView::EdgeView(const EdgeWindowDescription &description)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus),
      m_description(description), m_frame(QPointF(), description.largestSize) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setWindowTitle(inDesktopWords(description.title));
    m_steps.setTimerType(Qt::PreciseTimer);
    m_steps.setInterval(betweenSteps);
    QObject::connect(&m_steps, &QTimer::timeout, this, [this] { step(); });
    m_to = m_part = QRectF(QPointF(), description.largestSize);
    setGeometry(placeFor(flippedRect(m_frame)));
    create();
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] {
        followFirstScreen();
        follow();
    });
    followFirstScreen();
    // The toolkit moves what was on a screen that has gone, and another screen may have another scale.
    QObject::connect(windowHandle(), &QWindow::screenChanged, this, [this] {
        QMetaObject::invokeMethod(
            this, [this] { follow(); }, Qt::QueuedConnection);
    });
}

void EdgeView::followFirstScreen() {
    QObject::disconnect(m_screenMoves);
    if (QScreen *first = QGuiApplication::primaryScreen())
        m_screenMoves = QObject::connect(first, &QScreen::geometryChanged, this, [this] { follow(); });
}

void EdgeView::follow() {
    setFrame(m_frame, 0ms);
}

void EdgeView::setContent(QWidget *content) {
    delete m_content.data();
    m_content = content;
    if (!content)
        return;
    content->setParent(this);
    showPart(m_part);
    content->show();
}

QRect EdgeView::placeFor(const QRectF &frame) const {
    const QSize size(qCeil(std::max(m_description.largestSize.width(), frame.width())),
                     qCeil(std::max(m_description.largestSize.height(), frame.height())));
    return {QPoint(qRound(frame.center().x() - size.width() * 0.5), qRound(frame.top())), size};
}

void EdgeView::setFrame(const QRectF &frame, std::chrono::milliseconds duration) {
    m_frame = frame;
    const QRectF flipped = flippedRect(frame);
    const QRect place = placeFor(flipped);
    const bool isElsewhere = place != geometry();
    if (isElsewhere)
        putAt(place);
    m_from = m_part;
    m_to = flipped.translated(-place.topLeft());
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

QRect EdgeView::shownPart() const {
    return whole(m_part);
}

QRect EdgeView::takingPart() const {
    return whole(m_to);
}

void EdgeView::step() {
    const double part = std::min(1.0, double(m_sinceBegin.elapsed()) / double(m_duration.count()));
    if (part >= 1)
        m_steps.stop();
    showPart(part < 1 ? between(m_from, m_to, eased(part)) : m_to);
}

void EdgeView::showPart(const QRectF &part) {
    m_part = part;
    if (m_content)
        m_content->setGeometry(whole(part));
    partChanged();
}

void EdgeView::setIgnoresMouseEvents(bool ignores) {
    m_ignoresMouseEvents = ignores;
    shapeInput();
}

void EdgeView::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_steps.stop(); // the next showing begins where this change would have ended
    showPart(m_to);
}

} // namespace tavrine
