#pragma once

#include "upload/ScriptTokenizer.h"

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

namespace tavrine {

/// Colours a script line by line as it is typed. Belongs to the document's editor.
class ScriptHighlighter final : public QSyntaxHighlighter {
    Q_OBJECT

public:
    explicit ScriptHighlighter(QTextDocument *document) : QSyntaxHighlighter(document) {}

    /// The colours for a light or a dark ground.
    void setDark(bool isDark);
    [[nodiscard]] static QColor colourOf(ScriptTokenKind kind, bool isDark);

protected:
    void highlightBlock(const QString &text) override;

private:
    QTextCharFormat m_formats[8];
};

} // namespace tavrine
