#include "look/PillView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QGraphicsOpacityEffect>
#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr int pillHeight = 44;
constexpr int shadowReach = 4;
constexpr Seconds fade{0.18};

} // namespace

PillView::PillView(const QString &symbol, const QString &text, QWidget *parent)
    : QWidget(parent), m_symbol(symbol), m_text(inDesktopWords(text)) {
    setAccessibleName(m_text);
    hide();
}

look::Button *PillView::addButton(const QString &text, look::ButtonStyle style, const QString &symbol) {
    auto *button = new look::Button(text, style, this);
    button->setSymbol(symbol);
    m_buttons.push_back(button);
    place();
    return button;
}

void PillView::setShown(bool isShown) {
    if (std::exchange(m_isShown, isShown) == isShown)
        return;
    const double from = isVisible() ? m_opacity : 0;
    if (isShown)
        show();
    raise();
    setAttribute(Qt::WA_TransparentForMouseEvents, !isShown);
    auto *effect = new QGraphicsOpacityEffect(this); // only while it fades: it costs a picture for each painting
    setGraphicsEffect(effect);
    effect->setOpacity(from);
    m_motion.start(
        fade, look::easeOut,
        [this, effect, from, isShown](double part) {
            m_opacity = from + ((isShown ? 1 : 0) - from) * part;
            effect->setOpacity(m_opacity);
        },
        [this, isShown] {
            setGraphicsEffect(nullptr);
            setVisible(isShown);
        });
}

QSize PillView::sizeHint() const {
    double width = look::space::large + look::lineWidth(m_text, look::TextRole::bodyStrong) + look::space::medium;
    if (!m_symbol.isEmpty())
        width += look::symbolsize::medium + look::space::small;
    for (const look::Button *button : m_buttons)
        width += button->sizeHint().width() + look::space::small;
    return {int(std::ceil(width)) + 2 * shadowReach, pillHeight + 2 * shadowReach};
}

void PillView::place() {
    int right = width() - shadowReach - look::space::small;
    for (auto button = m_buttons.rbegin(); button != m_buttons.rend(); ++button) {
        const QSize size = (*button)->sizeHint();
        (*button)->setGeometry(QRect(QPoint(right - size.width(), (height() - size.height()) / 2), size));
        right -= size.width() + look::space::small;
    }
}

void PillView::resizeEvent(QResizeEvent *) {
    place();
}

void PillView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    const QRectF body = QRectF(rect()).adjusted(shadowReach, shadowReach, -shadowReach, -shadowReach);
    const double corner = body.height() / 2;
    for (int i = shadowReach; i > 0; --i)
        look::fillRounded(painter, body.adjusted(-i, -i + 1, i, i), corner + i, QColor(0, 0, 0, theme.isDark ? 34 : 6));
    look::fillRounded(painter, body, corner, theme.elevated);
    look::strokeHairline(painter, body, corner, theme.outline);
    double left = body.left() + look::space::large;
    if (!m_symbol.isEmpty()) {
        look::paintSymbol(painter, QRectF(left, body.top(), look::symbolsize::medium, body.height()), m_symbol,
                          look::symbolsize::medium, theme.secondaryText);
        left += look::symbolsize::medium + look::space::small;
    }
    const double right = m_buttons.empty() ? body.right() - look::space::small : m_buttons.front()->x();
    look::paintLine(painter, QRectF(left, body.top(), std::max(right - left - look::space::tiny, 0.0), body.height()),
                    m_text, look::TextRole::bodyStrong, theme.text);
}

} // namespace tavrine
