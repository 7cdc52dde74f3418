#pragma once

#include "ports/Calendar.h"

#include <QDateTime>
#include <QTimeZone>

#include <cmath>

namespace tavrine {

/// A calendar in the zone that a test sets: UTC at first.
class FakeCalendar final : public Calendar {
public:
    [[nodiscard]] DateComponents components(Date date) const override {
        const auto milliseconds = static_cast<qint64>(std::floor(date.secondsSince1970 * 1000));
        const QDateTime local = QDateTime::fromMSecsSinceEpoch(milliseconds, m_zone);
        return {local.date().dayOfWeek() % 7 + 1, local.time().hour(), local.time().minute()};
    }

    /// By its name, such as "Europe/Berlin".
    void setTimeZone(const char *name) { m_zone = QTimeZone(name); }

private:
    QTimeZone m_zone = QTimeZone::utc();
};

} // namespace tavrine
