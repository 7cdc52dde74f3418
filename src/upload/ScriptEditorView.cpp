#include "upload/ScriptEditorView.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/TypedText.h"
#include "upload/ScriptEditing.h"
#include "upload/ScriptHighlighter.h"
#include "upload/ThinScrollBarsView.h"

#include <QFontDatabase>
#include <QPainter>
#include <QTextBlock>

#include <algorithm>

namespace tavrine {

using namespace look;

namespace {

constexpr int gutterPadding = 12;
constexpr int fewestDigits = 2;
constexpr int fontPixels = 13;

QTextEdit::ExtraSelection wholeLine(const QTextCursor &cursor, const QColor &colour) {
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(colour);
    mark.format.setProperty(QTextFormat::FullWidthSelection, true);
    mark.cursor = cursor;
    mark.cursor.clearSelection();
    return mark;
}

QTextEdit::ExtraSelection letter(QTextDocument *document, int place, const QColor &colour) {
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(colour);
    mark.cursor = QTextCursor(document);
    mark.cursor.setPosition(place);
    mark.cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    return mark;
}

QColor faint(QColor colour, int alpha) {
    colour.setAlpha(alpha);
    return colour;
}

} // namespace

ScriptEditorView::ScriptEditorView(QWidget *parent)
    : QPlainTextEdit(parent), m_gutter(new QWidget(this)),
      m_highlighter(std::make_unique<ScriptHighlighter>(document())) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(fontPixels);
    font.setStyleHint(QFont::Monospace);
    setFont(font);
    setTabStopDistance(QFontMetricsF(font).horizontalAdvance(QLatin1Char(' ')) * 4);
    setLineWrapMode(NoWrap);
    setFrameShape(NoFrame);
    setAccessibleName(QStringLiteral("function uploadImage(imageBase64, fileName) { … }"));
    document()->setDocumentMargin(space::small);
    m_gutter->installEventFilter(this);
    m_gutter->setCursor(Qt::ArrowCursor);
    connect(this, &QPlainTextEdit::blockCountChanged, this, &ScriptEditorView::refreshGutter);
    connect(this, &QPlainTextEdit::updateRequest, m_gutter, [this](const QRect &rect, int moved) {
        if (moved)
            m_gutter->scroll(0, moved);
        else
            m_gutter->update(0, rect.y(), m_gutter->width(), rect.height());
    });
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_isReplacing)
            Q_EMIT edited();
    });
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &ScriptEditorView::refreshMarks);
    if (Look *look = Look::current())
        connect(look, &Look::changed, this, &ScriptEditorView::refreshTheme);
    refreshTheme();
    refreshGutter();
}

ScriptEditorView::~ScriptEditorView() = default;

void ScriptEditorView::setErrorLine(std::optional<int> line) {
    if (line == m_errorLine)
        return;
    m_errorLine = line;
    refreshMarks();
    m_gutter->update();
    const QTextBlock block = line ? document()->findBlockByNumber(*line - 1) : QTextBlock();
    if (!block.isValid())
        return;
    setTextCursor(QTextCursor(block));
    centerCursor();
}

void ScriptEditorView::replaceText(const QString &text) {
    m_isReplacing = true;
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    moveCursor(QTextCursor::Start);
    m_isReplacing = false;
}

QString ScriptEditorView::script() const {
    return look::asTyped(document()->toRawText());
}

int ScriptEditorView::gutterWidth() const {
    return gutterPadding * 2 + m_gutterDigits * fontMetrics().horizontalAdvance(QLatin1Char('9'));
}

void ScriptEditorView::refreshGutter() {
    const int digits = std::max(fewestDigits, int(QString::number(blockCount()).size()));
    if (digits == m_gutterDigits)
        return;
    m_gutterDigits = digits;
    setViewportMargins(gutterWidth(), 0, 0, 0);
    resizeEvent(nullptr);
}

