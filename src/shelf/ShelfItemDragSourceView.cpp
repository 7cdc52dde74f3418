#include "shelf/ShelfItemDragSourceView.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/ToolTip.h"
#include "ports/Dragging.h"
#include "shelf/NotchGeometry.h"
#include "shelf/NotchViewModel.h"
#include "shelf/ShelfPictures.h"

#include <QCursor>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrine {
namespace {

constexpr QRectF ground(3, 2, ShelfItemDragSourceView::slotWidth - 6, ShelfItemDragSourceView::tileHeight - 4);
constexpr double pictureSide = 58;
constexpr QRectF pictureBox((ShelfItemDragSourceView::slotWidth - pictureSide) / 2, 14, pictureSide, pictureSide);
constexpr double draggedSide = 50;
constexpr double pictureRadius = 6;
constexpr double smallest = 20; ///< of a picture that is seen by itself
constexpr double buttonSide = 18;
constexpr double buttonReach = 4; ///< beyond its edge
constexpr double nameTop = 80;
constexpr double lineHeight = 15;
constexpr double nameWidth = ShelfItemDragSourceView::slotWidth - 10;
constexpr auto nameRole = look::TextRole::caption;
constexpr qsizetype longestTip = 400;
const QColor highlight(255, 255, 255, 38); // an alpha of 0.15

/// On the tile as under the pointer.
QString symbolWithoutPicture() {
    return QStringLiteral("doc.text");
}

/// Where the first line ends: with a word where one ends in its second half, else with the last letter that fits.
qsizetype firstLineEnd(const QString &name, const QFontMetricsF &metrics, qreal width) {
    qsizetype end = 0;
    qsizetype wordEnd = 0;
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, name);
    for (auto next = letters.toNextBoundary(); next > 0; next = letters.toNextBoundary()) {
        if (metrics.horizontalAdvance(name.left(next)) > width)
            break;
        end = next;
        const QChar last = name.at(next - 1);
        if (last == u' ' || last == u'-' || last == u'_' || last == u'.')
            wordEnd = next;
    }
    return wordEnd * 2 > end ? wordEnd : std::max<qsizetype>(end, 1);
}

/// Where the extension begins, with its dot; the end of a name that has none. What follows a dot and is long, or no
/// word, is none, and neither is what a hidden file is called.
qsizetype extensionStart(const QString &name) {
    constexpr qsizetype longest = 12;
    const QStringView view(name);
    const auto dot = view.lastIndexOf(u'.');
    const QStringView extension = view.mid(dot + 1);
    if (dot <= 0 || extension.isEmpty() || extension.size() > longest ||
        !std::all_of(extension.begin(), extension.end(), [](QChar each) { return each.isLetterOrNumber(); }))
        return name.size();
    const QStringView packed(u".tar");
    return dot > packed.size() && view.first(dot).endsWith(packed) ? dot - packed.size() : dot;
}

/// Without its middle, and with its whole extension where that leaves room for a letter or two.
QString elided(const QString &line, const QFontMetricsF &metrics, qreal width) {
    if (metrics.horizontalAdvance(line) <= width)
        return line;
    const auto start = extensionStart(line);
    const QString extension = line.mid(start);
    const qreal room = width - metrics.horizontalAdvance(extension);
    const QString stem = metrics.elidedText(line.first(start), Qt::ElideMiddle, room);
    const QString whole = stem + extension;
    if (extension.isEmpty() || stem.isEmpty() || metrics.horizontalAdvance(whole) > width)
        return metrics.elidedText(line, Qt::ElideMiddle, width);
    return whole;
}

bool isCommand(Qt::KeyboardModifiers modifiers) {
    return modifiers & (Qt::ControlModifier | Qt::MetaModifier);
}

} // namespace

QStringList tileLines(const QString &name, const QFont &font, qreal width) {
    const QFontMetricsF metrics(font);
    // No more of it than could ever show is measured.
    QString shown = name.size() > 400 ? name.left(200) + QChar(0x2026) + name.right(120) : name;
    shown.replace(u'\n', u' ');
    if (metrics.horizontalAdvance(shown) <= width)
        return {shown};
    const auto end = std::min(firstLineEnd(shown, metrics, width), extensionStart(shown));
    return {shown.left(end).trimmed(), elided(shown.mid(end).trimmed(), metrics, width)};
}

QString wholeName(const ShelfItem &item) {
    if (!item.text)
        return displayName(item);
    const QString text = item.text->left(longestTip).trimmed();
    return item.text->size() > longestTip ? text + QChar(0x2026) : text;
}

ShelfItemDragSourceView::ShelfItemDragSourceView(Parts parts, QWidget *parent)
    : QWidget(parent), m_parts(std::move(parts)) {
    setFixedSize(slotWidth, tileHeight);
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
}

