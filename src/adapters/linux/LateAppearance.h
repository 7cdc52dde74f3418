#pragma once

#include "adapters/linux/PortalAppearance.h"

#include <QObject>

#include <optional>

namespace tavrine {

/// The desktop's wishes for looks, unsaid until the session bus is open.
class LateAppearance final : public QObject, public Appearance {
public:
    LateAppearance();

    [[nodiscard]] DesktopAppearance settings() const override {
        return m_portal ? m_portal->settings() : DesktopAppearance{};
    }
    void setOnChange(std::function<void()> onChange) override;

private:
    std::optional<PortalAppearance> m_portal;
    std::function<void()> m_onChange;
};

} // namespace tavrine
