#include "recording/ScreenRecorderSelectionModel.h"

#include "recording/RecordingGeometry.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr double leastByKeys = ScreenRecorderSelectionModel::leastSide + 1;

} // namespace

ScreenRecorderSelectionModel::ScreenRecorderSelectionModel(QSizeF size, double scale, Actions actions)
    : m_size(size), m_scale(scale), m_actions(std::move(actions)) {}

QPointF ScreenRecorderSelectionModel::within(QPointF point) const {
    return {std::clamp(point.x(), 0.0, m_size.width()), std::clamp(point.y(), 0.0, m_size.height())};
}

void ScreenRecorderSelectionModel::drag(QPointF start, QPointF location) {
    if (m_isConfirming)
        return;
    if (std::exchange(m_cross, std::nullopt))
        m_startPoint.reset();
    if (!m_startPoint)
        m_startPoint = within(start);
    m_currentPoint = within(location);
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::endDrag() {
    if (m_isConfirming)
        return;
    if (isLargeEnough()) {
        m_isConfirming = true;
        m_cross.reset();
        Q_EMIT changed();
    } else {
        m_actions.onCancel();
    }
}

bool ScreenRecorderSelectionModel::isLargeEnough() const {
    const QRectF area = selection().value_or(QRectF());
    return area.width() > leastSide && area.height() > leastSide;
}

void ScreenRecorderSelectionModel::stopRecording() {
    if (m_actions.onStop && !m_isConfirming)
        m_actions.onStop();
}

void ScreenRecorderSelectionModel::selectAll() {
    if (m_startPoint)
        return;
    setSelection(QRectF(QPointF(), m_size));
    endDrag();
}

void ScreenRecorderSelectionModel::moveCross(QPointF by) {
    if (m_isConfirming || (m_startPoint && !m_cross)) // a drag is under way
        return;
    m_cross = within(m_cross.value_or(QPointF(m_size.width() / 2, m_size.height() / 2)) + by);
    if (m_startPoint)
        m_currentPoint = m_cross;
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::setCorner() {
    moveCross({});
    if (!m_cross)
        return;
    if (!m_startPoint) {
        m_startPoint = m_cross;
        m_currentPoint = m_cross;
        Q_EMIT changed();
    } else if (isLargeEnough()) {
        endDrag();
    }
}

void ScreenRecorderSelectionModel::flipMic() {
    m_includeMic = !m_includeMic;
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::flipSystemAudio() {
    m_includeSystemAudio = !m_includeSystemAudio;
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::setTimerDelay(int seconds) {
    if (std::ranges::find(delays, seconds) == delays.end() || seconds == m_timerDelay)
        return;
    m_timerDelay = seconds;
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::start() {
    if (m_isConfirming)
        m_actions.onStart();
}

void ScreenRecorderSelectionModel::closeCard() {
    m_startPoint.reset();
    m_currentPoint.reset();
    m_cross.reset();
    m_isConfirming = false;
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::move(QPointF by) {
    if (!m_isConfirming)
        return;
    QRectF area = *selection();
    area.moveTo(std::clamp(area.x() + by.x(), 0.0, m_size.width() - area.width()),
                std::clamp(area.y() + by.y(), 0.0, m_size.height() - area.height()));
    setSelection(area);
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::resize(QPointF by) {
    if (!m_isConfirming)
        return;
    QRectF area = *selection();
    area.setWidth(std::min(std::max(area.width() + by.x(), leastByKeys), m_size.width() - area.x()));
    area.setHeight(std::min(std::max(area.height() + by.y(), leastByKeys), m_size.height() - area.y()));
    setSelection(area);
    Q_EMIT changed();
}

void ScreenRecorderSelectionModel::setSelection(const QRectF &area) {
    m_startPoint = area.topLeft();
    m_currentPoint = area.bottomRight();
}

std::optional<QRectF> ScreenRecorderSelectionModel::selection() const {
    if (!m_startPoint || !m_currentPoint)
        return std::nullopt;
    return QRectF(*m_startPoint, *m_currentPoint).normalized();
}

QString ScreenRecorderSelectionModel::sizeText() const {
    const QSize pixels = recordingPixelSize(selection().value_or(QRectF()).size(), m_scale);
    return QStringLiteral("%1 × %2").arg(pixels.width()).arg(pixels.height());
}

QString ScreenRecorderSelectionModel::delayLabel(int seconds) {
    return seconds == 0 ? QStringLiteral("None (0s)") : QStringLiteral("%1 Seconds").arg(seconds);
}

} // namespace tavrine