void ScriptEditorView::resizeEvent(QResizeEvent *event) {
    if (event)
        QPlainTextEdit::resizeEvent(event);
    m_gutter->setGeometry(0, 0, gutterWidth(), height());
}

void ScriptEditorView::focusInEvent(QFocusEvent *event) {
    QPlainTextEdit::focusInEvent(event);
    refreshMarks();
    Q_EMIT focusChanged();
}

void ScriptEditorView::focusOutEvent(QFocusEvent *event) {
    QPlainTextEdit::focusOutEvent(event);
    refreshMarks();
    Q_EMIT focusChanged();
}

void ScriptEditorView::refreshTheme() {
    const Theme &theme = themeOf(this);
    QPalette colours = paletteOf(theme);
    colours.setColor(QPalette::Base, theme.field);
    colours.setColor(QPalette::Text, theme.text);
    colours.setColor(QPalette::Highlight, faint(theme.accent, theme.isDark ? 110 : 70));
    colours.setColor(QPalette::HighlightedText, theme.text);
    setPalette(colours);
    thinScrollBars(*this);
    m_highlighter->setDark(theme.isDark);
    refreshMarks();
    m_gutter->update();
}

void ScriptEditorView::refreshMarks() {
    const Theme &theme = themeOf(this);
    QList<QTextEdit::ExtraSelection> marks;
    if (hasFocus())
        marks.append(wholeLine(textCursor(), theme.hover));
    if (m_errorLine) {
        const QTextBlock block = document()->findBlockByNumber(*m_errorLine - 1);
        if (block.isValid())
            marks.append(wholeLine(QTextCursor(block), faint(theme.danger, 56)));
    }
    // The bracket behind the cursor, or the one before it.
    const QTextDocument *text = document();
    const int cursor = textCursor().position();
    for (const int place : {cursor, cursor - 1}) {
        const QChar c = place >= 0 ? text->characterAt(place) : QChar();
        if (c.isNull() || !QStringLiteral("()[]{}").contains(c))
            continue;
        const int other = scriptEditing::matchingBracket(toPlainText(), place);
        const QColor colour = other < 0 ? faint(theme.danger, 90) : faint(theme.accent, 80);
        marks.append(letter(document(), place, colour));
        if (other >= 0)
            marks.append(letter(document(), other, colour));
        break;
    }
    setExtraSelections(marks);
    m_gutter->update();
}

bool ScriptEditorView::eventFilter(QObject *object, QEvent *event) {
    if (object == m_gutter && event->type() == QEvent::Paint) {
        paintGutter(static_cast<QPaintEvent *>(event));
        return true;
    }
    return QPlainTextEdit::eventFilter(object, event);
}

void ScriptEditorView::paintGutter(QPaintEvent *event) {
    QPainter painter(m_gutter);
    const Theme &theme = themeOf(this);
    painter.fillRect(event->rect(), over(theme.field, theme.hover));
    painter.setFont(font());
    const int current = textCursor().blockNumber();
    QTextBlock block = firstVisibleBlock();
    while (block.isValid()) {
        const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
        if (place.top() > event->rect().bottom())
            break;
        const int number = block.blockNumber() + 1;
        const bool isWrong = m_errorLine == number;
        const QRectF line(0, place.top(), m_gutter->width(), place.height());
        if (isWrong)
            painter.fillRect(line, faint(theme.danger, 56));
        painter.setPen(isWrong ? theme.dangerText : current + 1 == number ? theme.text : theme.secondaryText);
        painter.drawText(line.adjusted(0, 0, -gutterPadding, 0), Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(number));
        block = block.next();
    }
}

bool ScriptEditorView::hasSelectedLines() const {
    const QTextCursor cursor = textCursor();
    return document()->findBlock(cursor.selectionStart()) != document()->findBlock(cursor.selectionEnd());
}

