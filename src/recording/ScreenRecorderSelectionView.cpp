#include "recording/ScreenRecorderSelectionView.h"

#include "base/DesktopWords.h"
#include "look/ArrowKeys.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Shadow.h"
#include "recording/RecordingSetupCardView.h"
#include "recording/ScreenRecorderSelectionModel.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

// The overlay is dark in either theme: it lies over other people's windows.
constexpr QColor veil(0, 0, 0, 92);
constexpr QColor plate(24, 24, 27, 225);
constexpr QColor onPlate(255, 255, 255);
constexpr QColor onPlateQuiet(255, 255, 255, 190);
constexpr int around = 56; ///< what is painted round the area: its outline and its label
constexpr int labelHeight = 26;
constexpr int labelGap = 8;
constexpr int hintWidth = 320;
constexpr int hintHeight = 68;
constexpr int moreHintHeight = 24; ///< of each line more
constexpr double manyPoints = 10;

QString cancelHint() {
    return inDesktopWords(QStringLiteral("Press ESC to cancel"));
}
QString stopHint() {
    return inDesktopWords(QStringLiteral("Press Space to stop the recording"));
}
/// What Return does next, once keys have shown the cross.
QString returnHint(bool hasCorner) {
    return inDesktopWords(hasCorner ? QStringLiteral("Press Return to take the area")
                                    : QStringLiteral("Press Return to set the first corner"));
}

} // namespace

ScreenRecorderSelectionView::ScreenRecorderSelectionView(std::shared_ptr<ScreenRecorderSelectionModel> model,
                                                         QPixmap frozen)
    : m_model(std::move(model)), m_frozen(std::move(frozen)), m_card(new RecordingSetupCardView(m_model, this)) {
    setAccessibleName(inDesktopWords(QStringLiteral("Drag to select area to record")));
    setFocusPolicy(Qt::StrongFocus);
    m_card->hide();
    connect(m_model.get(), &ScreenRecorderSelectionModel::changed, this, &ScreenRecorderSelectionView::refresh);
    refresh();
}

QRect ScreenRecorderSelectionView::selection() const {
    return m_model->selection().value_or(QRectF()).toAlignedRect();
}

void ScreenRecorderSelectionView::refresh() {
    setCursor(m_model->isConfirming() ? Qt::ArrowCursor : Qt::CrossCursor);
    const QRect now = selection();
    if (now != m_painted)
        update((now | m_painted).adjusted(-around, -around, around, around));
    m_painted = now;
    const bool hasCross = m_model->cross().has_value();
    if (std::exchange(m_hasCross, hasCross) || hasCross)
        update(); // its lines go from edge to edge
    tell();
    if (m_card->isHidden() == m_model->isConfirming()) {
        m_card->setVisible(m_model->isConfirming());
        setFocus(); // its keys are the overlay's until Tab takes them to the card
        update();
    }
    placeCard();
}

/// What has been selected so far, and what the keys do next.
void ScreenRecorderSelectionView::tell() {
    QStringList words;
    if (m_model->isConfirming() || m_model->hasCorner())
        words << inDesktopWords(QStringLiteral("Area of %1").arg(m_model->sizeText()));
    else if (const auto &cross = m_model->cross())
        words << inDesktopWords(QStringLiteral("Cross at %1, %2").arg(qRound(cross->x())).arg(qRound(cross->y())));
    if (m_model->cross())
        words << returnHint(m_model->hasCorner());
    else if (!m_model->isConfirming())
        words << inDesktopWords(QStringLiteral("Arrow keys and Return select an area, Return alone the whole screen"));
    if (m_model->canStopRecording() && !m_model->isConfirming())
        words << stopHint();
    if (!m_model->cross())
        words << cancelHint();
    setAccessibleDescription(words.join(QStringLiteral(". ")));
}

/// In the middle of the area, as far as the screen lets it. Where it does not fit at all, its lower end is seen, with
/// the button.
void ScreenRecorderSelectionView::placeCard() {
    if (!m_model->isConfirming())
        return;
    m_card->fitInto(height() - 2 * look::space::large);
    const QSize size = m_card->sizeHint().expandedTo(m_card->minimumSize()); // its width is fixed
    const QPoint middle = selection().center() - QPoint(size.width() / 2, size.height() / 2);
    const auto within = [](int place, int length, int room) {
        const int spare = room - length;
        const int gap = std::clamp(spare / 2, 0, look::space::large);
        return spare < 0 ? spare : std::clamp(place, gap, spare - gap);
    };
    const QRect place(QPoint(within(middle.x(), size.width(), width()), within(middle.y(), size.height(), height())),
                      size);
    if (m_card->geometry() == place)
        return;
    update(m_card->geometry().marginsAdded(look::shadowMargins));
    m_card->setGeometry(place);
    update(place.marginsAdded(look::shadowMargins));
}

void ScreenRecorderSelectionView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    placeCard();
}

void ScreenRecorderSelectionView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    setFocus();
}

void ScreenRecorderSelectionView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton || m_model->isConfirming())
        return;
    m_grip = event->position();
    m_model->drag(*m_grip, event->position());
}

void ScreenRecorderSelectionView::mouseMoveEvent(QMouseEvent *event) {
    if (m_grip)
        m_model->drag(*m_grip, event->position());
}

