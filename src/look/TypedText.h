#pragma once

#include <QString>

namespace tavrine::look {

/// What stands in an editable text, out of its characters as the toolkit keeps them (`QTextDocument::toRawText`,
/// `QTextCursor::selectedText`): line ends as "\n", and all else to the letter. The toolkit's own plain text makes
/// common blanks of those that do not break.
[[nodiscard]] inline QString asTyped(QString raw) {
    raw.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    return raw.replace(QChar::LineSeparator, QLatin1Char('\n'));
}

} // namespace tavrine::look
