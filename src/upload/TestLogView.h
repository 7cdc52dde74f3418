#pragma once

#include <QPlainTextEdit>
#include <QStringList>

namespace tavrine {

/// What a script logged: lines that can be read and copied, as high as they need up to a limit. Main thread.
class TestLogView final : public QPlainTextEdit {
    Q_OBJECT

public:
    /// What is shown of a log without end: its last lines, and of each the start.
    static constexpr int mostLines = 2000;
    static constexpr int longestLine = 4000;

    explicit TestLogView(QWidget *parent = nullptr);

    void setLines(const QStringList &lines);

private:
    void refreshTheme();

    QStringList m_lines;
};

} // namespace tavrine
