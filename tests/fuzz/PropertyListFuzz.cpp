// Any bytes as preferences, in XML and in binary form; what could be read is written and read again.

#include "FuzzTarget.h"
#include "base/PropertyList.h"

#include <QByteArray>

namespace tavrine::fuzz {
namespace {

void readPreferences(Bytes input) {
    const auto list = PropertyList::read(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    if (!list)
        return;
    const auto text = list->xml();
    if (!text)
        return; // larger than the limit once spelled out
    const auto again = PropertyList::read(*text);
    require(again && again->keys() == list->keys());
    for (const QString &key : list->keys()) {
        require(list->isSame(key, *again));
        require(list->value(key).has_value() == again->value(key).has_value());
    }
}

const Target propertyList("property-list", &readPreferences, [] {
    return std::vector<std::string>{
        R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>featureLoFi</key><true/><key>HotkeyCharacter</key><string>v &amp; w</string><key>count</key><integer>-7</integer>
<key>ratio</key><real>0.25</real><key>LastLaunchDate</key><date>2026-01-31T12:00:00Z</date>
<key>ExcludedAppsV2</key><data>W10=</data><key>list</key><array><string>a</string><array/></array>
<key>inner</key><dict><key>TavrineSecondsSince1970</key><real>1.5</real></dict>
</dict></plist>)",
        "<plist><dict><key>a</key><string>b</string></dict></plist>", "<plist><array/></plist>", "bplist00",
        // {"a": true} in binary form
        std::string("bplist00\xD1\x01\x02\x51\x61\x09\x08\x0B\x0D\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0\0"
                    "\0\0\0\0\0\0\0\x0E",
                    46)};
});

} // namespace
} // namespace tavrine::fuzz
