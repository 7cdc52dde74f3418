#pragma once

#include "ports/Calendar.h"

namespace tavrine {

/// The calendar of the C library, which looks at the zone of the system anew for each question.
class SystemCalendar final : public Calendar {
public:
    [[nodiscard]] DateComponents components(Date date) const override;
};

} // namespace tavrine
