#include "capture/reading/EditableTextView.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Text.h"
#include "look/TypedText.h"

#include <QEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>

namespace tavrine {
namespace {

QString cssColour(const QColor &colour) {
    return QStringLiteral("rgba(%1,%2,%3,%4)")
        .arg(colour.red())
        .arg(colour.green())
        .arg(colour.blue())
        .arg(colour.alpha());
}

} // namespace

EditableTextView::EditableTextView(Kind kind, QWidget *parent) : QPlainTextEdit(parent) {
    setFrameShape(QFrame::NoFrame);
    setFont(look::fontFor(look::TextRole::body));
    setReadOnly(kind == Kind::selectable);
    if (kind == Kind::selectable)
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true); // nobody types a tabulator into what was read, and the buttons are to be reached
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(look::space::medium);
    recolour();
    connect(this, &QPlainTextEdit::textChanged, this, [this] { Q_EMIT textEdited(text()); });
    if (auto *look = look::Look::current())
        connect(look, &look::Look::changed, this, &EditableTextView::recolour);
}

QString EditableTextView::text() const {
    return look::asTyped(document()->toRawText());
}

void EditableTextView::setText(const QString &wanted) {
    if (wanted != text())
        setPlainText(wanted);
}

QMimeData *EditableTextView::createMimeDataFromSelection() const {
    auto *selected = new QMimeData;
    selected->setText(look::asTyped(textCursor().selectedText()));
    return selected;
}

void EditableTextView::changeEvent(QEvent *event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::ParentChange)
        recolour();
}

void EditableTextView::recolour() {
    if (std::exchange(m_isRecolouring, true))
        return;
    const look::Theme &theme = look::themeOf(this);
    QPalette colours = palette();
    colours.setColor(QPalette::Base, Qt::transparent);
    colours.setColor(QPalette::Text, theme.text);
    colours.setColor(QPalette::Highlight, theme.accent);
    colours.setColor(QPalette::HighlightedText, theme.onAccent);
    setPalette(colours);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setStyleSheet(
        QStringLiteral("QScrollBar:vertical{background:transparent;width:11px;margin:3px;}"
                       "QScrollBar::handle:vertical{background:%1;border-radius:2px;min-height:28px;}"
                       "QScrollBar::handle:vertical:hover{background:%2;}"
                       "QScrollBar::add-line,QScrollBar::sub-line{height:0;}"
                       "QScrollBar::add-page,QScrollBar::sub-page{background:transparent;}")
            .arg(cssColour(theme.tertiaryText), cssColour(theme.secondaryText)));
    m_isRecolouring = false;
}

// The ground and its focus ring are the look's.
void EditableTextView::paintEvent(QPaintEvent *event) {
    QPainter painter(viewport());
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    const QRectF body = viewport()->rect();
    look::fillRounded(painter, body, look::radius::control, theme.field);
    const bool showsFocus = hasFocus() && !isReadOnly();
    look::strokeHairline(painter, body, look::radius::control, showsFocus ? theme.focusRing : theme.separator);
    painter.end();
    QPlainTextEdit::paintEvent(event);
}

} // namespace tavrine
