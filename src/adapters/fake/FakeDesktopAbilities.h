#pragma once

#include "ports/DesktopAbilities.h"

#include <algorithm>

namespace tavrine {

/// A desktop that allows everything, until the test says otherwise.
class FakeDesktopAbilities final : public DesktopAbilities {
public:
    FakeDesktopAbilities() {
        for (const Ability ability : allAbilities)
            m_reports.push_back({.ability = ability, .reason = {}, .step = {}, .linesToCopy = {}});
    }
    [[nodiscard]] std::vector<AbilityReport> reports() const override { return m_reports; }

    void set(const AbilityReport &report) {
        *std::ranges::find(m_reports, report.ability, &AbilityReport::ability) = report;
    }

private:
    std::vector<AbilityReport> m_reports;
};

} // namespace tavrine
