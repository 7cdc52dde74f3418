#pragma once

#include "ports/Application.h"

namespace tavrine {

/// This program on Qt's event loop. Lives on the main thread. Starts as an accessory. Panels are in no task bar at any
/// time and large windows are only shown by a regular program, so no window has to follow the policy.
class QtApplication final : public Application {
public:
    void setActivationPolicy(ActivationPolicy policy) override;
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_policy; }
    void terminate() override;

private:
    ActivationPolicy m_policy = ActivationPolicy::accessory;
};

} // namespace tavrine
