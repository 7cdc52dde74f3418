#pragma once

#include <QWidget>

namespace tavrine {

/// What a toast shows: a symbol and one or two lines of words on a dark ground, cut where the ground ends. Dark on
/// every desktop, because it lies over whatever is on the screen. Belongs to its window; main thread.
class ToastView : public QWidget {
    Q_OBJECT

public:
    ToastView(const QString &message, const QString &icon, QWidget *parent = nullptr);

    [[nodiscard]] const QString &message() const { return m_message; }
    [[nodiscard]] const QString &icon() const { return m_icon; }
    /// The words as they fit at present: one line, or two that part between words, with an ellipsis where they are cut.
    [[nodiscard]] QStringList shownLines() const;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] qreal widthForWords() const;

    QString m_message;
    QString m_icon;
};

} // namespace tavrine