void ShelfItemDragSourceView::setItem(const ShelfItem &item) {
    if (item.id != m_item.id) {
        m_mouseDownPoint.reset();
        m_isButtonPressed = false;
    }
    m_item = item;
    m_name = displayName(item);
    if (item.type == ItemType::text)
        m_name = m_name.simplified();
    update();
}

void ShelfItemDragSourceView::setCurrent(bool isCurrent) {
    if (std::exchange(m_isCurrent, isCurrent) != isCurrent)
        update();
}

void ShelfItemDragSourceView::setArrived(double part) {
    if (std::exchange(m_arrived, part) != part)
        update();
}

QRectF ShelfItemDragSourceView::removeButton() const {
    return {ground.right() - buttonSide - 3, ground.top() + 3, buttonSide, buttonSide};
}

bool ShelfItemDragSourceView::isOnRemoveButton(const QPointF &place) const {
    return isRemoveButtonVisible() &&
           removeButton().adjusted(-buttonReach, -buttonReach, buttonReach, buttonReach).contains(place);
}

void ShelfItemDragSourceView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    if (m_arrived != 1) { // it grows out of its own middle
        painter.setOpacity(std::clamp(m_arrived, 0.0, 1.0));
        const double scale = 0.6 + 0.4 * m_arrived;
        painter.translate(pictureBox.center());
        painter.scale(scale, scale);
        painter.translate(-pictureBox.center());
    }
    if (m_isHovered)
        look::fillRounded(painter, ground, look::radius::card, highlight);
    paintPicture(painter);
    paintName(painter);
    if (m_isCurrent)
        look::paintFocusRing(painter, ground.adjusted(3, 3, -3, -3), look::radius::card - 3, look::themeOf(this));
    if (isRemoveButtonVisible())
        paintRemoveButton(painter);
}

void ShelfItemDragSourceView::paintPicture(QPainter &painter) {
    const QPixmap picture = m_parts.pictures.picture(m_item, pictureSide, devicePixelRatioF());
    if (picture.isNull()) {
        look::paintSymbol(painter, pictureBox, symbolWithoutPicture(), 44, QColor(255, 255, 255, 225));
        return;
    }
    const QSizeF size = picture.deviceIndependentSize();
    const QRectF place(QPointF(std::round(pictureBox.center().x() - size.width() / 2),
                               std::round(pictureBox.center().y() - size.height() / 2)),
                       size);
    // What fills its whole rectangle is a picture, which has round corners; an icon has a shape of its own.
    if (picture.hasAlphaChannel()) {
        painter.drawPixmap(place.topLeft(), picture);
        return;
    }
    // One that is hardly there stands on a ground.
    if (std::min(size.width(), size.height()) < smallest)
        look::fillRounded(painter, pictureBox.adjusted(4, 4, -4, -4), pictureRadius, QColor(255, 255, 255, 30));
    painter.save();
    QPainterPath corners;
    const double corner = std::min({pictureRadius, size.width() / 4, size.height() / 4});
    corners.addRoundedRect(place, corner, corner);
    painter.setClipPath(corners, Qt::IntersectClip);
    painter.drawPixmap(place.topLeft(), picture);
    painter.restore();
    if (size.width() > 2 * pictureRadius && size.height() > 2 * pictureRadius)
        look::strokeHairline(painter, place, pictureRadius, QColor(255, 255, 255, 60));
}

void ShelfItemDragSourceView::paintName(QPainter &painter) {
    const QStringList lines = tileLines(m_name, look::fontFor(nameRole), nameWidth);
    for (int line = 0; line < lines.size(); ++line)
        look::paintLine(painter,
                        QRectF((slotWidth - nameWidth) / 2, nameTop + line * lineHeight, nameWidth, lineHeight),
                        lines.at(line), nameRole, QColor(255, 255, 255, 235), Qt::AlignHCenter);
}

void ShelfItemDragSourceView::paintRemoveButton(QPainter &painter) {
    const QRectF button = removeButton();
    const QColor fill = m_isButtonPressed ? QColor(0x90, 0x90, 0x96)
                        : m_isOnButton    ? QColor(0xF0, 0xF0, 0xF4)
                                          : QColor(0xC4, 0xC4, 0xCA);
    look::fillRounded(painter, button.adjusted(-1.5, -1.5, 1.5, 1.5), buttonSide, Qt::black);
    look::fillRounded(painter, button, buttonSide / 2, fill);
    look::paintSymbol(painter, button, QStringLiteral("xmark"), 10, Qt::black);
}

void ShelfItemDragSourceView::hoverButton(const QPointF &place) {
    const bool isOn = isOnRemoveButton(place);
    if (std::exchange(m_isOnButton, isOn) != isOn)
        update();
}

void ShelfItemDragSourceView::enterEvent(QEnterEvent *event) {
    m_isHovered = true;
    hoverButton(event->position());
    update();
}

