#pragma once

#include <QWidget>

namespace tavrine::look {

/// What a list shows while it holds nothing: a large symbol over a line of words, in the middle.
class EmptyState : public QWidget {
    Q_OBJECT
public:
    EmptyState(const QString &symbol, const QString &title, const QString &note = {}, QWidget *parent = nullptr);
    void set(const QString &symbol, const QString &title, const QString &note = {});

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QString m_title;
    QString m_note;
};

} // namespace tavrine::look
