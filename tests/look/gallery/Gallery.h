#pragma once

#include <QWidget>

namespace tavrine::look {

/// Every primitive of the look on one page, in the theme of the page.
class Gallery : public QWidget {
    Q_OBJECT
public:
    explicit Gallery(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// A page of all symbols with their names.
class SymbolPage : public QWidget {
    Q_OBJECT
public:
    explicit SymbolPage(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// The content of a panel as the search panel has it, over made-up rows.
class SamplePanel : public QWidget {
    Q_OBJECT
public:
    explicit SamplePanel(int rows, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tavrine::look
