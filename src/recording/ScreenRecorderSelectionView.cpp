#include "recording/ScreenRecorderSelectionView.h"

#include "base/DesktopWords.h"
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
constexpr int stopHintHeight = 24; ///< more, with a recording under way
constexpr double manyPoints = 10;

QString cancelHint() {
    return inDesktopWords(QStringLiteral("Press ESC to cancel"));
}
QString stopHint() {
    return inDesktopWords(QStringLiteral("Press Space to stop the recording"));
}

} // namespace

ScreenRecorderSelectionView::ScreenRecorderSelectionView(std::shared_ptr<ScreenRecorderSelectionModel> model,
                                                         QPixmap frozen)
    : m_model(std::move(model)), m_frozen(std::move(frozen)), m_card(new RecordingSetupCardView(m_model, this)) {
    setAccessibleName(inDesktopWords(QStringLiteral("Drag to select area to record")));
    setAccessibleDescription(m_model->canStopRecording() ? stopHint() + QStringLiteral(". ") + cancelHint()
                                                         : cancelHint());
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
    if (m_card->isHidden() == m_model->isConfirming()) {
        m_card->setVisible(m_model->isConfirming());
        setFocus(); // its keys are the overlay's until Tab takes them to the card
        update();
    }
    placeCard();
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
    const double step = event->modifiers() & Qt::ControlModifier ? manyPoints : 1;
    QPointF by;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_model->isConfirming())
            m_model->start();
        else if (!m_grip)
            m_model->selectAll();
        return;
    case Qt::Key_Space:
        if (!m_grip)
            m_model->stopRecording();
        return;
    case Qt::Key_Left:
        by = {-step, 0};
        break;
    case Qt::Key_Right:
        by = {step, 0};
        break;
    case Qt::Key_Up:
        by = {0, -step};
        break;
    case Qt::Key_Down:
        by = {0, step};
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    if (event->modifiers() & Qt::ShiftModifier)
        m_model->resize(by);
    else
        m_model->move(by);
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
    if (m_model->selection())
        paintSelection(painter);
    if (m_model->isConfirming())
        look::paintPanelShadow(painter, m_card->geometry(), look::themeOf(this));
    else
        paintHints(painter);
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
    const double stopHeight = m_model->canStopRecording() ? stopHintHeight : 0;
    const QRectF body(std::round((width() - hintWidth) / 2.0), std::round(height() * 0.2), hintWidth,
                      hintHeight + stopHeight);
    look::fillRounded(painter, body, look::radius::panel, plate);
    look::strokeHairline(painter, body, look::radius::panel, QColor(255, 255, 255, 40));
    look::paintLine(painter, body.adjusted(0, 10, 0, -34 - stopHeight),
                    inDesktopWords(QStringLiteral("Drag to select area to record")), look::TextRole::heading, onPlate,
                    Qt::AlignHCenter);
    look::paintLine(painter, body.adjusted(0, 36, 0, -12 - stopHeight), cancelHint(), look::TextRole::callout,
                    onPlateQuiet, Qt::AlignHCenter);
    if (stopHeight > 0)
        look::paintLine(painter, body.adjusted(0, 36 + stopHeight, 0, -12), stopHint(), look::TextRole::callout,
                        onPlate, Qt::AlignHCenter);
}

} // namespace tavrine
