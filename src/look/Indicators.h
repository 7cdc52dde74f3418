#pragma once

#include "look/MotionClock.h"
#include "look/Paint.h"

#include <QWidget>

#include <optional>
#include <vector>

namespace tavrine::look {

/// Turns while it is shown and something is under way; stands still where nothing may move.
class Spinner : public QWidget {
    Q_OBJECT
public:
    explicit Spinner(QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {20, 20}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    Motion m_motion;
    double m_turn = 0;
};

/// How much of something is done, from 0 to 1.
class ProgressBar : public QWidget {
    Q_OBJECT
public:
    explicit ProgressBar(QWidget *parent = nullptr);
    void setValue(double part);
    [[nodiscard]] double value() const { return m_value; }
    [[nodiscard]] QSize sizeHint() const override { return {160, 6}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_value = 0;
    double m_shown = 0;
    Motion m_motion;
};

/// The line of key hints under a panel: leading ones at the left, the rest at the right end. What has no room is left
/// out whole, the last one first. It is called all that it would show.
class HintBar : public QWidget {
    Q_OBJECT
public:
    HintBar(std::vector<KeyHint> leading, std::vector<KeyHint> trailing, QWidget *parent = nullptr);
    void setTrailing(std::vector<KeyHint> trailing);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void nameItself();
    /// How many of the hints, in their order, have room up to this width.
    [[nodiscard]] static size_t fitting(const std::vector<KeyHint> &hints, qreal &room);

    std::vector<KeyHint> m_leading;
    std::vector<KeyHint> m_trailing;
};

/// A line of text that never wraps: in a role and a colour of the theme.
class Label : public QWidget {
    Q_OBJECT
public:
    enum class Tone { primary, secondary, tertiary, accent, danger, success };
    explicit Label(const QString &text, TextRole role = TextRole::body, Tone tone = Tone::primary,
                   QWidget *parent = nullptr);
    void setText(const QString &text);
    [[nodiscard]] const QString &text() const { return m_text; }
    void setAlignment(Qt::Alignment alignment);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
    TextRole m_role;
    Tone m_tone;
    Qt::Alignment m_alignment = Qt::AlignLeft;
};

} // namespace tavrine::look
