#include "look/Tile.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr qreal disc = 26;
constexpr qreal discLeft = 8;
constexpr qreal discGap = 7;
constexpr qreal textRight = 4;
constexpr qreal titleLeading = 14; // of a title in two lines
constexpr int plate = 28;
constexpr int titleLine = 18;
constexpr int noteLine = 16;
constexpr int wordsGap = 2;
constexpr int wordsMargin = 11;   // over and under a title with its note
constexpr int shortestNote = 180; // beside a control; a narrower column is no pleasure to read
constexpr int wrapping = int(Qt::AlignLeft) | int(Qt::AlignTop) | int(Qt::TextWordWrap);

/// Of words in a column, whose single line has a fixed height.
int heightOfWords(const QString &words, TextRole role, int width, int line) {
    if (words.isEmpty())
        return 0;
    if (lineWidth(words, role) <= width)
        return line;
    return QFontMetrics(fontFor(role)).boundingRect(QRect(0, 0, width, 10000), wrapping, words).height();
}

void paintWords(QPainter &painter, const QRect &place, const QString &words, TextRole role, const QColor &colour) {
    if (lineWidth(words, role) <= place.width()) {
        paintLine(painter, place, words, role, colour);
        return;
    }
    painter.setFont(fontFor(role));
    painter.setPen(colour);
    painter.drawText(place, wrapping, words);
}

/// Parted at a blank where one line is too narrow, with as much as fits in the first.
QStringList inTwoLines(const QString &words, TextRole role, qreal width) {
    qsizetype end = -1;
    if (lineWidth(words, role) > width) {
        for (qsizetype blank = words.indexOf(u' '); blank >= 0; blank = words.indexOf(u' ', blank + 1)) {
            if (lineWidth(words.left(blank), role) <= width)
                end = blank;
        }
    }
    return end < 0 ? QStringList{words} : QStringList{words.left(end), words.mid(end + 1)};
}

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

    const Places at = places();
    fillRounded(painter, at.disc, disc / 2, mixed(colours.control, colours.accent, m_onPart));
    paintSymbol(painter, at.disc, m_symbol, symbolsize::medium, m_onPart > 0.5 ? colours.onAccent : colours.text);
    const Title title = this->title(at.title.width());
    QRectF line(at.title.left(), at.title.center().y() - titleLeading * qreal(title.lines.size()) / 2, at.title.width(),
                titleLeading);
    for (const QString &words : title.lines) {
        paintLine(painter, line, words, title.role, colours.text);
        line.translate(0, titleLeading);
    }
    paintLine(painter, at.subtitle, m_subtitle, TextRole::caption, colours.secondaryText);
}

/// The title stands beside the disc and the line under both: a tile is half a menu wide.
Tile::Places Tile::places() const {
    const QRectF body = rect();
    const qreal middle = body.center().y();
    const qreal top = m_subtitle.isEmpty() ? middle - disc / 2 : middle - 21;
    const QRectF circle(body.left() + discLeft, std::round(top), disc, disc);
    const qreal left = circle.right() + discGap;
    return {circle, QRectF(left, circle.top(), body.right() - textRight - left, disc),
            QRectF(circle.left() + 1, circle.bottom() + 2, body.right() - textRight - circle.left(), 15)};
}

Tile::Title Tile::title(qreal width) const {
    for (const TextRole role : {TextRole::callout, TextRole::caption, TextRole::mini}) {
        const QStringList lines = inTwoLines(text(), role, width);
        if (std::ranges::all_of(lines, [&](const QString &line) { return lineWidth(line, role) <= width; }))
            return {lines, role, false};
    }
    return {inTwoLines(text(), TextRole::callout, width), TextRole::callout, true};
}

bool Tile::isCut() const {
    const Places at = places();
    return title(at.title.width()).isCut || lineWidth(m_subtitle, TextRole::caption) > at.subtitle.width();
}

bool Tile::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip) {
        const QString note = m_subtitle.isEmpty() ? QString() : u'\n' + m_subtitle;
        setToolTip(isCut() ? text() + note : QString());
    }
    return Control::event(event);
}

SettingsRow::SettingsRow(const QString &symbol, const QString &title, const QString &note, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_title(inDesktopWords(title)), m_note(inDesktopWords(note)) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum); // higher than its hint where it wraps
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
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

SettingsRow::Places SettingsRow::places(int width) const {
    const int left = space::medium + (m_symbol.isEmpty() ? 0 : plate + space::medium);
    const int whole = std::max(1, width - left - space::medium);
    const QSize control = m_trailing ? m_trailing->sizeHint().boundedTo({whole, 10000}) : QSize(0, 0);
    const int beside = m_trailing ? whole - control.width() - space::medium : whole;
    const int needed =
        std::max(int(std::ceil(lineWidth(m_title, TextRole::body))),
                 m_note.isEmpty() ? 0 : std::min(shortestNote, int(lineWidth(m_note, TextRole::caption))));
    const bool isUnder = m_trailing && beside < std::min(needed, whole);
    const int wide = isUnder ? whole : beside;
    const int title = heightOfWords(m_title, TextRole::body, wide, titleLine);
    const int note = heightOfWords(m_note, TextRole::caption, wide, noteLine);
    const int words = title + (note > 0 ? wordsGap + note : 0);
    const int end = isUnder ? words + space::small + control.height() : words;
    Places found;
    found.height = std::max(sizeHint().height(), end + 2 * wordsMargin);
    const int top = (found.height - end) / 2 - (note > 0 && !isUnder ? 1 : 0);
    found.title = {left, top, wide, title};
    found.note = {left, top + title + wordsGap, wide, note};
    found.trailing =
        isUnder
            ? QRect(QPoint(left, top + words + space::small), control)
            : QRect(QPoint(width - space::medium - control.width(), (found.height - control.height()) / 2), control);
    return found;
}

void SettingsRow::resizeEvent(QResizeEvent *event) {
    if (m_trailing)
        m_trailing->setGeometry(places(width()).trailing);
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
    if (!m_symbol.isEmpty()) {
        const QRectF place(space::medium, std::round((height() - plate) / 2.0), plate, plate);
        const bool isColoured = m_plate.isValid();
        paintSymbolPlate(painter, place, m_symbol, isColoured ? m_plate : theme.control,
                         isColoured ? QColor(Qt::white) : theme.text);
    }
    const Places places = this->places(width());
    paintWords(painter, places.title, m_title, TextRole::body, theme.text);
    paintWords(painter, places.note, m_note, TextRole::caption, theme.secondaryText);
}

Card::Card(QWidget *parent) : QWidget(parent) {
    setRole(*this, QAccessible::Grouping);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum); // as high as its rows, whose words may wrap
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
