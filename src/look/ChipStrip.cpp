#include "look/ChipStrip.h"

#include "base/DesktopWords.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr int padding = 12;
constexpr int gap = space::tiny;

} // namespace

Chip::Chip(const QString &text, QWidget *parent) : Control(parent) {
    setText(inDesktopWords(text));
    setCheckable(true);
    setAutoExclusive(true);
}

void Chip::setSymbol(const QString &symbol) {
    m_symbol = symbol;
    updateGeometry();
    update();
}

QSize Chip::sizeHint() const {
    qreal width = lineWidth(text(), TextRole::callout) + 2 * padding;
    if (!m_symbol.isEmpty())
        width += symbolsize::medium + space::tiny;
    return {int(std::ceil(width)), height::chip};
}

void Chip::paint(QPainter &painter) {
    const Theme &colours = theme();
    const QRectF body = rect();
    const qreal corner = body.height() / 2;
    fillRounded(painter, body, corner, isChecked() ? ground(colours.accent) : ground(Qt::transparent));
    const QColor ink = isChecked() ? colours.onAccent : mixed(colours.secondaryText, colours.text, hoverPart());
    QRectF words = body.adjusted(padding, 0, -padding + 1, 0);
    if (!m_symbol.isEmpty()) {
        paintSymbol(painter, QRectF(words.left(), body.top(), symbolsize::medium, body.height()), m_symbol,
                    symbolsize::medium, ink);
        words.setLeft(words.left() + symbolsize::medium + space::tiny);
    }
    paintLine(painter, words, text(), TextRole::callout, ink, Qt::AlignLeft);
}

ChipStrip::ChipStrip(const QStringList &texts, QWidget *parent) : QWidget(parent) {
    for (const QString &text : texts) {
        auto *chip = new Chip(text, this);
        const int index = int(m_chips.size());
        chip->setChecked(index == 0);
        connect(chip, &QAbstractButton::clicked, this, [this, index] {
            if (index == m_current)
                return;
            setCurrent(index);
            Q_EMIT chosen(index);
        });
        m_chips.push_back(chip);
    }
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ChipStrip::setCurrent(int index) {
    if (index < 0 || index >= int(m_chips.size()))
        return;
    m_current = index;
    m_chips[size_t(index)]->setChecked(true);
    place();
}

QSize ChipStrip::sizeHint() const {
    int width = 0;
    for (const Chip *chip : m_chips)
        width += chip->sizeHint().width() + gap;
    return {std::max(0, width - gap), height::chip};
}

void ChipStrip::resizeEvent(QResizeEvent *event) {
    place();
    QWidget::resizeEvent(event);
}

void ChipStrip::place() {
    if (m_chips.empty())
        return;
    int x = 0;
    int chosenLeft = 0;
    for (size_t i = 0; i < m_chips.size(); ++i) {
        if (int(i) == m_current)
            chosenLeft = x;
        x += m_chips[i]->sizeHint().width() + gap;
    }
    const int whole = x - gap;
    const int chosenWidth = m_chips[size_t(m_current)]->sizeHint().width();
    m_shift = std::clamp(m_shift, chosenLeft + chosenWidth - width(), chosenLeft);
    m_shift = std::clamp(m_shift, 0, std::max(0, whole - width()));
    x = -m_shift;
    for (Chip *chip : m_chips) {
        chip->setGeometry(QRect(QPoint(x, 0), chip->sizeHint()));
        x += chip->width() + gap;
    }
}

} // namespace tavrine::look
