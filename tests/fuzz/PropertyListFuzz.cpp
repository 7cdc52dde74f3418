// Reads any bytes as preferences, and what could be read is written and read again. To be linked with tavrine_base,
// Qt6::Core and the fuzzing driver; the corpus may be any property lists, in XML and in binary form.
#include "base/PropertyList.h"

#include <QByteArray>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using tavrine::PropertyList;
    const auto list =
        PropertyList::read(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    if (!list)
        return 0;
    const auto text = list->xml();
    if (!text)
        return 0; // larger than the limit once spelled out
    const auto again = PropertyList::read(*text);
    if (!again || again->keys() != list->keys())
        std::abort();
    for (const QString &key : list->keys()) {
        if (!list->isSame(key, *again) || list->value(key).has_value() != again->value(key).has_value())
            std::abort();
    }
    return 0;
}

extern "C" const char *const fuzzSeeds[] = {
    R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>featureLoFi</key><true/><key>HotkeyCharacter</key><string>v &amp; w</string><key>count</key><integer>-7</integer>
<key>ratio</key><real>0.25</real><key>LastLaunchDate</key><date>2026-01-31T12:00:00Z</date>
<key>ExcludedAppsV2</key><data>W10=</data><key>list</key><array><string>a</string><array/></array>
<key>inner</key><dict><key>TavrineSecondsSince1970</key><real>1.5</real></dict>
</dict></plist>)",
    "<plist><dict><key>a</key><string>b</string></dict></plist>",
    "<plist><array/></plist>",
    "bplist00",
    nullptr,
};
