#include "look/Theme.h"

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr double textRatio = 4.5; // WCAG 2.1, level AA, for text of ordinary size

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(float(alpha));
    return colour;
}

// White on the fill wherever the fill can carry it: that is what people expect of a coloured button. A fill that is too
// light for white is darkened, a really light one (yellow) takes black.
void fill(QColor &ground, QColor &text) {
    if (contrast(ground, Qt::white) >= 2.2) {
        ground = readable(ground, Qt::white, textRatio);
        text = Qt::white;
    } else {
        text = QColor(0x16, 0x16, 0x18);
    }
}

void addAccent(Theme &theme, const QColor &accent) {
    // As quiet as words may be. The harder ground is the one nearer to them.
    theme.placeholder = readable(theme.tertiaryText, theme.surface, textRatio);
    theme.accent = accent;
    fill(theme.accent, theme.onAccent);
    fill(theme.danger, theme.onDanger);
    // The harder of the two grounds: the one nearer to the text.
    const QColor ground = theme.isDark ? theme.elevated : theme.surface;
    theme.accentText = readable(accent, ground, textRatio);
    // These two stand on controls, too.
    const QColor control = over(over(ground, theme.control), theme.hover);
    theme.dangerText = readable(theme.danger, control, textRatio);
    theme.successText = readable(theme.success, control, textRatio);
    // As strong as the words on it can bear.
    double strength = theme.isDark ? 0.30 : 0.13;
    do {
        theme.selection = withAlpha(theme.accent, strength);
        strength -= 0.01;
    } while (strength > 0.05 && contrast(theme.secondaryText, over(theme.surface, theme.selection)) < textRatio);
    theme.focusRing = withAlpha(readable(accent, theme.surface, 3.0), 0.9);
}

} // namespace

double contrast(const QColor &a, const QColor &b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor over(const QColor &ground, const QColor &top) {
    const float alpha = top.alphaF();
    return QColor::fromRgbF(ground.redF() + (top.redF() - ground.redF()) * alpha,
                            ground.greenF() + (top.greenF() - ground.greenF()) * alpha,
                            ground.blueF() + (top.blueF() - ground.blueF()) * alpha);
}

QColor mixed(const QColor &from, const QColor &to, double part) {
    const float p = float(std::clamp(part, 0.0, 1.0));
    // Premultiplied, or a fade towards transparent black would darken on the way.
    const float alpha = from.alphaF() + (to.alphaF() - from.alphaF()) * p;
    if (alpha <= 0)
        return Qt::transparent;
    const auto channel = [&](float a, float b) {
        const float value = (a * from.alphaF() * (1 - p) + b * to.alphaF() * p) / alpha;
        return std::clamp(value, 0.0F, 1.0F);
    };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()), alpha);
}

QColor readable(const QColor &colour, const QColor &ground, double ratio) {
    const QColor end = luminance(ground) > 0.18 ? QColor(Qt::black) : QColor(Qt::white);
    QColor result = QColor(colour.rgb());
    for (int step = 1; step <= 100 && contrast(result, ground) < ratio; ++step)
        result = QColor(mixed(QColor(colour.rgb()), end, step / 100.0).rgb());
    return result;
}

Theme lightTheme(const QColor &accent) {
    Theme theme;
    theme.isDark = false;
    theme.surface = QColor(0xF8, 0xF8, 0xFA);
    theme.elevated = QColor(0xFF, 0xFF, 0xFF);
    theme.field = QColor(0xFF, 0xFF, 0xFF);
    theme.control = QColor(0, 0, 0, 14);
    theme.hover = QColor(0, 0, 0, 11);
    theme.pressed = QColor(0, 0, 0, 24);
    theme.separator = QColor(0, 0, 0, 22);
    theme.outline = QColor(0, 0, 0, 30);
    theme.text = QColor(0x1C, 0x1C, 0x1F);
    theme.secondaryText = QColor(0x5C, 0x5C, 0x66);
    theme.tertiaryText = QColor(0x85, 0x85, 0x8F);
    theme.danger = QColor(0xDC, 0x2E, 0x2E);
    theme.success = QColor(0x1F, 0x9D, 0x4D);
    theme.warning = QColor(0xE0, 0x8A, 0x00);
    theme.shadow = QColor(0, 0, 0, 70);
    theme.toolTip = QColor(0x2A, 0x2A, 0x2E);
    theme.onToolTip = QColor(0xF5, 0xF5, 0xF7);
    addAccent(theme, accent);
    return theme;
}

Theme darkTheme(const QColor &accent) {
    Theme theme;
    theme.isDark = true;
    theme.surface = QColor(0x1D, 0x1D, 0x20);
    theme.elevated = QColor(0x29, 0x29, 0x2D);
    theme.field = QColor(0x16, 0x16, 0x18);
    theme.control = QColor(255, 255, 255, 20);
    theme.hover = QColor(255, 255, 255, 14);
    theme.pressed = QColor(255, 255, 255, 28);
    theme.separator = QColor(255, 255, 255, 24);
    theme.outline = QColor(255, 255, 255, 34);
    theme.text = QColor(0xF4, 0xF4, 0xF6);
    theme.secondaryText = QColor(0xB0, 0xB0, 0xBA);
    theme.tertiaryText = QColor(0x82, 0x82, 0x8C);
    theme.danger = QColor(0xF0, 0x4A, 0x47);
    theme.success = QColor(0x32, 0xC7, 0x69);
    theme.warning = QColor(0xFF, 0xB0, 0x2E);
    theme.shadow = QColor(0, 0, 0, 150);
    theme.toolTip = QColor(0x3A, 0x3A, 0x3F);
    theme.onToolTip = QColor(0xF5, 0xF5, 0xF7);
    addAccent(theme, accent);
    return theme;
}

} // namespace tavrine::look
