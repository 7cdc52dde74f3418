#pragma once

#include "ports/Application.h"

namespace tavrine {

/// This program on Qt's event loop. Lives on the main thread. Starts as an accessory. Large windows, and the panels
/// that are in the task bar, are only shown by a regular program, and no other panel ever is there: so no window has to
/// follow the policy.
class QtApplication final : public Application {
public:
    void setActivationPolicy(ActivationPolicy policy) override;
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_policy; }
    void terminate() override;

private:
    ActivationPolicy m_policy = ActivationPolicy::accessory;
};

} // namespace tavrine