/// A tile that slides away under a pointer that rests is left without being told.
void ShelfItemDragSourceView::moveEvent(QMoveEvent *event) {
    QWidget::moveEvent(event);
    if (m_isHovered && !rect().contains(mapFromGlobal(QCursor::pos())))
        leaveEvent(nullptr);
}

void ShelfItemDragSourceView::leaveEvent(QEvent *) {
    m_isHovered = m_isOnButton = false;
    look::ToolTip::hide();
    update();
}

/// Whatever else is held on the keyboard, a press is a press.
void ShelfItemDragSourceView::mousePressEvent(QMouseEvent *event) {
    look::ToolTip::hide();
    if (event->button() != Qt::LeftButton)
        return;
    if (isOnRemoveButton(event->position())) {
        m_isButtonPressed = true;
        update();
        return;
    }
    m_mouseDownPoint = event->position();
    m_didStartDragging = false;
}

void ShelfItemDragSourceView::mouseMoveEvent(QMouseEvent *event) {
    hoverButton(event->position());
    if (m_didStartDragging || !m_mouseDownPoint || !(event->buttons() & Qt::LeftButton))
        return;
    const QPointF way = event->position() - *m_mouseDownPoint;
    if (std::hypot(way.x(), way.y()) > notch::dragStartDistance)
        startDragging();
}

void ShelfItemDragSourceView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_mouseDownPoint.reset();
    const bool wasPressed = std::exchange(m_isButtonPressed, false);
    update();
    if (wasPressed && isOnRemoveButton(event->position()) && m_parts.viewModel)
        m_parts.viewModel->removeItem(m_item.id);
}

void ShelfItemDragSourceView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (isOnRemoveButton(event->position())) { // the second of two quick presses on neighbours
        mousePressEvent(event);
        return;
    }
    m_parts.open(m_item);
}

/// As large as what is in it: on a desktop that shows no window through another, what is transparent is black.
QPixmap ShelfItemDragSourceView::draggingImage() const {
    const qreal scale = devicePixelRatioF();
    const QPixmap picture = m_parts.pictures.picture(m_item, pictureSide, scale);
    const QSizeF frame(draggedSide, draggedSide);
    const QSizeF size = picture.isNull() ? frame : picture.deviceIndependentSize().scaled(frame, Qt::KeepAspectRatio);
    QPixmap image((size * scale).toSize().expandedTo(QSize(1, 1)));
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    look::preparePainter(painter);
    const QRectF whole({}, image.deviceIndependentSize());
    if (picture.isNull())
        look::paintSymbol(painter, whole, symbolWithoutPicture(), draggedSide - 6, QColor(0x6A, 0x6E, 0x78));
    else
        painter.drawPixmap(whole, picture, picture.rect());
    return image;
}

void ShelfItemDragSourceView::startDragging() {
    DraggedItem dragged{.url = m_item.type == ItemType::file ? m_item.url : std::nullopt,
                        .string = m_item.type == ItemType::text ? m_item.text : std::nullopt,
                        .image = m_item.type == ItemType::image ? m_item.image : std::nullopt,
                        .draggingImage = {},
                        .hotSpot = {}};
    if (!dragged.url && !dragged.string && !dragged.image)
        return;
    m_didStartDragging = true;
    update();
    dragged.draggingImage = draggingImage();
    // It starts in the middle of the tile, wherever on that the pointer is.
    const QSizeF shown = dragged.draggingImage.deviceIndependentSize();
    dragged.hotSpot = (*m_mouseDownPoint - QRectF(rect()).center() + QRectF({}, shown).center()).toPoint();
    if (look::Look::moves() && look::Look::composites())
        dragged.returnTime = notch::dragReturnDuration;
    const bool isFile = m_item.type == ItemType::file;
    const auto mask = [isFile, &dragging = m_parts.dragging] {
        return isFile && isCommand(dragging.heldModifiers()) ? dragOperation::move : dragOperation::copy;
    };
    // The tile may show another item, or be gone, when the drag has ended.
    const ShelfItem item = m_item;
    const QPointer<NotchViewModel> viewModel = m_parts.viewModel;
    const QPointer<ShelfItemDragSourceView> self(this);
    const quint32 operation = m_parts.dragging.beginDragging(*this, dragged, mask);
    if (self) {
        m_mouseDownPoint.reset();
        m_didStartDragging = false;
        m_isHovered = underMouse();
        update();
    }
    if (viewModel && isFile && (operation & dragOperation::move))
        viewModel->removeAfterMove(item, *item.url, notch::moveAttempts);
}

bool ShelfItemDragSourceView::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && !m_mouseDownPoint) {
        look::ToolTip::show(this, wholeName(m_item), rect());
        return true;
    }
    return QWidget::event(event);
}

} // namespace tavrine
