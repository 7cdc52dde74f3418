#include "utilities/awake/TimeFieldView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QLineEdit>
#include <QLocale>
#include <QPainter>
#include <QSignalBlocker>

#include <cmath>

namespace tavrine {
namespace {

constexpr int arrows = 16;
constexpr int padding = 16;

/// Without seconds, which some languages have in their short form.
QString format() {
    return QLocale().timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss"));
}

} // namespace

TimeField::TimeField(const QString &name, QWidget *parent) : QTimeEdit(parent) {
    setAccessibleName(inDesktopWords(name));
    setDisplayFormat(format());
    setFont(look::fontFor(look::TextRole::body));
    setFrame(false);
    setWrapping(true); // after the last minute of the day comes the first
    setKeyboardTracking(false);
    setAlignment(Qt::AlignCenter);
    lineEdit()->setFrame(false);
    connect(this, &QTimeEdit::timeChanged, this, [this] { Q_EMIT chosen(timeOfDay()); });
}

void TimeField::setTimeOfDay(TimeOfDay time) {
    const QSignalBlocker blocker(this);
    setTime({time.hour, time.minute});
}

QSize TimeField::sizeHint() const {
    const QFontMetricsF metrics(font());
    const QString widest = QLocale().toString(QTime(20, 58), format());
    return {int(std::ceil(metrics.horizontalAdvance(widest))) + padding + arrows, look::height::control};
}

bool TimeField::event(QEvent *event) {
    if (event->type() == QEvent::Polish || event->type() == QEvent::ParentChange)
        recolour();
    return QTimeEdit::event(event);
}

void TimeField::recolour() {
    const look::Theme &theme = look::themeOf(this);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::transparent);
    colours.setColor(QPalette::Text, theme.text);
    colours.setColor(QPalette::Highlight, theme.accent);
    colours.setColor(QPalette::HighlightedText, theme.onAccent);
    if (colours != palette())
        setPalette(colours);
}

/// The text is painted by the line within.
void TimeField::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    const QRectF body = QRectF(rect()).adjusted(1, 1, -1, -1);
    look::fillRounded(painter, body, look::radius::control, theme.field);
    look::strokeHairline(painter, body, look::radius::control, hasFocus() ? theme.accent : theme.outline);
    look::paintSymbol(painter, QRectF(width() - arrows - 2, 0, arrows, height()),
                      QStringLiteral("chevron.up.chevron.down"), look::symbolsize::small, theme.secondaryText);
}

} // namespace tavrine
