#pragma once

#include "look/Control.h"

#include <QStringList>
#include <QWidget>

#include <vector>

namespace tavrine::look {

/// One of several: words in a capsule, filled with the accent while it is the chosen one.
class Chip : public Control {
    Q_OBJECT
public:
    explicit Chip(const QString &text, QWidget *parent = nullptr);
    void setSymbol(const QString &symbol);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    /// In the middle, also where it is narrower than it wants to be.
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override { return height() / 2.0; }

private:
    QString m_symbol;
};

/// A row of chips of which exactly one is chosen: the categories of a panel. Where they have too little room they stand
/// closer, and where that is not enough the chosen one shows, with a part of its neighbours to go on to.
class ChipStrip : public QWidget {
    Q_OBJECT
public:
    explicit ChipStrip(const QStringList &texts, QWidget *parent = nullptr);

    [[nodiscard]] int current() const { return m_current; }
    /// Does not emit.
    void setCurrent(int index);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

Q_SIGNALS:
    /// A person chose another chip.
    void chosen(int index);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] std::vector<int> widths() const;
    void place();

    std::vector<Chip *> m_chips;
    int m_current = 0;
    int m_shift = 0; // how far the strip is moved so that the chosen chip shows
};

} // namespace tavrine::look
