#include "look/Indicators.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine::look {

Spinner::Spinner(QWidget *parent) : QWidget(parent) {
    setRole(*this, QAccessible::Animation);
    setAccessibleName(inDesktopWords(QStringLiteral("Busy")));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Spinner::showEvent(QShowEvent *) {
    m_motion.run([this](Seconds passed) {
        m_turn = std::fmod(m_turn + passed.count() / 0.9, 1.0); // one turn in 0.9 s
        update();
        return true;
    });
}

void Spinner::hideEvent(QHideEvent *) {
    m_motion.stop();
}

void Spinner::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const qreal side = std::min(width(), height()) - 3;
    const QRectF circle((width() - side) / 2, (height() - side) / 2, side, side);
    painter.setPen(QPen(theme.control, 2));
    painter.drawEllipse(circle);
    painter.setPen(QPen(theme.secondaryText, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(circle, int(-m_turn * 360 * 16) + 90 * 16, -100 * 16);
}

ProgressBar::ProgressBar(QWidget *parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ProgressBar::setValue(double part) {
    m_value = std::isnan(part) ? 0 : std::clamp(part, 0.0, 1.0);
    const double from = m_shown;
    m_motion.start(Seconds(0.2), easeOut, [this, from](double value) {
        m_shown = from + (m_value - from) * value;
        update();
    });
}

void ProgressBar::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const qreal corner = height() / 2.0;
    fillRounded(painter, rect(), corner, theme.pressed);
    if (m_shown > 0)
        fillRounded(painter, QRectF(0, 0, std::max<qreal>(height(), width() * m_shown), height()), corner,
                    theme.accent);
}

HintBar::HintBar(std::vector<KeyHint> leading, std::vector<KeyHint> trailing, QWidget *parent)
    : QWidget(parent), m_leading(std::move(leading)), m_trailing(std::move(trailing)) {
    for (auto *hints : {&m_leading, &m_trailing}) {
        for (KeyHint &hint : *hints)
            hint.label = inDesktopWords(hint.label);
    }
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRole(*this, QAccessible::StaticText);
    nameItself();
}

void HintBar::setTrailing(std::vector<KeyHint> trailing) {
    m_trailing = std::move(trailing);
    nameItself();
    update();
}

void HintBar::nameItself() {
    QStringList words;
    for (const auto *hints : {&m_leading, &m_trailing}) {
        for (const KeyHint &hint : *hints)
            words.append(hint.key.isEmpty() ? hint.label : hint.key + u' ' + hint.label);
    }
    setAccessibleName(words.join(QStringLiteral(", ")));
}

QSize HintBar::sizeHint() const {
    return {200, height::footer};
}

size_t HintBar::fitting(const std::vector<KeyHint> &hints, qreal &room) {
    size_t count = 0;
    for (const KeyHint &hint : hints) {
        const qreal wide = keyHintWidth(hint) + space::large;
        if (wide > room)
            break;
        room -= wide;
        ++count;
    }
    return count;
}

void HintBar::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    // A hairline on top parts the bar from the list.
    paintSeparator(painter, QRectF(0, 0, width(), 1.0 / devicePixelRatioF()), theme);
    qreal room = width() - space::large;
    const size_t leading = fitting(m_leading, room);
    size_t trailing = leading < m_leading.size() ? 0 : fitting(m_trailing, room);
    qreal x = space::large;
    for (size_t i = 0; i < leading; ++i) {
        const qreal wide = keyHintWidth(m_leading[i]);
        paintKeyHint(painter, QRectF(x, 0, wide + 1, height()), m_leading[i], theme);
        x += wide + space::large;
    }
    for (x = width(); trailing > 0; --trailing) {
        const qreal wide = keyHintWidth(m_trailing[trailing - 1]);
        x -= wide + space::large;
        paintKeyHint(painter, QRectF(x, 0, wide + 1, height()), m_trailing[trailing - 1], theme);
    }
}

Label::Label(const QString &text, TextRole role, Tone tone, QWidget *parent)
    : QWidget(parent), m_text(inDesktopWords(text)), m_role(role), m_tone(tone) {
    setRole(*this, QAccessible::StaticText);
    setAccessibleName(m_text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Label::setText(const QString &text) {
    const QString shown = inDesktopWords(text);
    if (shown == m_text)
        return;
    m_text = shown;
    setAccessibleName(shown);
    updateGeometry();
    update();
}

void Label::setAlignment(Qt::Alignment alignment) {
    m_alignment = alignment;
    update();
}

QSize Label::sizeHint() const {
    return {int(std::ceil(lineWidth(m_text, m_role))) + 1, int(std::ceil(QFontMetricsF(fontFor(m_role)).height()))};
}

void Label::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const QColor colours[] = {theme.text,       theme.secondaryText, theme.tertiaryText,
                              theme.accentText, theme.dangerText,    theme.successText};
    paintLine(painter, rect(), m_text, m_role, colours[size_t(m_tone)], m_alignment);
}

} // namespace tavrine::look
