#pragma once

#include <QWidget>

namespace tavrine::look {

/// A row of a card that only tells something: a symbol, a title, and as many lines under it as the words take. Main
/// thread.
class FactRow final : public QWidget {
    Q_OBJECT

public:
    FactRow(const QString &symbol, const QString &title, const QString &text, QWidget *parent = nullptr);

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override { return {420, heightForWidth(420)}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QString m_title;
    QString m_text;
};

} // namespace tavrine::look
