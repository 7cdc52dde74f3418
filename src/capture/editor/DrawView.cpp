#include "capture/editor/DrawView.h"

#include "base/DesktopWords.h"
#include "capture/editor/AnnotationRenderer.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/EraserRule.h"
#include "look/ArrowKeys.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTabletEvent>

#include <cmath>
#include <utility>

namespace tavrine {
namespace {

constexpr QSize fieldSize{220, 30};
constexpr float fieldOpacity = 0.92F;
constexpr int fieldMargin = 4;
constexpr double ringWidth = 3;
constexpr double frameGap = 4; // between what is selected and its frame
constexpr double manyPoints = 10;

// A field with a rounded frame that lets a little of the picture through.
class AnnotationField final : public QLineEdit {
public:
    AnnotationField(const DrawViewModel::TextField &field, QWidget *parent) : QLineEdit(parent) {
        setFrame(false);
        setFont(annotationFont(field.lineWidth));
        setTextMargins(fieldMargin, 0, fieldMargin, 0);
        const look::Theme &theme = look::themeOf(this);
        QPalette colours;
        colours.setColor(QPalette::Base, Qt::transparent);
        colours.setColor(QPalette::Window, Qt::transparent);
        colours.setColor(QPalette::Text, field.textColor);
        colours.setColor(QPalette::Highlight, theme.accent);
        colours.setColor(QPalette::HighlightedText, theme.onAccent);
        setPalette(colours);
        setAccessibleName(inDesktopWords(QStringLiteral("Text")));
        setGeometry(QRect(field.origin.toPoint(), fieldSize));
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        QColor ground = theme.surface;
        ground.setAlphaF(fieldOpacity);
        look::fillRounded(painter, rect(), look::radius::control, ground);
        look::strokeHairline(painter, rect(), look::radius::control, theme.secondaryText);
        painter.end();
        QLineEdit::paintEvent(event);
    }
};

DrawViewModel::Command commandOf(const QKeyEvent &event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return DrawViewModel::Command::insertNewline;
    case Qt::Key_Escape:
        return DrawViewModel::Command::cancelOperation;
    default:
        return DrawViewModel::Command::other;
    }
}

/// Whether the keyboard goes for a while only: to another window, a menu, the field of a text; or comes back from
/// there. Who works by keys still does.
bool isReturn(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::OtherFocusReason;
}

} // namespace

DrawView::DrawView(QWidget *parent)
    : QWidget(parent),
      m_model({[this](const QRectF &area) { redraw(area); },
               [this] {
                   showDrawings();
                   setCursorForTool();
               },
               [this](const DrawViewModel::TextField &field) { showTextField(field); }, [this] { removeTextField(); },
               [this] { setFocus(Qt::OtherFocusReason); }, [this](const QPointF &origin) { moveTextField(origin); }}) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(inDesktopWords(QStringLiteral("Canvas")));
    showSelection();
    setAttribute(Qt::WA_TabletTracking, false);
}

DrawView::~DrawView() {
    // The field would tell of the keyboard that it loses.
    if (m_field) {
        m_field->removeEventFilter(this);
        m_field->disconnect(this);
        delete m_field;
    }
}

void DrawView::setPicture(const PictureLevels &picture) {
    m_picture = picture;
    m_layer.setGround({}, {});
    setAttribute(Qt::WA_OpaquePaintEvent, !picture.isNull() && !picture.hasAlphaChannel());
    update();
}

void DrawView::updateCanvas(const DrawingCanvas &canvas) {
    m_model.setParent(canvas);
    setCursorForTool();
    showDrawings();
    if (!m_model.currentPoints().empty())
        update(); // the gesture may have another colour or width now
}

/// Told as well: the description follows what is selected.
void DrawView::showSelection() {
    const QString words = m_keys.words();
    setAccessibleDescription(
        !words.isEmpty() ? words
                         : inDesktopWords(QStringLiteral("Return draws, Tab goes through what is drawn, arrow keys "
                                                         "move it, Delete removes it, digits choose a tool")));
    update();
}