void ScreenRecorderSelectionView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton || !m_grip)
        return;
    m_grip.reset();
    m_model->endDrag();
}

void ScreenRecorderSelectionView::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!m_grip && !event->isAutoRepeat())
            confirmByKey(event->key());
        return;
    default:
        break;
    }
    if (const QPointF direction = look::arrowDirection(event->key()); !direction.isNull())
        moveByKey(direction, event->modifiers());
    else
        QWidget::keyPressEvent(event);
}

void ScreenRecorderSelectionView::confirmByKey(int key) {
    const bool isSpace = key == Qt::Key_Space;
    if (isSpace && (m_model->canStopRecording() || m_model->isConfirming()))
        m_model->stopRecording();
    else if (m_model->isConfirming())
        m_model->start();
    else if (isSpace || m_model->cross())
        m_model->setCorner();
    else
        m_model->selectAll();
}

void ScreenRecorderSelectionView::moveByKey(QPointF direction, Qt::KeyboardModifiers modifiers) {
    const bool isShift = modifiers & Qt::ShiftModifier;
    const bool isControl = modifiers & Qt::ControlModifier;
    if (!m_model->isConfirming())
        m_model->moveCross(direction * (isShift || isControl ? manyPoints : 1));
    else if (isShift)
        m_model->resize(direction * (isControl ? manyPoints : 1));
    else
        m_model->move(direction * (isControl ? manyPoints : 1));
}

void ScreenRecorderSelectionView::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    look::preparePainter(painter);
    if (!m_frozen.isNull())
        painter.drawPixmap(event->rect(), m_frozen,
                           QRectF(event->rect().topLeft() * m_frozen.devicePixelRatio(),
                                  event->rect().size() * m_frozen.devicePixelRatio())
                               .toRect());
    // A part that is selected shows what will be recorded, untouched.
    const QRegion dark = QRegion(event->rect()) - (m_model->selection() ? QRegion(selection()) : QRegion());
    for (const QRect &part : dark)
        painter.fillRect(part, veil);
    if (m_model->cross())
        paintCross(painter);
    if (m_model->selection())
        paintSelection(painter); // its label over the lines
    if (m_model->isConfirming())
        look::paintPanelShadow(painter, m_card->geometry(), look::themeOf(this));
    else
        paintHints(painter);
}

/// Lines from edge to edge that show on any ground.
void ScreenRecorderSelectionView::paintCross(QPainter &painter) const {
    const QPoint cross = m_model->cross()->toPoint();
    for (const auto &[thick, colour] : {std::pair(3, QColor(0, 0, 0, 110)), std::pair(1, onPlate)}) {
        painter.fillRect(0, cross.y() - thick / 2, width(), thick, colour);
        painter.fillRect(cross.x() - thick / 2, 0, thick, height(), colour);
    }
}

void ScreenRecorderSelectionView::paintSelection(QPainter &painter) const {
    const QRectF area = selection();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 110), 1));
    painter.drawRect(area.adjusted(-2.5, -2.5, 2.5, 2.5));
    painter.setPen(QPen(onPlate, 2));
    painter.drawRect(area.adjusted(-1, -1, 1, 1));
    painter.setPen(Qt::NoPen);

    const QString words = m_model->sizeText();
    const double wide = std::ceil(look::lineWidth(words, look::TextRole::captionStrong)) + 2 * look::space::medium;
    QRectF label(area.center().x() - wide / 2, area.bottom() + labelGap, wide, labelHeight);
    if (label.bottom() > height() - 2) // no room under the area
        label.moveBottom(area.top() - labelGap);
    if (label.top() < 2)
        label.moveBottom(area.bottom() - labelGap);
    label.moveLeft(std::round(std::clamp(label.left(), 2.0, std::max(2.0, width() - wide - 2))));
    look::fillRounded(painter, label, label.height() / 2, plate);
    look::paintLine(painter, label, words, look::TextRole::captionStrong, onPlate, Qt::AlignHCenter);
}

void ScreenRecorderSelectionView::paintHints(QPainter &painter) const {
    std::vector<std::pair<QString, QColor>> lines{{cancelHint(), onPlateQuiet}};
    if (m_model->canStopRecording())
        lines.emplace_back(stopHint(), onPlate);
    if (m_model->cross())
        lines.emplace_back(returnHint(m_model->hasCorner()), onPlate);
    QRectF body(std::round((width() - hintWidth) / 2.0), std::round(height() * 0.2), hintWidth,
                hintHeight + moreHintHeight * int(lines.size() - 1));
    look::fillRounded(painter, body, look::radius::panel, plate);
    look::strokeHairline(painter, body, look::radius::panel, QColor(255, 255, 255, 40));
    QRectF line(body.left(), body.top() + 10, body.width(), 24);
    look::paintLine(painter, line, inDesktopWords(QStringLiteral("Drag to select area to record")),
                    look::TextRole::heading, onPlate, Qt::AlignHCenter);
    line.translate(0, 2);
    for (const auto &[words, colour] : lines) {
        line.translate(0, moreHintHeight);
        look::paintLine(painter, QRectF(line.x(), line.y(), line.width(), 20), words, look::TextRole::callout, colour,
                        Qt::AlignHCenter);
    }
}

} // namespace tavrine