QTextCursor ScriptEditorView::selectedLines() const {
    QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    int end = cursor.selectionEnd();
    // A selection that ends at the start of a line does not hold that line.
    if (end > start && document()->findBlock(end).position() == end)
        --end;
    cursor.setPosition(document()->findBlock(start).position());
    const QTextBlock last = document()->findBlock(end);
    cursor.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
    return cursor;
}

void ScriptEditorView::breakLine() {
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const QString before = cursor.block().text().left(cursor.positionInBlock());
    const QString after = cursor.block().text().mid(cursor.positionInBlock());
    const QString indentation = scriptEditing::indentAfter(before);
    cursor.insertText(QLatin1Char('\n') + indentation);
    // Between a pair of braces the closing one goes to a line of its own.
    const bool isBetween = before.trimmed().endsWith(QLatin1Char('{')) && after.startsWith(QLatin1Char('}'));
    if (isBetween) {
        const int place = cursor.position();
        cursor.insertText(QLatin1Char('\n') + indentation.chopped(qsizetype(qstrlen(scriptEditing::indent))));
        cursor.setPosition(place);
    }
    cursor.endEditBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
}

void ScriptEditorView::indent() {
    QTextCursor cursor = textCursor();
    const QString step = QLatin1String(scriptEditing::indent);
    if (!hasSelectedLines()) {
        cursor.insertText(step);
        return;
    }
    const QTextCursor lines = selectedLines();
    cursor.beginEditBlock();
    const QTextBlock last = document()->findBlock(lines.selectionEnd());
    for (QTextBlock block = document()->findBlock(lines.selectionStart()); block.isValid(); block = block.next()) {
        if (block.length() > 1)
            QTextCursor(block).insertText(step);
        if (block == last)
            break;
    }
    cursor.endEditBlock();
    setTextCursor(selectedLines());
}

void ScriptEditorView::outdent() {
    QTextCursor cursor = textCursor();
    const QTextCursor lines = selectedLines();
    cursor.beginEditBlock();
    const QTextBlock last = document()->findBlock(lines.selectionEnd());
    for (QTextBlock block = document()->findBlock(lines.selectionStart()); block.isValid(); block = block.next()) {
        QTextCursor start(block);
        start.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, scriptEditing::outdentOf(block.text()));
        start.removeSelectedText();
        if (block == last)
            break;
    }
    cursor.endEditBlock();
}

void ScriptEditorView::closeBrace() {
    QTextCursor cursor = textCursor();
    const QString before = cursor.block().text().left(cursor.positionInBlock());
    cursor.beginEditBlock();
    if (!cursor.hasSelection() && !before.isEmpty() && before.trimmed().isEmpty()) {
        cursor.movePosition(QTextCursor::StartOfBlock);
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, scriptEditing::outdentOf(before));
        cursor.removeSelectedText();
        cursor = textCursor();
    }
    cursor.insertText(QStringLiteral("}"));
    cursor.endEditBlock();
    setTextCursor(cursor);
}

void ScriptEditorView::keyPressEvent(QKeyEvent *event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        (modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier))
        breakLine();
    else if (event->key() == Qt::Key_Tab && modifiers == Qt::NoModifier)
        indent();
    else if (event->key() == Qt::Key_Backtab && modifiers == Qt::ShiftModifier)
        outdent();
    else if (event->text() == QLatin1String("}"))
        closeBrace();
    else if ((event->key() == Qt::Key_Escape && modifiers == Qt::NoModifier) ||
             (event->key() == Qt::Key_Tab && modifiers == Qt::ControlModifier))
        QAbstractScrollArea::focusNextPrevChild(true); // an editor's own keeps the keyboard
    else if ((event->key() == Qt::Key_Backtab || event->key() == Qt::Key_Tab) &&
             modifiers == (Qt::ControlModifier | Qt::ShiftModifier))
        QAbstractScrollArea::focusNextPrevChild(false);
    else
        QPlainTextEdit::keyPressEvent(event);
}

} // namespace tavrine
