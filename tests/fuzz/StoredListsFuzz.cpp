// Lists that stand as JSON in the preferences: another version, or anyone, wrote them.

#include "FuzzTarget.h"
#include "clipboard/ExcludedApp.h"
#include "clipboard/OldHistory.h"

#include <cmath>

namespace tavrine::fuzz {
namespace {

void readOldHistory(Bytes input) {
    const auto items = decodeOldHistory(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    if (!items)
        return;
    for (const ClipboardItem &item : *items) {
        require(std::isfinite(item.date.secondsSince1970) && item.content.isValidUtf16());
        require(!(item.content.isEmpty() && item.imageFileName));
    }
}

void readExcludedApps(Bytes input) {
    const auto apps = decodeExcludedApps(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    require(!apps || decodeExcludedApps(encodeExcludedApps(*apps)) == apps);
}

const Target oldHistory("old-history", &readOldHistory, [] {
    return std::vector<std::string>{
        R"([{"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C01","content":"one","date":700000000.25,"isPinned":true}])",
        R"([{"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C02","content":"","date":1,"isSaved":false,"imageFileName":"a.jpg"},
            {"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C03","content":"\ud83d\ude0e \ud800","date":-1e300}])",
        "[]", "[[[[{}]]]]"};
});

const Target excludedApps("excluded-apps", &readExcludedApps, [] {
    return std::vector<std::string>{
        R"([{"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C01","bundleID":"org.a.b","displayName":"A \ud83d B"}])",
        R"([{"id":"{0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C01}","bundleID":"","displayName":"","more":[1]},{}])", "[]"};
});

} // namespace
} // namespace tavrine::fuzz