void DrawView::setCursorForTool() {
    const DrawingTool tool = m_model.parent() ? m_model.parent()->tool.get() : DrawingTool::pen;
    setMouseTracking(tool == DrawingTool::eraser);
    if (tool != DrawingTool::eraser)
        showEraserAt(std::nullopt);
    const Qt::CursorShape shape = tool == DrawingTool::text ? Qt::IBeamCursor : Qt::CrossCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

QRectF DrawView::eraserRing() const {
    if (!m_eraser)
        return {};
    const QSizeF reach(width() * eraserReach, height() * eraserReach);
    return {m_eraser->x() - reach.width(), m_eraser->y() - reach.height(), 2 * reach.width(), 2 * reach.height()};
}

void DrawView::showEraserAt(std::optional<QPointF> place) {
    const QRectF before = eraserRing();
    if (std::exchange(m_eraser, place) == place)
        return;
    for (const QRectF &ring : {before, eraserRing()})
        if (!ring.isEmpty())
            redraw(ring.adjusted(-ringWidth, -ringWidth, ringWidth, ringWidth));
}

void DrawView::showDrawings() {
    if (!m_model.parent() || m_layer.image().isNull())
        return update(); // there was no frame yet: it will show them all
    const double scale = m_layer.place().scale;
    for (const QRect &pixels : m_layer.show(m_model.parent()->drawings.get()))
        redraw(QRectF(pixels.x() / scale, pixels.y() / scale, pixels.width() / scale, pixels.height() / scale));
}

void DrawView::redraw(const QRectF &area) {
    update((area & QRectF(rect())).toAlignedRect().adjusted(-1, -1, 1, 1));
}

QRect DrawView::seen() const {
    return parentWidget() ? rect() & parentWidget()->rect().translated(-pos()) : rect();
}

QRect DrawView::pixelsSeen() const {
    const QRect points = seen();
    const double scale = devicePixelRatioF();
    return QRectF(QPointF(points.topLeft()) * scale, QSizeF(points.size()) * scale).toAlignedRect();
}

QImage DrawView::ground(const QRect &area) const {
    const bool isClear = m_picture.isNull() || m_picture.hasAlphaChannel();
    QImage ground(area.size(), isClear ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (isClear)
        ground.fill(Qt::transparent);
    const double scale = devicePixelRatioF();
    QPainter painter(&ground);
    painter.translate(-area.topLeft());
    m_picture.paint(painter, QRectF(QPointF(), QSizeF(size()) * scale), area, 1);
    return ground;
}

void DrawView::prepareLayer() {
    const double scale = devicePixelRatioF();
    const QRect seen = pixelsSeen();
    const AnnotationLayer::Place &kept = m_layer.place();
    if (!m_layer.image().isNull() && kept.canvas == size() && kept.scale == scale && kept.area.contains(seen))
        return;
    // A little more than shows, so that not every step of a picture that is moved paints all anew.
    const QRect whole(0, 0, int(std::ceil(width() * scale)), int(std::ceil(height() * scale)));
    const QRect area =
        seen.adjusted(-seen.width() / 4, -seen.height() / 4, seen.width() / 4, seen.height() / 4) & whole;
    m_layer.setGround(area.isEmpty() ? QImage() : ground(area), {size(), area, scale});
    if (m_model.parent())
        m_layer.show(m_model.parent()->drawings.get());
}

QImage DrawView::frameOf(const QRect &pixels, const DrawingPath &gesture) const {
    const AnnotationLayer::Place &place = m_layer.place();
    QImage frame = m_layer.image().copy(pixels.translated(-place.area.topLeft()));
    QPainter painter(&frame);
    painter.translate(-pixels.topLeft());
    painter.scale(place.scale, place.scale);
    renderDrawing(painter, gesture, gesture.points, false);
    return frame;
}

void DrawView::paintEvent(QPaintEvent *event) {
    prepareLayer();
    const AnnotationLayer::Place &place = m_layer.place();
    const double scale = place.scale;
    const QRect asked = event->region().boundingRect();
    const QRect pixels =
        QRectF(QPointF(asked.topLeft()) * scale, QSizeF(asked.size()) * scale).toAlignedRect() & place.area;
    if (pixels.isEmpty())
        return;
    QPainter painter(this);
    const QRectF target(QPointF(pixels.topLeft()) / scale, QSizeF(pixels.size()) / scale);
    // The gesture goes onto a copy of the pixels below, since a highlighter's colours depend on them.
    if (const std::optional<DrawingPath> gesture = m_model.gesture())
        painter.drawImage(target, frameOf(pixels, *gesture), QRect(QPoint(), pixels.size()));
    else
        painter.drawImage(target, m_layer.image(), pixels.translated(-place.area.topLeft()));
    paintSelection(painter);
    if (!m_eraser)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    for (const QPen &pen : {QPen(QColor(0, 0, 0, 150), ringWidth), QPen(Qt::white, 1)}) { // shows on any picture
        painter.setPen(pen);
        painter.drawEllipse(eraserRing());
    }
}

void DrawView::paintSelection(QPainter &painter) const {
    painter.setBrush(Qt::NoBrush);
    if (m_isReachedByTab && hasFocus()) {
        painter.setPen(QPen(look::themeOf(this).accent, ringWidth));
        const double half = ringWidth / 2.0;
        painter.drawRect(QRectF(seen()).adjusted(half, half, -half, -half));
    }
    const std::optional<DrawingPath> selected = m_keys.selected();
    if (!selected)
        return;
    const QRectF area =
        drawingBounds(*selected, pointsIn(*selected, size()), false).adjusted(-frameGap, -frameGap, frameGap, frameGap);
    painter.setPen(QPen(QColor(0, 0, 0, 180), 1));
    painter.drawRect(area);
    painter.setPen(QPen(Qt::white, 1, Qt::DashLine)); // shows on any picture
    painter.drawRect(area);
}

void DrawView::resizeEvent(QResizeEvent *event) {
    m_model.setBounds(size());
    QWidget::resizeEvent(event);
}

void DrawView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    beginGesture(event->position());
}

void DrawView::beginGesture(QPointF place) {
    if (std::exchange(m_isReachedByTab, false))
        update();
    if (m_keys.letGo())
        showSelection();
    m_model.mouseDown(place);
}

void DrawView::moveEvent(QMoveEvent *event) {
    if (m_isReachedByTab && hasFocus())
        update(); // the ring stands about what is seen
    QWidget::moveEvent(event);
}

void DrawView::mouseMoveEvent(QMouseEvent *event) {
    if (hasMouseTracking())
        showEraserAt(event->position());
    if (event->buttons() & Qt::LeftButton)
        m_model.mouseDragged(event->position());
}

void DrawView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_model.mouseUp();
}

