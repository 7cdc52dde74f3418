#pragma once

#include "ports/Appearance.h"

namespace tavrine {

/// A desktop whose wishes a test sets.
class FakeAppearance final : public Appearance {
public:
    [[nodiscard]] DesktopAppearance settings() const override { return m_settings; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

    void set(const DesktopAppearance &settings) {
        if (settings == m_settings)
            return;
        m_settings = settings;
        if (m_onChange)
            m_onChange();
    }

private:
    DesktopAppearance m_settings;
    std::function<void()> m_onChange;
};

} // namespace tavrine
