#pragma once

#include "adapters/linux/EdgeView.h"

namespace tavrine {

/// The toolkit's window of a window at the edge on X11.
class X11EdgeView final : public EdgeView {
public:
    explicit X11EdgeView(const EdgeWindowDescription &description);

    void setComposited(bool isComposited);
    /// Sends what was asked of the server, without waiting.
    void flush();

protected:
    void shapeInput() override;
    void partChanged() override { cut(); }

private:
    [[nodiscard]] double scale() const;
    void cut();

    bool m_isComposited = true;
    bool m_isCut = false;
};

} // namespace tavrine