void DrawView::leaveEvent(QEvent *event) {
    showEraserAt(std::nullopt);
    QWidget::leaveEvent(event);
}

// A pen draws as the mouse does, at its own finer resolution. Accepted, so that no mouse events are made of it.
void DrawView::tabletEvent(QTabletEvent *event) {
    if (event->type() == QEvent::TabletPress && event->button() == Qt::LeftButton) {
        m_isPenDown = true;
        beginGesture(event->position());
    } else if (event->type() == QEvent::TabletMove && m_isPenDown) {
        m_model.mouseDragged(event->position());
    } else if (event->type() == QEvent::TabletRelease && m_isPenDown) {
        m_isPenDown = false;
        m_model.mouseUp();
    }
    event->accept();
}

void DrawView::keyPressEvent(QKeyEvent *event) {
    const bool isCommand = event->modifiers() & (Qt::AltModifier | Qt::MetaModifier);
    if (isCommand || !handleKey(*event))
        return QWidget::keyPressEvent(event);
    showSelection();
}

bool DrawView::handleKey(const QKeyEvent &event) {
    if (isGestureUnderWay())
        return false;
    const bool isShift = event.modifiers() & Qt::ShiftModifier;
    const bool isControl = event.modifiers() & Qt::ControlModifier;
    if (const QPointF direction = look::arrowDirection(event.key()); !direction.isNull())
        return m_keys.step(isShift ? CanvasKeys::Step::resize : CanvasKeys::Step::move,
                           direction * (isControl ? manyPoints : 1));
    switch (event.key()) {
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        return m_keys.remove();
    case Qt::Key_Escape:
        return m_keys.letGo();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return !event.isAutoRepeat() && m_keys.enter(seen());
    default:
        return !isControl && chooseTool(event.key());
    }
}

