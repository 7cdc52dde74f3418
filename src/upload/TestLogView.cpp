#include "upload/TestLogView.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "upload/ThinScrollBarsView.h"

#include <QFontDatabase>

#include <algorithm>

namespace tavrine {

using namespace look;

namespace {

constexpr int fontPixels = 12;
constexpr int mostVisibleLines = 8;

} // namespace

TestLogView::TestLogView(QWidget *parent) : QPlainTextEdit(parent) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(fontPixels);
    setFont(font);
    setReadOnly(true);
    setTabChangesFocus(true);
    setFrameShape(NoFrame);
    setUndoRedoEnabled(false);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setAccessibleName(inDesktopWords(QStringLiteral("Log")));
    document()->setDocumentMargin(space::small);
    if (Look *look = Look::current())
        connect(look, &Look::changed, this, &TestLogView::refreshTheme);
    refreshTheme();
}

void TestLogView::setLines(const QStringList &lines) {
    if (lines == m_lines)
        return;
    m_lines = lines;
    QStringList shown;
    for (const QString &line : lines.mid(std::max<qsizetype>(0, lines.size() - mostLines)))
        shown.append(line.left(longestLine));
    setPlainText(shown.join(QLatin1Char('\n')));
    moveCursor(QTextCursor::End); // what went wrong stands at the end
    const int visible = std::clamp(blockCount(), 1, mostVisibleLines);
    setFixedHeight(visible * fontMetrics().lineSpacing() + 2 * space::small + space::tiny);
}

void TestLogView::refreshTheme() {
    const Theme &theme = themeOf(this);
    QPalette colours = paletteOf(theme);
    colours.setColor(QPalette::Base, theme.field);
    colours.setColor(QPalette::Text, theme.secondaryText);
    setPalette(colours);
    thinScrollBars(*this);
}

} // namespace tavrine
