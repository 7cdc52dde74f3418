#pragma once

#include "look/Button.h"

#include <QWidget>

namespace tavrine {

/// Words and what can be done about them, floating over the picture. Fades in and out where things may move.
class PillView : public QWidget {
    Q_OBJECT

public:
    PillView(const QString &symbol, const QString &text, QWidget *parent);

    /// Added at the right end.
    look::Button *addButton(const QString &text, look::ButtonStyle style, const QString &symbol = {});
    /// Fades; what has faded out takes no clicks.
    void setShown(bool isShown);
    [[nodiscard]] bool isShown() const { return m_isShown; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void place();

    QString m_symbol;
    QString m_text;
    std::vector<look::Button *> m_buttons;
    look::Motion m_motion;
    double m_opacity = 0;
    bool m_isShown = false;
};

} // namespace tavrine
