#include "utilities/awake/KeepAwakePartsView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "utilities/awake/KeepAwakeControlModel.h"

#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr qreal disc = 36;
constexpr int switchRowHeight = 34;
constexpr qreal textIndent = look::space::small + 2;
constexpr qreal noteIndent = look::symbolsize::small + look::space::small;
constexpr int noteFlags = int(Qt::AlignLeft) | int(Qt::AlignTop) | int(Qt::TextWordWrap);

} // namespace

KeepAwakeHeader::KeepAwakeHeader(QWidget *parent) : QWidget(parent) {
    setFixedHeight(int(disc));
    look::setRole(*this, QAccessible::StaticText);
}

void KeepAwakeHeader::set(bool isAwake, const QString &status) {
    m_isAwake = isAwake;
    m_status = inDesktopWords(status);
    setAccessibleName(inDesktopWords(QLatin1String(KeepAwakeControlModel::title)) + QStringLiteral(", ") + m_status);
    update();
}

void KeepAwakeHeader::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    const QRectF circle(0, 0, disc, disc);
    look::fillRounded(painter, circle, disc / 2, m_isAwake ? theme.accent : theme.control);
    look::paintSymbol(painter, circle, QLatin1String(KeepAwakeControlModel::symbol), look::symbolsize::large,
                      m_isAwake ? theme.onAccent : theme.text);
    const qreal left = circle.right() + 10;
    const qreal wide = width() - left;
    const qreal middle = height() / 2.0;
    look::paintLine(painter, QRectF(left, middle - 17, wide, 17),
                    inDesktopWords(QLatin1String(KeepAwakeControlModel::title)), look::TextRole::bodyStrong,
                    theme.text);
    look::paintLine(painter, QRectF(left, middle + 1, wide, 15), m_status, look::TextRole::caption,
                    m_isAwake ? theme.accentText : theme.secondaryText);
}

KeepAwakeModeButton::KeepAwakeModeButton(const KeepAwakeModeRow &row, QWidget *parent)
    : Control(parent), m_subtitle(inDesktopWords(QLatin1String(row.subtitle))) {
    setText(inDesktopWords(QLatin1String(row.label)));
    setAccessibleDescription(m_subtitle);
    setCheckable(true);
    setAutoExclusive(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void KeepAwakeModeButton::paint(QPainter &painter) {
    const look::Theme &colours = theme();
    look::fillRounded(painter, rect(), look::radius::control, ground(isChecked() ? colours.control : Qt::transparent));
    const qreal mark = look::symbolsize::medium;
    const qreal left = textIndent;
    const qreal wide = width() - 2 * left - mark - look::space::small;
    const qreal middle = height() / 2.0;
    look::paintLine(painter, QRectF(left, middle - 16, wide, 16), text(), look::TextRole::body, colours.text);
    look::paintLine(painter, QRectF(left, middle + 1, wide, 15), m_subtitle, look::TextRole::caption,
                    colours.secondaryText);
    if (isChecked())
        look::paintSymbol(painter, QRectF(width() - left - mark, 0, mark, height()), QStringLiteral("checkmark"), mark,
                          colours.accentText);
}

DisclosureButton::DisclosureButton(const QString &text, QWidget *parent) : Control(parent) {
    setText(inDesktopWords(text));
    setCheckable(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void DisclosureButton::paint(QPainter &painter) {
    const look::Theme &colours = theme();
    look::fillRounded(painter, rect(), look::radius::control, ground(Qt::transparent));
    const qreal mark = look::symbolsize::small;
    const qreal left = textIndent;
    look::paintLine(painter, QRectF(left, 0, width() - 2 * left - mark, height()), text(), look::TextRole::callout,
                    colours.secondaryText);
    look::paintSymbol(painter, QRectF(width() - left - mark, 0, mark, height()),
                      isChecked() ? QStringLiteral("chevron.up") : QStringLiteral("chevron.down"), mark,
                      colours.secondaryText);
}

SwitchRow::SwitchRow(const QString &title, QWidget *parent)
    : QWidget(parent), m_title(inDesktopWords(title)), m_toggle(new look::Toggle) {
    m_toggle->setAccessibleName(m_title);
    setFixedHeight(switchRowHeight);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addStretch();
    row->addWidget(m_toggle);
}

void SwitchRow::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        m_toggle->click();
}

void SwitchRow::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    look::paintLine(painter, QRectF(textIndent, 0, m_toggle->x() - 2 * textIndent, height()), m_title,
                    look::TextRole::body, look::themeOf(this).text);
}

NoteLine::NoteLine(const QString &text, int width, QWidget *parent) : QWidget(parent), m_text(inDesktopWords(text)) {
    look::setRole(*this, QAccessible::StaticText);
    setAccessibleName(m_text);
    const QFontMetricsF metrics(look::fontFor(look::TextRole::caption));
    const QRectF room(0, 0, width - noteIndent, 1000);
    const qreal height = metrics.boundingRect(room, noteFlags, m_text).height();
    setFixedSize(width, int(std::ceil(height)) + look::space::tiny);
}

void NoteLine::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    painter.setFont(look::fontFor(look::TextRole::caption));
    painter.setPen(theme.secondaryText);
    const QFontMetricsF metrics(painter.font());
    const QRectF line(0, look::space::hair, look::symbolsize::small, metrics.height());
    look::paintSymbol(painter, line, QStringLiteral("info.circle.fill"), look::symbolsize::small, theme.secondaryText);
    painter.drawText(QRectF(rect()).adjusted(noteIndent, look::space::hair, 0, 0), noteFlags, m_text);
}

} // namespace tavrine
