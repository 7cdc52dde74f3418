#include "capture/editor/DrawView.h"

#include "capture/editor/AnnotationRenderer.h"
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

namespace tavrine {
namespace {

constexpr QSize fieldSize{220, 30};
constexpr float fieldOpacity = 0.92F;
constexpr int fieldMargin = 4;

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
        setAccessibleName(QStringLiteral("Text"));
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

} // namespace

DrawView::DrawView(QWidget *parent)
    : QWidget(parent), m_model({[this](const QRectF &area) { redraw(area); },
                                [this] {
                                    showDrawings();
                                    setCursorForTool();
                                },
                                [this](const DrawViewModel::TextField &field) { showTextField(field); },
                                [this] { removeTextField(); }, [this] { setFocus(Qt::OtherFocusReason); }}) {
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(QStringLiteral("Canvas"));
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

void DrawView::setPicture(const QImage &picture) {
    m_picture = picture;
    m_layer.setGround({}, {}, 1);
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

void DrawView::setCursorForTool() {
    const bool isTyped = m_model.parent() && m_model.parent()->tool.get() == DrawingTool::text;
    const Qt::CursorShape shape = isTyped ? Qt::IBeamCursor : Qt::CrossCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

void DrawView::showDrawings() {
    if (!m_model.parent() || m_layer.image().isNull())
        return update(); // there was no frame yet: it will show them all
    const double scale = m_layer.scale();
    for (const QRect &pixels : m_layer.show(m_model.parent()->drawings.get()))
        redraw(QRectF(pixels.x() / scale, pixels.y() / scale, pixels.width() / scale, pixels.height() / scale));
}

void DrawView::redraw(const QRectF &area) {
    update((area & QRectF(rect())).toAlignedRect().adjusted(-1, -1, 1, 1));
}

QImage DrawView::frameOf(const QRect &pixels, const DrawingPath &gesture) const {
    QImage frame = m_layer.image().copy(pixels);
    QPainter painter(&frame);
    painter.translate(-pixels.topLeft());
    painter.scale(m_layer.scale(), m_layer.scale());
    renderDrawing(painter, gesture, gesture.points, false);
    return frame;
}

void DrawView::paintEvent(QPaintEvent *event) {
    const double scale = devicePixelRatioF();
    const QSize pixelSize(int(std::ceil(width() * scale)), int(std::ceil(height() * scale)));
    if (m_layer.pixelSize() != pixelSize || m_layer.scale() != scale) {
        m_layer.setGround(m_picture, pixelSize, scale);
        if (m_model.parent())
            m_layer.show(m_model.parent()->drawings.get());
    }
    QPainter painter(this);
    const std::optional<DrawingPath> gesture = m_model.gesture();
    QRect pixels(QPoint(), pixelSize);
    if (gesture) {
        const QRect area = event->region().boundingRect();
        pixels &=
            QRectF(area.x() * scale, area.y() * scale, area.width() * scale, area.height() * scale).toAlignedRect();
        if (pixels.isEmpty())
            return;
    }
    // The gesture goes onto a copy of the pixels below, since a highlighter's colours depend on them.
    QImage frame = gesture ? frameOf(pixels, *gesture) : m_layer.image();
    frame.setDevicePixelRatio(scale);
    painter.drawImage(QPointF(pixels.topLeft()) / scale, frame);
}

void DrawView::resizeEvent(QResizeEvent *event) {
    m_model.setBounds(size());
    QWidget::resizeEvent(event);
}

void DrawView::mousePressEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return event->ignore();
    m_model.mouseDown(event->position());
}

void DrawView::mouseMoveEvent(QMouseEvent *event) {
    if (event->buttons() & Qt::LeftButton)
        m_model.mouseDragged(event->position());
}

void DrawView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        m_model.mouseUp();
}

// A pen draws as the mouse does, at its own finer resolution. Accepted, so that no mouse events are made of it.
void DrawView::tabletEvent(QTabletEvent *event) {
    if (event->type() == QEvent::TabletPress && event->button() == Qt::LeftButton) {
        m_isPenDown = true;
        m_model.mouseDown(event->position());
    } else if (event->type() == QEvent::TabletMove && m_isPenDown) {
        m_model.mouseDragged(event->position());
    } else if (event->type() == QEvent::TabletRelease && m_isPenDown) {
        m_isPenDown = false;
        m_model.mouseUp();
    }
    event->accept();
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
