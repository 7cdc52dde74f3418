#include "shell/settings/MemoryCleaningOverlayView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavrine {
namespace {

using namespace look;

constexpr qreal badgeSide = 120;
constexpr qreal checkSize = 52;
constexpr std::array particleAngles{0.0, 45.0, 90.0, 135.0, 180.0, 225.0, 270.0, 315.0};
constexpr qreal particleSide = 8;
constexpr qreal flight = 96; // from the badge's middle, where a spark ends
constexpr Seconds leavingTime{0.5};
constexpr double groundOpacity = 0.9;

// When the check sets in after the burst.
constexpr double checkDelaySeconds = 0.15;

} // namespace

MemoryCleaningOverlay::MemoryCleaningOverlay(QWidget *parent) : QWidget(parent) {
    setAccessibleName(inDesktopWords(QStringLiteral("Memory Cleared")));
    setAccessibleDescription(inDesktopWords(QStringLiteral("Clipboard history deleted")));
    parent->installEventFilter(this);
    hide();
}

void MemoryCleaningOverlay::setShown(bool isShown) {
    if (isShown == m_isShown)
        return;
    m_isShown = isShown;
    if (!isShown) {
        m_appearing.start(
            leavingTime, easeOut,
            [this](double part) {
                m_opacity = 1 - part;
                update();
            },
            [this] { hide(); });
        return;
    }
    setGeometry(parentWidget()->rect());
    m_burst = m_checkScale = m_checkOpacity = 0;
    show();
    raise();
    m_appearing.start(Spring::responding(0.4, 0.7), [this](double part) {
        m_opacity = std::clamp(part, 0.0, 1.0);
        update();
    });
    m_bursting.start(Spring::responding(0.55, 0.65), [this](double part) {
        m_burst = part;
        update();
    });
    const Spring check = Spring::responding(0.4, 0.6);
    const Seconds whole = check.settled() + Seconds(checkDelaySeconds);
    m_checking.start(whole, linearTiming, [this, check, whole](double part) {
        const double since = part * whole.count() - checkDelaySeconds;
        m_checkScale = since <= 0 ? 0 : check.at(Seconds(since));
        m_checkOpacity = std::clamp(m_checkScale, 0.0, 1.0);
        update();
    });
}

void MemoryCleaningOverlay::paintBadge(QPainter &painter, const QPointF &centre) const {
    const Theme &theme = themeOf(this);
    for (const double angle : particleAngles) {
        const double radians = angle * std::numbers::pi / 180;
        const double way = flight * m_burst;
        const QPointF place = centre + QPointF(std::cos(radians), std::sin(radians)) * way;
        fillRounded(painter,
                    QRectF(place - QPointF(particleSide / 2, particleSide / 2), QSizeF(particleSide, particleSide)),
                    particleSide / 2, theme.success);
    }
    const double side = badgeSide * std::clamp(m_burst, 0.0, 1.1);
    fillRounded(painter, QRectF(centre - QPointF(side / 2, side / 2), QSizeF(side, side)), side / 2, theme.elevated);
    painter.save();
    painter.setOpacity(painter.opacity() * m_checkOpacity);
    const double size = std::max(1.0, checkSize * m_checkScale);
    paintSymbol(painter, QRectF(centre - QPointF(size / 2, size / 2), QSizeF(size, size)),
                QStringLiteral("checkmark.circle.fill"), size, theme.success);
    painter.restore();
}

void MemoryCleaningOverlay::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    painter.setOpacity(m_opacity * groundOpacity);
    painter.fillRect(rect(), theme.surface);
    painter.setOpacity(m_opacity);
    const QPointF centre(width() / 2.0, height() / 2.0 - 40);
    paintBadge(painter, centre);
    const qreal top = centre.y() + flight + space::large;
    paintLine(painter, QRectF(0, top, width(), 26), inDesktopWords(QStringLiteral("Memory Cleared")), TextRole::heading,
              theme.text, Qt::AlignHCenter);
    paintLine(painter, QRectF(0, top + 26, width(), 20), inDesktopWords(QStringLiteral("Clipboard history deleted")),
              TextRole::body, theme.secondaryText, Qt::AlignHCenter);
}

bool MemoryCleaningOverlay::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(object, event);
}

} // namespace tavrine
