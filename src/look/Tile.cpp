#include "look/Tile.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrine::look {
namespace {

constexpr qreal disc = 26;
constexpr qreal discLeft = 8;
constexpr qreal discGap = 7;
constexpr qreal textRight = 4;
constexpr int plate = 28;

} // namespace

Tile::Tile(const QString &symbol, const QString &title, const QString &subtitle, Kind kind, QWidget *parent)
    : Control(parent), m_symbol(symbol), m_subtitle(inDesktopWords(subtitle)) {
    setText(inDesktopWords(title));
    setAccessibleDescription(m_subtitle);
    setCheckable(kind == Kind::toggle);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(this, &QAbstractButton::toggled, this, [this](bool isOn) {
        const double from = m_onPart;
        const double to = isOn ? 1 : 0;
        m_motion.start(duration::toggle, easeInOut, [this, from, to](double value) {
            m_onPart = from + (to - from) * value;
            update();
        });
    });
}

void Tile::setSubtitle(const QString &subtitle) {
    m_subtitle = inDesktopWords(subtitle);
    setAccessibleDescription(m_subtitle);
    update();
}

void Tile::setTitle(const QString &title) {
    setText(inDesktopWords(title));
    update();
}

qreal Tile::cornerRadius() const {
    return radius::card;
}

void Tile::paint(QPainter &painter) {
    const Theme &colours = theme();
    const QRectF body = rect();
    fillRounded(painter, body, radius::card, ground(colours.elevated));
    strokeHairline(painter, body, radius::card, colours.isDark ? colours.separator : colours.outline);

    // The title stands beside the disc and the line under both: a tile is half a menu wide.
    const qreal middle = body.center().y();
    const qreal top = m_subtitle.isEmpty() ? middle - disc / 2 : middle - 21;
    const QRectF circle(body.left() + discLeft, std::round(top), disc, disc);
    fillRounded(painter, circle, disc / 2, mixed(colours.control, colours.accent, m_onPart));
    paintSymbol(painter, circle, m_symbol, symbolsize::medium, m_onPart > 0.5 ? colours.onAccent : colours.text);

    const qreal left = circle.right() + discGap;
    paintLine(painter, QRectF(left, circle.top(), body.right() - textRight - left, disc), text(), TextRole::callout,
              colours.text);
    paintLine(painter, QRectF(circle.left() + 1, circle.bottom() + 2, body.right() - textRight - circle.left(), 15),
              m_subtitle, TextRole::caption, colours.secondaryText);
}

SettingsRow::SettingsRow(const QString &symbol, const QString &title, const QString &note, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_title(inDesktopWords(title)), m_note(inDesktopWords(note)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRole(*this, QAccessible::StaticText);
    setAccessibleName(m_title);
    setAccessibleDescription(m_note);
}

/// Its words are the control's from now on, so that they are read once.
void SettingsRow::setTrailing(QWidget *widget) {
    m_trailing = widget;
    widget->setParent(this);
    setRole(*this, QAccessible::Grouping);
    setAccessibleName({});
    setAccessibleDescription({});
    if (widget->accessibleName().isEmpty()) {
        const auto *control = qobject_cast<Control *>(widget);
        const bool hasOwnWords = control && !control->text().isEmpty() &&
                                 control->accessibleRole() != QAccessible::ButtonMenu; // whose text is its value
        if (!hasOwnWords)
            widget->setAccessibleName(m_title);
    }
    if (widget->accessibleDescription().isEmpty())
        widget->setAccessibleDescription(m_note);
    updateGeometry();
}

void SettingsRow::setNote(const QString &note) {
    m_note = inDesktopWords(note);
    updateGeometry();
    update();
}

void SettingsRow::setPlate(const QColor &colour) {
    m_plate = colour;
    update();
}

QSize SettingsRow::sizeHint() const {
    return {420, m_note.isEmpty() ? 48 : 58};
}

void SettingsRow::resizeEvent(QResizeEvent *event) {
    if (m_trailing) {
        const QSize size = m_trailing->sizeHint();
        m_trailing->setGeometry(
            QRect(QPoint(width() - space::medium - size.width(), (height() - size.height()) / 2), size));
    }
    QWidget::resizeEvent(event);
}

void SettingsRow::mouseReleaseEvent(QMouseEvent *event) {
    auto *button = qobject_cast<QAbstractButton *>(m_trailing);
    if (button && button->isCheckable() && event->button() == Qt::LeftButton && rect().contains(event->pos()))
        button->click();
}

void SettingsRow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    qreal left = space::medium;
    if (!m_symbol.isEmpty()) {
        const QRectF place(left, std::round((height() - plate) / 2.0), plate, plate);
        const bool isColoured = m_plate.isValid();
        paintSymbolPlate(painter, place, m_symbol, isColoured ? m_plate : theme.control,
                         isColoured ? QColor(Qt::white) : theme.text);
        left = place.right() + space::medium;
    }
    const qreal right = (m_trailing ? m_trailing->x() : width()) - space::medium;
    if (m_note.isEmpty()) {
        paintLine(painter, QRectF(left, 0, right - left, height()), m_title, TextRole::body, theme.text);
        return;
    }
    const qreal middle = height() / 2.0;
    paintLine(painter, QRectF(left, middle - 19, right - left, 18), m_title, TextRole::body, theme.text);
    paintLine(painter, QRectF(left, middle + 1, right - left, 16), m_note, TextRole::caption, theme.secondaryText);
}

Card::Card(QWidget *parent) : QWidget(parent) {
    setRole(*this, QAccessible::Grouping);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Card::add(QWidget *widget) {
    m_rows.push_back(widget);
    layout()->addWidget(widget);
}

void Card::setOrder(const std::vector<QWidget *> &widgets) {
    auto *column = static_cast<QVBoxLayout *>(layout());
    for (QWidget *widget : widgets) {
        column->removeWidget(widget);
        column->addWidget(widget);
    }
    m_rows = widgets;
    update();
}

void Card::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    paintCard(painter, rect(), theme);
    const QWidget *previous = nullptr;
    for (const QWidget *row : m_rows) {
        if (row->isHidden())
            continue;
        if (previous)
            paintSeparator(painter, QRectF(previous->geometry()).adjusted(space::medium, 0, -space::medium, 0), theme);
        previous = row;
    }
}

} // namespace tavrine::look
