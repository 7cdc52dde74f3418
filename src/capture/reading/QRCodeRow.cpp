#include "capture/reading/QRCodeRow.h"

#include "base/DesktopWords.h"
#include "capture/reading/QRResultModel.h"
#include "capture/reading/ReadingTexts.h"
#include "look/Button.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "ports/UrlOpener.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QResizeEvent>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int rowWidth = 372;
constexpr int lineHeight = 18;
constexpr int headerHeight = 18;
constexpr int padding = look::space::medium;
constexpr qsizetype mostLines = 3;
constexpr qsizetype mostCharacters = 600; // of which no more than three lines are seen
constexpr double copyWidth = 84;

QString utf8Text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The first lines of a text at a width, the last one cut where more follows.
QStringList firstLines(const QString &whole, double width) {
    const QFont font = look::fontFor(look::TextRole::body);
    const QString shown = whole.left(mostCharacters).simplified();
    QTextLayout layout(shown, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QStringList lines;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max(width, 20.0));
        if (lines.size() == mostLines - 1) {
            lines.append(look::oneLine(whole.simplified().mid(line.textStart()), font, width));
            break;
        }
        lines.append(shown.mid(line.textStart(), line.textLength()));
    }
    layout.endLayout();
    if (lines.isEmpty())
        lines.append(QString());
    return lines;
}

} // namespace

QRCodeRow::QRCodeRow(const QString &code, std::optional<int> index, Pasteboard &pasteboard, UrlOpener &urlOpener,
                     Time &time, QWidget *parent)
    : Control(parent), m_code(code), m_header(inDesktopWords(qrResult::header(index).value_or(QString()))),
      m_copy(pasteboard, time, qrResult::copiedShown) {
    setAccessibleName(m_header.isEmpty() ? code.left(200) : m_header + QStringLiteral(", ") + code.left(200));
    setAccessibleDescription(inDesktopWords(utf8Text(readingTexts::copy)));
    if (const auto url = qrResult::webAddress(code)) {
        m_open = new look::Button(utf8Text(readingTexts::open), look::ButtonStyle::plain, this);
        m_open->setSymbol(utf8Text(readingTexts::openSymbol));
        m_open->setButtonSize(look::ButtonSize::small);
        connect(m_open, &QAbstractButton::clicked, this,
                [opener = &urlOpener, address = *url] { opener->openUrl(address); });
    }
    m_lines = firstLines(m_code, rowWidth - 2 * padding - trailingWidth());
    connect(this, &QAbstractButton::clicked, this, [this] { m_copy.copy(m_code); });
    connect(&m_copy, &CopyAction::isCopiedChanged, this, [this] { update(); });
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

double QRCodeRow::trailingWidth() const {
    const double open = m_open ? m_open->sizeHint().width() + look::space::tiny : 0;
    return std::max(copyWidth, open) + look::space::medium;
}

QSize QRCodeRow::sizeHint() const {
    const int words = (m_header.isEmpty() ? 0 : headerHeight) + lineHeight * static_cast<int>(m_lines.size());
    const int buttons = m_open ? lineHeight + look::space::tiny + m_open->sizeHint().height() : lineHeight;
    return {rowWidth, std::max(words, buttons) + 2 * padding};
}

qreal QRCodeRow::cornerRadius() const {
    return look::radius::card;
}

void QRCodeRow::resizeEvent(QResizeEvent *event) {
    Control::resizeEvent(event);
    m_lines = firstLines(m_code, width() - 2 * padding - trailingWidth());
    if (m_open) {
        const QSize size = m_open->sizeHint();
        m_open->setGeometry(QRect(QPoint(width() - padding - size.width(), height() - padding - size.height()), size));
    }
}

void QRCodeRow::paint(QPainter &painter) {
    const look::Theme &colours = theme();
    look::fillRounded(painter, rect(), cornerRadius(), ground(colours.elevated));
    look::strokeHairline(painter, rect(), cornerRadius(), colours.separator);

    QRectF line(padding, padding, width() - 2 * padding - trailingWidth(), lineHeight);
    if (!m_header.isEmpty()) {
        look::paintLine(painter, line, m_header, look::TextRole::captionStrong, colours.secondaryText);
        line.translate(0, headerHeight);
    } else if (const int room = height() - 2 * padding - lineHeight * static_cast<int>(m_lines.size()); room > 0) {
        line.translate(0, room / 2);
    }
    for (const QString &words : m_lines) {
        look::paintLine(painter, line, words, look::TextRole::body, colours.text);
        line.translate(0, lineHeight);
    }

    const bool copied = isCopied();
    const QString label = inDesktopWords(utf8Text(copied ? readingTexts::copiedWithMark : readingTexts::copy));
    const QColor ink = copied ? colours.successText : colours.accentText;
    const double words = look::lineWidth(label, look::TextRole::callout);
    const double top = m_open ? padding : (height() - lineHeight) / 2.0;
    const QRectF trailing(width() - padding - std::ceil(words), top, std::ceil(words), lineHeight);
    look::paintLine(painter, trailing, label, look::TextRole::callout, ink);
    const double side = look::symbolsize::small + 2;
    look::paintSymbol(painter, QRectF(trailing.left() - side - look::space::tiny, top, side, lineHeight),
                      utf8Text(copied ? readingTexts::copiedSymbol : readingTexts::copySymbol), side, ink);
}

} // namespace tavrine
