#pragma once

#include "ports/Application.h"

#include <vector>

namespace tavrine {

/// A program that remembers how it stood and whether it was told to end.
class FakeApplication final : public Application {
public:
    void setActivationPolicy(ActivationPolicy policy) override {
        m_policy = policy;
        m_policies.push_back(policy);
    }
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_policy; }
    void terminate() override { ++m_terminations; }

    /// Each policy that was set, in order, the same ones included.
    [[nodiscard]] const std::vector<ActivationPolicy> &policies() const { return m_policies; }
    [[nodiscard]] bool isTerminated() const { return m_terminations > 0; }

private:
    std::vector<ActivationPolicy> m_policies;
    ActivationPolicy m_policy = ActivationPolicy::accessory;
    int m_terminations = 0;
};

} // namespace tavrine
