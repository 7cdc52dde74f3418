#include "adapters/linux/SystemCalendar.h"

#include <cmath>
#include <ctime>

namespace tavrine {

DateComponents SystemCalendar::components(Date date) const {
    const auto seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    ::tzset(); // localtime_r alone keeps the zone of its first call
    std::tm local{};
    if (!::localtime_r(&seconds, &local))
        return {};
    return {local.tm_wday + 1, local.tm_hour, local.tm_min};
}

} // namespace tavrine
