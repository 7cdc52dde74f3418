// The old history is JSON that another version, or anyone, wrote into the preferences.

#include "clipboard/OldHistory.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto items = tavrine::decodeOldHistory(json);
    if (!items)
        return 0;
    for (const tavrine::ClipboardItem &item : *items) {
        const bool isSound = std::isfinite(item.date.secondsSince1970) && item.content.isValidUtf16() &&
                             !(item.content.isEmpty() && item.imageFileName);
        if (!isSound)
            std::abort();
    }
    return 0;
}

extern "C" const char *const fuzzSeeds[] = {
    R"([{"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C01","content":"one","date":700000000.25,"isPinned":true}])",
    R"([{"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C02","content":"","date":1,"isSaved":false,"imageFileName":"a.jpg"},
        {"id":"0FBD2C0E-1B0A-4C50-9AB5-1C1F2B0A9C03","content":"\ud83d\ude0e \ud800","date":-1e300}])",
    "[]",
    "[[[[{}]]]]",
    nullptr,
};
