#pragma once

#include "look/Control.h"
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

/// A small remark behind a sign, over as many lines as it needs.
class NoteLine final : public QWidget {
    Q_OBJECT

public:
    explicit NoteLine(const QString &text, QWidget *parent = nullptr);
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override { return {200, heightForWidth(200)}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
};

} // namespace tavrine
