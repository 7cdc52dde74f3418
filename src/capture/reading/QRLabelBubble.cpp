#include "capture/reading/QRLabelBubble.h"

#include "base/DesktopWords.h"
#include "capture/reading/QRResultModel.h"
#include "capture/reading/ReadingTexts.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "ports/UrlOpener.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int bubbleHeight = 28;
constexpr double widest = 196; // bubbles stand 100 points from the picture's edges by their centre
constexpr double symbolSide = 14;
constexpr double padding = look::space::medium - 2;

QString utf8Text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

} // namespace

QRLabelBubble::QRLabelBubble(const QString &words, bool isURL, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
                             QWidget *parent)
    : Control(parent), m_text(words), m_isURL(isURL), m_copy(pasteboard, time, qrResult::bubbleCopiedShown) {
    setToolTip(utf8Text(isURL ? readingTexts::openInBrowser : readingTexts::copyToClipboard));
    setAccessibleName(words.left(200));
    setCursor(Qt::PointingHandCursor);
    connect(this, &QAbstractButton::clicked, this, [this, opener = &urlOpener] {
        if (m_isURL)
            opener->openUrl(QUrl(m_text));
        else
            m_copy.copy(m_text);
    });
    connect(&m_copy, &CopyAction::isCopiedChanged, this, [this] { update(); });
}

QString QRLabelBubble::label() const {
    return isCopied() ? inDesktopWords(utf8Text(readingTexts::copiedWithMark)) : m_text;
}

QSize QRLabelBubble::sizeHint() const {
    const double frame = 2 * padding + symbolSide + look::space::tiny + 2;
    const QString shown = look::oneLine(m_text, look::fontFor(look::TextRole::callout), widest - frame);
    const double words =
        std::max(look::lineWidth(shown, look::TextRole::callout),
                 look::lineWidth(inDesktopWords(utf8Text(readingTexts::copiedWithMark)), look::TextRole::callout));
    return {int(std::ceil(std::min(widest, frame + words))), bubbleHeight};
}

void QRLabelBubble::paint(QPainter &painter) {
    const look::Theme &colours = theme();
    const QRectF body = rect();
    look::fillRounded(painter, body, cornerRadius(), ground(colours.elevated));
    look::strokeHairline(painter, body, cornerRadius(), colours.outline);
    const char *symbol = isCopied() ? readingTexts::copiedSymbol
                         : m_isURL  ? readingTexts::linkSymbol
                                    : readingTexts::copyTextSymbol;
    const QColor ink = isCopied() ? colours.successText : m_isURL ? colours.accentText : colours.text;
    const double gap = look::space::tiny + 1;
    const double most = width() - 2 * padding - symbolSide - gap;
    const double words = std::min(most, std::ceil(look::lineWidth(label(), look::TextRole::callout)));
    // In the middle: a short text leaves room for the word that follows a click.
    const double left = std::round((width() - symbolSide - gap - words) / 2);
    look::paintSymbol(painter, QRectF(left, 0, symbolSide, height()), utf8Text(symbol), symbolSide, ink);
    look::paintLine(painter, QRectF(left + symbolSide + gap, 0, words + 1, height()), label(), look::TextRole::callout,
                    ink);
}

} // namespace tavrine
