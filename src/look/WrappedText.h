#pragma once

#include "look/Text.h"

#include <QWidget>

namespace tavrine::look {

/// Lines of words that wrap, behind a symbol where there is one; a line break of the text begins a new line. A link can
/// be pressed, with the keyboard too; its symbol tells of a success.
class WrappedText final : public QWidget {
    Q_OBJECT

public:
    enum class Tone { plain, secondary, warning, danger, link };
    WrappedText(const QString &symbol, const QString &text, Tone tone, QWidget *parent = nullptr);

    void set(const QString &symbol, const QString &text, Tone tone);
    /// Body, until another one is set.
    void setRole(TextRole role);
    [[nodiscard]] const QString &text() const { return m_text; }
    [[nodiscard]] bool isLink() const { return m_tone == Tone::link; }
    [[nodiscard]] const QString &symbol() const { return m_symbol; }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override { return {400, heightForWidth(400)}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {120, heightForWidth(10000)}; }

Q_SIGNALS:
    void pressed(); ///< of a link only

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] int indentation() const;

    QString m_symbol;
    QString m_text;
    Tone m_tone = Tone::plain;
    TextRole m_role = TextRole::body;
};

} // namespace tavrine::look
