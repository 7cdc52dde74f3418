#pragma once

#include "adapters/linux/EdgeView.h"

#include <QTimer>

namespace tavrine {

/// The toolkit's window of a window at the edge on X11. One that ignores the mouse and was not painted for a while
/// keeps no picture of itself.
class X11EdgeView final : public EdgeView {
public:
    explicit X11EdgeView(const EdgeWindowDescription &description);

    void setComposited(bool isComposited);
    /// Sends what was asked of the server, without waiting.
    void flush();

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    bool event(QEvent *event) override;
    void shapeInput() override;
    void partChanged() override { cut(); }

private:
    [[nodiscard]] double scale() const;
    void cut();
    void rest();

    QTimer m_restsSoon;
    bool m_isComposited = true;
    bool m_isCut = false;
    bool m_hasBeenInUse = true; ///< since the last rest
};

} // namespace tavrine
