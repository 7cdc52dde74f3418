#pragma once

#include "look/Control.h"

namespace tavrine {

/// One button of the preview card: a symbol over a word. Main thread; owned by the card.
class PreviewActionButton final : public look::Control {
    Q_OBJECT
public:
    PreviewActionButton(const QString &icon, const QString &title, QWidget *parent = nullptr);

    void setIcon(const QString &icon);
    void setTitle(const QString &title);
    /// A second line under the title; empty for none.
    void setSubtitle(const QString &subtitle);
    /// What it does has been done.
    void setActive(bool isActive);
    void setProminentBlue(bool isProminent);
    /// What it does is under way: the symbol gives its place to a turning wheel.
    void setLoading(bool isLoading);
    void setButtonWidth(int width);

    [[nodiscard]] const QString &icon() const { return m_icon; }
    [[nodiscard]] bool isActive() const { return m_isActive; }
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override;
    void hideEvent(QHideEvent *event) override;

private:
    void turn();

    QString m_icon;
    QString m_subtitle;
    int m_width = 56;
    bool m_isActive = false;
    bool m_isProminentBlue = false;
    bool m_isLoading = false;
    look::Motion m_wheel;
    double m_turn = 0;
};

} // namespace tavrine
