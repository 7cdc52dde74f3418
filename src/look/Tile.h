#pragma once

#include "look/Control.h"
#include "look/Text.h"

#include <QStringList>
#include <QWidget>

#include <vector>

namespace tavrine::look {

/// A tile of a grid of controls: a symbol on a disc, a title and a line under it. A checkable tile is a switch whose
/// disc is filled while it is on. A title that is too long takes two lines, or smaller letters; what is cut
/// nevertheless is told in full by the tool tip.
class Tile : public Control {
    Q_OBJECT
public:
    enum class Kind { action, toggle };
    Tile(const QString &symbol, const QString &title, const QString &subtitle, Kind kind = Kind::action,
         QWidget *parent = nullptr);

    /// An empty subtitle centres the title.
    void setSubtitle(const QString &subtitle);
    void setTitle(const QString &title);

    [[nodiscard]] QSize sizeHint() const override { return {133, 56}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {100, 48}; }

protected:
    bool event(QEvent *event) override;
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override;

private:
    struct Places {
        QRectF disc;
        QRectF title;
        QRectF subtitle;
    };
    [[nodiscard]] Places places() const;
    struct Title {
        QStringList lines; ///< one or two
        TextRole role;
        bool isCut;
    };
    [[nodiscard]] Title title(qreal width) const;
    [[nodiscard]] bool isCut() const;

    QString m_symbol;
    QString m_subtitle;
    Motion m_motion;
    double m_onPart = 0;
};

/// A row of a card: a symbol on a plate, a title, a note under it, and a widget at the right end, or under the words
/// where these have too little room beside it. Words that are longer than the row wrap.
class SettingsRow : public QWidget {
    Q_OBJECT
public:
    SettingsRow(const QString &symbol, const QString &title, const QString &note = {}, QWidget *parent = nullptr);

    /// Takes the widget over. A widget without words is called by the row's title.
    void setTrailing(QWidget *widget);
    void setNote(const QString &note);
    [[nodiscard]] const QString &note() const { return m_note; }
    /// The plate's colour; none: a grey one.
    void setPlate(const QColor &colour);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {200, sizeHint().height()}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override { return places(width).height; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    /// A click anywhere on the row presses what stands at its end.
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    struct Places {
        QRect title;
        QRect note;
        QRect trailing;
        int height = 0;
    };
    [[nodiscard]] Places places(int width) const;

    QString m_symbol;
    QString m_title;
    QString m_note;
    QColor m_plate;
    QWidget *m_trailing = nullptr;
};

/// A rounded ground that holds widgets one under the other, with separators between them.
class Card : public QWidget {
    Q_OBJECT
public:
    explicit Card(QWidget *parent = nullptr);
    void add(QWidget *widget);
    /// Puts what it holds into another order.
    void setOrder(const std::vector<QWidget *> &widgets);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::vector<QWidget *> m_rows;
};

} // namespace tavrine::look
