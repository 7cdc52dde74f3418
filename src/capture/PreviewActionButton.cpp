#include "capture/PreviewActionButton.h"

#include "base/DesktopWords.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Text.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int buttonHeight = 54;
constexpr qreal symbolSide = 18;
constexpr qreal wheelSide = 15;
constexpr double turnsEachSecond = 1.1;

/// The font of small words, as much narrower as a long one needs to be read whole on the narrow buttons.
QFont fitting(const QString &text, qreal width) {
    QFont font = look::fontFor(look::TextRole::mini);
    const qreal wanted = QFontMetricsF(font).horizontalAdvance(text);
    if (wanted > width)
        font.setPixelSize(std::max(8, int(std::floor(QFontInfo(font).pixelSize() * width / wanted))));
    return font;
}

} // namespace

PreviewActionButton::PreviewActionButton(const QString &icon, const QString &title, QWidget *parent)
    : Control(parent), m_icon(icon) {
    setText(inDesktopWords(title));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PreviewActionButton::setIcon(const QString &icon) {
    m_icon = icon;
    update();
}

void PreviewActionButton::setTitle(const QString &title) {
    setText(inDesktopWords(title));
    setAccessibleName(text());
    update();
}

void PreviewActionButton::setSubtitle(const QString &subtitle) {
    m_subtitle = inDesktopWords(subtitle);
    update();
}

void PreviewActionButton::setActive(bool isActive) {
    m_isActive = isActive;
    update();
}

void PreviewActionButton::setProminentBlue(bool isProminent) {
    m_isProminentBlue = isProminent;
    update();
}

void PreviewActionButton::setLoading(bool isLoading) {
    if (isLoading == m_isLoading)
        return;
    m_isLoading = isLoading;
    if (isLoading)
        turn();
    else
        m_wheel.stop();
    update();
}

void PreviewActionButton::turn() {
    m_wheel.run([this](Seconds sinceLastFrame) {
        m_turn += sinceLastFrame.count() * turnsEachSecond;
        m_turn -= std::floor(m_turn);
        update();
        return isVisible();
    });
}

void PreviewActionButton::setButtonWidth(int width) {
    m_width = width;
    updateGeometry();
}

QSize PreviewActionButton::sizeHint() const {
    return {m_width, buttonHeight};
}

qreal PreviewActionButton::cornerRadius() const {
    return look::radius::row;
}

void PreviewActionButton::hideEvent(QHideEvent *event) {
    m_wheel.stop();
    Control::hideEvent(event);
}

void PreviewActionButton::paint(QPainter &painter) {
    const look::Theme &colours = theme();
    const QRectF body = rect();
    QColor ink = colours.text;
    if (m_isProminentBlue) {
        look::fillRounded(painter, body, cornerRadius(), ground(colours.accent));
        ink = colours.onAccent;
    } else {
        look::fillRounded(painter, body, cornerRadius(), ground(colours.control));
        if (m_isActive)
            ink = colours.successText;
    }
    if (!isEnabled())
        ink = look::mixed(ink, colours.surface, 0.55);

    const bool hasSubtitle = !m_subtitle.isEmpty();
    const QRectF top(body.left(), body.top() + (hasSubtitle ? 5 : 9), body.width(), symbolSide);
    if (m_isLoading) {
        const QRectF wheel(std::round(top.center().x() - wheelSide / 2), top.top() + (symbolSide - wheelSide) / 2,
                           wheelSide, wheelSide);
        QColor faint = ink;
        faint.setAlphaF(0.25F);
        painter.setPen(QPen(faint, 2));
        painter.drawEllipse(wheel);
        painter.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(wheel, int(-m_turn * 360 * 16) + 90 * 16, -100 * 16);
    } else {
        look::paintSymbol(painter, top, m_icon, symbolSide, ink);
    }
    const QRectF words(body.left() + 2, top.bottom() + 3, body.width() - 4, 16);
    painter.setPen(ink);
    painter.setFont(fitting(text(), words.width()));
    painter.drawText(words, Qt::AlignCenter | Qt::TextSingleLine, text());
    if (hasSubtitle)
        look::paintLine(painter, QRectF(words.left(), words.bottom() - 3, words.width(), 13), m_subtitle,
                        look::TextRole::mini, colours.secondaryText, Qt::AlignHCenter);
}

} // namespace tavrine
