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
constexpr int leastPadding = 6; // with less, neighbouring words read as one line
constexpr int gap = space::tiny;
constexpr int peek = 24; // of the neighbours of the chosen chip: enough to be seen and pressed

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
    const qreal edge = padding - (sizeHint().width() - width()) / 2.0;
    QRectF words = body.adjusted(edge, 0, -edge + 1, 0);
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

/// What the words leave is given up first, evenly; only then is a chip out of sight.
std::vector<int> ChipStrip::widths() const {
    const int count = int(m_chips.size());
    const int missing = std::max(0, sizeHint().width() - width());
    const int less = std::min((missing + count - 1) / count, 2 * (padding - leastPadding));
    std::vector<int> found;
    for (const Chip *chip : m_chips)
        found.push_back(chip->sizeHint().width() - less);
    return found;
}

void ChipStrip::place() {
    if (m_chips.empty())
        return;
    const std::vector<int> wide = widths();
    int x = 0;
    int chosenLeft = 0;
    for (size_t i = 0; i < m_chips.size(); ++i) {
        if (int(i) == m_current)
            chosenLeft = x;
        x += wide[i] + gap;
    }
    const int whole = x - gap;
    const int chosenRight = chosenLeft + wide[size_t(m_current)];
    const int beside = std::clamp((width() - (chosenRight - chosenLeft)) / 2, 0, peek + gap);
    m_shift = std::clamp(m_shift, chosenRight + beside - width(),
                         std::max(chosenLeft - beside, chosenRight + beside - width()));
    m_shift = std::clamp(m_shift, 0, std::max(0, whole - width()));
    x = -m_shift;
    for (size_t i = 0; i < m_chips.size(); ++i) {
        m_chips[i]->setGeometry(x, 0, wide[i], m_chips[i]->sizeHint().height());
        x += wide[i] + gap;
    }
}

} // namespace tavrine::look
