#pragma once

#include "look/PanelSurface.h"

#include <QStringList>

#include <functional>

namespace tavrine {

class Pasteboard;
class Time;
class UrlOpener;

/// The panel of what was read off the screen: a row for each code, or the words that there is none. Belongs to its
/// panel; main thread.
class QRResultView : public look::PanelSurface {
    Q_OBJECT

public:
    /// What the rows need; all of it outlives the view.
    struct Ports {
        Pasteboard &pasteboard;
        UrlOpener &urlOpener;
        Time &time;
    };
    QRResultView(const QStringList &codes, const Ports &ports, std::function<void()> onDismiss,
                 QWidget *parent = nullptr);

    /// As large as its content, up to what fits on any screen; more rows are scrolled to.
    [[nodiscard]] QSize sizeHint() const override { return m_fitting; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void build(const QStringList &codes, const Ports &ports);
    void buildEmpty();

    std::function<void()> m_onDismiss;
    QSize m_fitting;
};

} // namespace tavrine
