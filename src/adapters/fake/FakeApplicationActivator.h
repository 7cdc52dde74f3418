#pragma once

#include "adapters/fake/FakeWorkspace.h"
#include "ports/ApplicationActivator.h"

#include <algorithm>
#include <vector>

namespace tavrine {

/// Brings programs to the front of a `FakeWorkspace`, at once or when the test says so.
class FakeApplicationActivator final : public ApplicationActivator {
public:
    explicit FakeApplicationActivator(FakeWorkspace &workspace) : m_workspace(workspace) {}

    [[nodiscard]] bool isRunning(const RunningApplication &application) const override {
        return std::none_of(m_quit.begin(), m_quit.end(),
                            [&](const auto &quit) { return isSameApplication(quit, application); });
    }
    bool activate(const RunningApplication &application) override {
        if (!isRunning(application))
            return false;
        m_activated.push_back(application);
        if (m_isImmediate)
            m_workspace.setFrontmost(application);
        return true;
    }
    void activateIgnoringOtherApps() override {
        ++m_ownActivations;
        if (m_own)
            m_workspace.setFrontmost(*m_own);
    }
    void bringForward(quint32 window) override { m_broughtForward.push_back(window); }
    void hide() override { ++m_hides; }

    /// The program ends.
    void quit(const RunningApplication &application) { m_quit.push_back(application); }
    /// Whether a program that is activated comes to the front at once; otherwise the test brings it there.
    void setImmediate(bool isImmediate) { m_isImmediate = isImmediate; }
    /// What comes to the front when this program activates itself.
    void setOwn(const RunningApplication &own) { m_own = own; }

    [[nodiscard]] const std::vector<RunningApplication> &activated() const { return m_activated; }
    [[nodiscard]] int ownActivations() const { return m_ownActivations; }
    [[nodiscard]] const std::vector<quint32> &broughtForward() const { return m_broughtForward; }
    [[nodiscard]] int hides() const { return m_hides; }

private:
    FakeWorkspace &m_workspace;
    std::vector<RunningApplication> m_quit;
    std::vector<RunningApplication> m_activated;
    std::vector<quint32> m_broughtForward;
    std::optional<RunningApplication> m_own;
    int m_ownActivations = 0;
    int m_hides = 0;
    bool m_isImmediate = true;
};

} // namespace tavrine
