#pragma once

#include "look/Control.h"
#include "look/Toggle.h"
#include "utilities/awake/KeepAwakeMode.h"

#include <QWidget>

namespace tavrine {

// The pieces of the card of Keep Awake. Each paints what it is told.

/// The cup on its disc, filled while the machine is kept awake, the title, and what the state is called.
class KeepAwakeHeader final : public QWidget {
    Q_OBJECT

public:
    explicit KeepAwakeHeader(QWidget *parent = nullptr);
    void set(bool isAwake, const QString &status);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_isAwake = false;
    QString m_status;
};

/// A mode to choose: its label and what it means, with a check mark while it is chosen.
class KeepAwakeModeButton final : public look::Control {
    Q_OBJECT

public:
    explicit KeepAwakeModeButton(const KeepAwakeModeRow &row, QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {200, 40}; }

protected:
    void paint(QPainter &painter) override;

private:
    QString m_subtitle;
};

/// A line that folds out what is under it.
class DisclosureButton final : public look::Control {
    Q_OBJECT

public:
    explicit DisclosureButton(const QString &text, QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {200, 28}; }

protected:
    void paint(QPainter &painter) override;
};

/// A title with a switch at its end; a click anywhere on it presses the switch.
class SwitchRow final : public QWidget {
    Q_OBJECT

public:
    explicit SwitchRow(const QString &title, QWidget *parent = nullptr);
    [[nodiscard]] look::Toggle &toggle() { return *m_toggle; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QString m_title;
    look::Toggle *m_toggle;
};

/// A small remark behind a sign, over as many lines as it needs.
class NoteLine final : public QWidget {
    Q_OBJECT

public:
    /// `width` points wide, and as high as the text is then.
    NoteLine(const QString &text, int width, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
};

} // namespace tavrine
