#include "panels/ToastView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "panels/ToastManager.h"

#include <QBitmap>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr qreal symbolSide = 20;
constexpr qreal gap = 10;
constexpr qreal sidePadding = 18;
constexpr qreal corner = 16;
constexpr qreal lineHeight = 18;
constexpr QColor green{0x34, 0xD1, 0x5B};
constexpr QColor ground{0x1C, 0x1C, 0x20, 0xF2};
constexpr QColor outline{0xFF, 0xFF, 0xFF, 0x38};
constexpr auto role = look::TextRole::bodyStrong;

} // namespace

ToastView::ToastView(const QString &message, const QString &icon, QWidget *parent)
    : QWidget(parent), m_message(inDesktopWords(message)), m_icon(icon) {
    setAccessibleName(m_message);
    setFixedSize(sizeHint());
}

QSize ToastView::sizeHint() const {
    return {int(ToastManager::width), int(ToastManager::height)};
}

qreal ToastView::widthForWords() const {
    return std::max(0.0, width() - 2 * sidePadding - symbolSide - gap);
}

QStringList ToastView::shownLines() const {
    const QFont font = look::fontFor(role);
    const qreal width = widthForWords();
    const QString all = look::oneLine(m_message, font, 4 * width); // more than two lines can show
    if (look::lineWidth(all, role) <= width)
        return {all};
    qsizetype end = -1; // of the words that fit into the first line
    for (qsizetype blank = all.indexOf(u' '); blank >= 0; blank = all.indexOf(u' ', blank + 1)) {
        if (look::lineWidth(all.left(blank), role) > width)
            break;
        end = blank;
    }
    if (end < 0)
        return {look::oneLine(m_message, font, width)};
    return {all.left(end), look::oneLine(all.mid(end + 1), font, width)};
}

void ToastView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (look::Look::composites() || window()->size() != size())
        return;
    // Nothing shines through without a compositor: the corners are cut off the window instead.
    QBitmap mask(size());
    mask.fill(Qt::color0);
    QPainter painter(&mask);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect(), corner, corner);
    painter.end();
    window()->setMask(mask);
}

void ToastView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    if (!look::Look::composites()) // the mask cuts pixels whole, so none may be half covered
        painter.fillRect(rect(), ground.rgb());
    look::fillRounded(painter, rect(), corner, ground);
    look::strokeHairline(painter, rect(), corner, outline);
    // Symbol and words stand in the middle together.
    const QStringList lines = shownLines();
    qreal words = 0;
    for (const QString &line : lines)
        words = std::max(words, std::min(look::lineWidth(line, role), widthForWords()));
    const qreal left = std::round((width() - symbolSide - gap - words) / 2);
    look::paintSymbol(painter, QRectF(left, 0, symbolSide, height()), m_icon, symbolSide, green);
    qreal top = std::round((height() - lineHeight * static_cast<qreal>(lines.size())) / 2);
    for (const QString &line : lines) {
        look::paintLine(painter, QRectF(left + symbolSide + gap, top, std::ceil(words) + 1, lineHeight), line, role,
                        Qt::white);
        top += lineHeight;
    }
}

} // namespace tavrine