bool DrawView::chooseTool(int key) {
    const int place = key - Qt::Key_1;
    if (!m_model.parent() || place < 0 || place >= int(drawingTools.size()))
        return false;
    const auto set = m_model.parent()->tool.set; // the canvas may be replaced by it
    set(drawingTools[size_t(place)].tool);
    return true;
}

void DrawView::focusInEvent(QFocusEvent *event) {
    if (!isReturn(event->reason()))
        m_isReachedByTab = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    showSelection(); // the typing of it may be over
    QWidget::focusInEvent(event);
}

void DrawView::focusOutEvent(QFocusEvent *event) {
    if (!isReturn(event->reason()))
        m_isReachedByTab = false;
    update();
    QWidget::focusOutEvent(event);
}

bool DrawView::focusNextPrevChild(bool next) {
    // The field asks here as well, for its own Tab.
    if (isGestureUnderWay())
        return true;
    if (hasFocus() && m_keys.selectNext(next)) {
        showSelection();
        return true;
    }
    if (hasFocus())
        showSelection();
    return QWidget::focusNextPrevChild(next);
}

void DrawView::showTextField(const DrawViewModel::TextField &field) {
    auto *edit = new AnnotationField(field, this);
    m_field = edit;
    connect(edit, &QLineEdit::textChanged, this,
            [this](const QString &string) { m_model.controlTextDidChange(string); });
    edit->installEventFilter(this);
    edit->show();
    edit->setFocus(Qt::OtherFocusReason);
    update();
}

void DrawView::moveTextField(const QPointF &origin) {
    if (m_field)
        m_field->move(origin.toPoint());
}

void DrawView::removeTextField() {
    QLineEdit *edit = m_field;
    m_field.clear();
    if (!edit)
        return;
    const bool hadFocus = edit->hasFocus();
    edit->removeEventFilter(this);
    edit->disconnect(this);
    edit->hide();
    edit->deleteLater(); // it may be in the middle of an event
    if (hadFocus)
        setFocus(Qt::OtherFocusReason);
    update();
}

bool DrawView::eventFilter(QObject *object, QEvent *event) {
    if (object != m_field)
        return QWidget::eventFilter(object, event);
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // Before a shortcut of the window takes them away.
        if (commandOf(*static_cast<QKeyEvent *>(event)) != DrawViewModel::Command::other) {
            event->accept();
            return true;
        }
        break;
    case QEvent::KeyPress:
        return m_model.doCommand(commandOf(*static_cast<QKeyEvent *>(event)));
    case QEvent::FocusOut: {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        // Another window or a menu brings the keyboard back. And a click on the canvas is an answer of its own.
        const bool isAway =
            reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
        const bool isClickHere = reason == Qt::MouseFocusReason && QApplication::focusWidget() == this;
        if (!isAway && !isClickHere)
            m_model.controlTextDidEndEditing();
        break;
    }
    default:
        break;
    }
    return QWidget::eventFilter(object, event);
}

} // namespace tavrine
