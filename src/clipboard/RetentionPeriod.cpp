#include "clipboard/RetentionPeriod.h"

#include <algorithm>

namespace tavrine {
namespace {

struct StoredText {
    RetentionPeriod period;
    QLatin1String text;
};

constexpr std::array storedTexts{
    StoredText{RetentionPeriod::tenMinutes, QLatin1String("10 Minutes")},
    StoredText{RetentionPeriod::threeDays, QLatin1String("3 Days")},
    StoredText{RetentionPeriod::thirtyDays, QLatin1String("30 Days")},
};

} // namespace

QString rawValue(RetentionPeriod period) {
    const auto *found = std::ranges::find(storedTexts, period, &StoredText::period);
    return found == storedTexts.end() ? QString() : QString(found->text);
}

std::optional<RetentionPeriod> retentionPeriodFromRawValue(const QString &text) {
    const auto *found = std::ranges::find_if(storedTexts, [&](const StoredText &entry) { return entry.text == text; });
    return found == storedTexts.end() ? std::nullopt : std::optional(found->period);
}

} // namespace tavrine
