#include "base/PropertyList.h"

#include "base/PropertyListCheck.h"

#include <bit>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::HasSubstr;

QByteArray inPlist(const QByteArray &content) {
    return "<plist version=\"1.0\">" + content + "</plist>";
}

/// A binary property list of the given objects, the first of which is the root. References take one byte each.
QByteArray binary(const std::vector<QByteArray> &objects) {
    QByteArray file = "bplist00";
    QByteArray offsets;
    for (const QByteArray &object : objects) {
        const auto offset = static_cast<quint32>(file.size());
        for (int shift = 24; shift >= 0; shift -= 8)
            offsets.append(static_cast<char>(offset >> shift & 0xffU));
        file += object;
    }
    const auto table = static_cast<quint64>(file.size());
    const auto word = [](quint64 value) {
        QByteArray bytes;
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes.append(static_cast<char>(value >> shift & 0xffU));
        return bytes;
    };
    file += offsets + QByteArray(6, '\0') + '\x04' + '\x01';
    return file + word(objects.size()) + word(0) + word(table);
}

QByteArray bytes(std::initializer_list<int> values) {
    QByteArray result;
    for (const int value : values)
        result.append(static_cast<char>(value));
    return result;
}

QByteArray realBytes(int marker, double value) {
    QByteArray result = bytes({marker});
    const auto bits = std::bit_cast<quint64>(value);
    for (int shift = 56; shift >= 0; shift -= 8)
        result.append(static_cast<char>(bits >> shift & 0xffU));
    return result;
}

/// A dictionary with the one key "k", over `value`, which is the third object.
std::vector<QByteArray> dictionaryOf(const QByteArray &value) {
    return {bytes({0xd1, 1, 2}), bytes({0x51, 'k'}), value};
}

const QString k = QStringLiteral("k");

TEST(PropertyList, theEmptyListIsADictionary) {
    EXPECT_TRUE(PropertyList().keys().isEmpty());
    EXPECT_THAT(PropertyList().xml()->toStdString(), HasSubstr("<dict/>"));
}

TEST(PropertyList, aBinaryListIsReadToo) {
    const auto list = PropertyList::read(binary(dictionaryOf(bytes({0x09}))));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->value(k), UserDefaults::Value(true));
}

TEST(PropertyList, aBinaryDateIsKeptToTheSecond) {
    const auto list = PropertyList::read(binary(dictionaryOf(realBytes(0x33, 100.5))));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->value(k), UserDefaults::Value(Date{Date::referenceDate + 100}));
    EXPECT_EQ(PropertyList::read(*list->xml())->value(k), UserDefaults::Value(Date{Date::referenceDate + 100}));
    EXPECT_THAT(list->xml()->toStdString(), HasSubstr("<date>2001-01-01T00:01:40Z</date>"));
}

TEST(PropertyList, aBinaryStringWithControlCharactersIsKeptInXml) {
    const auto list = PropertyList::read(binary(dictionaryOf(bytes({0x53, 'a', 0x01, 'b'}))));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->value(k), UserDefaults::Value(QStringLiteral("a\u0001b")));
    EXPECT_EQ(PropertyList::read(*list->xml())->value(k), UserDefaults::Value(QStringLiteral("a\u0001b")));
}

TEST(PropertyList, aKeyThatXmlCannotCarryMakesTheListUnreadable) {
    auto objects = dictionaryOf(bytes({0x09}));
    objects[1] = bytes({0x51, 0x01});
    EXPECT_FALSE(PropertyList::read(binary(objects)));
}

TEST(PropertyList, aNullInABinaryStringMakesTheListUnreadable) {
    auto objects = dictionaryOf(bytes({0x09}));
    objects[1] = bytes({0x52, 'k', 0});
    EXPECT_FALSE(PropertyList::read(binary(objects)));
    objects[1] = bytes({0x61, 0, 0});
    EXPECT_FALSE(PropertyList::read(binary(objects)));
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(bytes({0x52, 'a', 0})))));
    EXPECT_TRUE(PropertyList::read(binary(dictionaryOf(bytes({0x61, 1, 0})))));
}

TEST(PropertyList, aKeyThatIsThereTwiceMakesTheBinaryListUnreadable) {
    EXPECT_FALSE(PropertyList::read(binary({bytes({0xd2, 1, 1, 2, 2}), bytes({0x51, 'k'}), bytes({0x09})})));
}

TEST(PropertyList, aBinaryUidBecomesWhatXmlHasForIt) {
    const auto list = PropertyList::read(binary(dictionaryOf(bytes({0x80, 7}))));
    ASSERT_TRUE(list);
    const auto again = PropertyList::read(*list->xml());
    ASSERT_TRUE(again);
    EXPECT_TRUE(list->isSame(k, *again));
    EXPECT_THAT(list->xml()->toStdString(), HasSubstr("<key>CF$UID</key>"));
}

TEST(PropertyList, aBinaryDateBeyondAnyCalendarIsRefused) {
    EXPECT_TRUE(PropertyList::read(binary(dictionaryOf(realBytes(0x33, 9.9e10)))));
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(realBytes(0x33, 1e11)))));
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(realBytes(0x33, std::numeric_limits<double>::quiet_NaN())))));
}

/// The library has no such years, and writes others in their place.
TEST(PropertyList, aBinaryDateBeforeTheFirstYearIsRefused) {
    constexpr double firstYear = -730'485.0 * 86'400;
    const auto list = PropertyList::read(binary(dictionaryOf(realBytes(0x33, firstYear))));
    ASSERT_TRUE(list);
    EXPECT_THAT(list->xml()->toStdString(), HasSubstr("<date>1-01-01T00:00:00Z</date>"));
    EXPECT_TRUE(list->isSame(k, *PropertyList::read(*list->xml())));
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(realBytes(0x33, firstYear - 1)))));
}

TEST(PropertyList, aDateThatTheLibraryWouldChangeIsRefused) {
    const auto read = [](const char *text) {
        return PropertyList::read(inPlist(QByteArray("<dict><key>k</key><date>") + text + "</date></dict>"));
    };
    for (const char *kept : {"2026-01-31T12:00:00Z", "0013-01-31T12:00:00Z", "13-01-31T12:00:00Z",
                             "9999-12-31T23:59:59Z", "2024-02-29T00:00:00Z", "<![CDATA[2024-02-29T00:00:00Z]]>"}) {
        const auto list = read(kept);
        ASSERT_TRUE(list) << kept;
        EXPECT_TRUE(list->isSame(k, *PropertyList::read(*list->xml()))) << kept;
    }
    for (const char *changed : {"0+013-01-31T12:00:00Z", "10000-01-31T12:00:00Z", "-100-01-31T12:00:00Z",
                                "0000-01-31T12:00:00Z", "2026-13-31T12:00:00Z", "2026-02-29T12:00:00Z",
                                "2026-01-31T24:00:00Z", "2026-01-31T12:60:00Z", "2026-01-31T12:00:60Z", "2026-01-31",
                                "x", "", "2026-<!-- no -->01-31T12:00:00Z", "2026-01-31T12:00:00Z<true/>"})
        EXPECT_FALSE(read(changed)) << changed;
}

TEST(PropertyList, aReferenceOutsideTheTableIsRefused) {
    auto objects = dictionaryOf(bytes({0x09}));
    objects[0] = bytes({0xd1, 1, 3});
    EXPECT_FALSE(PropertyList::read(binary(objects)));
}

TEST(PropertyList, anObjectThatContainsItselfIsRefused) {
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(bytes({0xa1, 0})))));
    EXPECT_FALSE(PropertyList::read(binary(dictionaryOf(bytes({0xa1, 2})))));
}

TEST(PropertyList, objectsThatMultiplyWhenSpelledOutAreRefused) {
    // Each array holds the next one ten times.
    const auto bomb = [](int levels) {
        std::vector<QByteArray> objects = {bytes({0xd1, 1, 2}), bytes({0x51, 'k'})};
        for (int i = 0; i < levels; ++i) {
            const auto next = static_cast<char>(objects.size() + 1);
            objects.push_back(bytes({0xaa}) + QByteArray(10, next));
        }
        objects.push_back(bytes({0x09}));
        return binary(objects);
    };
    EXPECT_TRUE(isSafePropertyList(bomb(5)));
    EXPECT_FALSE(isSafePropertyList(bomb(6)));
    EXPECT_FALSE(PropertyList::read(bomb(30)));
}

TEST(PropertyList, depthIsLimitedInBoth) {
    const auto xml = [](int arrays) {
        return inPlist("<dict><key>k</key>" + QByteArray("<array>").repeated(arrays) +
                       QByteArray("</array>").repeated(arrays) + "</dict>");
    };
    constexpr int around = 2; // the plist and the dictionary
    EXPECT_TRUE(PropertyList::read(xml(deepestPropertyList - around)));
    EXPECT_FALSE(PropertyList::read(xml(deepestPropertyList - around + 1)));
    EXPECT_FALSE(PropertyList::read(xml(1'000'000)));

    const auto nested = [](int arrays) {
        std::vector<QByteArray> objects = {bytes({0xd1, 1, 2}), bytes({0x51, 'k'})};
        for (int i = 0; i < arrays - 1; ++i)
            objects.push_back(bytes({0xa1, static_cast<int>(objects.size()) + 1}));
        objects.push_back(bytes({0xa0}));
        return binary(objects);
    };
    EXPECT_TRUE(PropertyList::read(nested(deepestPropertyList - 1)));
    EXPECT_FALSE(PropertyList::read(nested(deepestPropertyList)));
}

TEST(PropertyList, xmlWithTricksIsRefused) {
    for (const char *trick : {
             "<!DOCTYPE plist [<!ENTITY a \"<array>\">]><plist><dict/></plist>",
             "<?x \" ?><plist><dict/></plist>",
             "<plist><dict><key>k</key><string>&a;</string></dict></plist>",
             "<plist><dict><key>k</key><string>a\x01z</string></dict></plist>",
             "<plist><dict><key>k</key><key>l</key><true/></dict></plist>",
             "<plist><dict><key>k</key></dict></plist>",
             "<plist><dict/></plist>tail",
         })
        EXPECT_FALSE(PropertyList::read(trick)) << trick;
    EXPECT_TRUE(
        PropertyList::read("<!-- why --><plist><dict><key>k</key><string><![CDATA[<]]></string></dict></plist>"));
}

TEST(PropertyList, whatOnlyLooksLikeAMarkedValueIsADictionary) {
    for (const char *content : {
             "<key>TavrineUTF16String</key><string>text</string>",
             "<key>TavrineUTF16String</key><data>YQ==</data>", // half a code unit
             "<key>TavrineUTF16String</key><data>YWE=</data><key>more</key><true/>",
             "<key>TavrineSecondsSince1970</key><integer>1</integer>",
         }) {
        const auto list =
            PropertyList::read(inPlist("<dict><key>k</key><dict>" + QByteArray(content) + "</dict></dict>"));
        ASSERT_TRUE(list) << content;
        EXPECT_TRUE(list->contains(k));
        EXPECT_EQ(list->value(k), std::nullopt) << content;
    }
}

TEST(PropertyList, anArrayWithAnItemOfAnotherTypeIsNoArrayOfOurs) {
    const auto list = PropertyList::read(inPlist("<dict><key>k</key><array><true/><dict/></array></dict>"));
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->contains(k));
    EXPECT_EQ(list->value(k), std::nullopt);
}

TEST(PropertyList, sameMeansSameTypeAndContent) {
    PropertyList one;
    PropertyList other;
    EXPECT_TRUE(one.isSame(k, other));
    one.set(k, UserDefaults::Value(qint64{1}));
    EXPECT_FALSE(one.isSame(k, other));
    other.set(k, UserDefaults::Value(1.0));
    EXPECT_FALSE(one.isSame(k, other));
    other.set(k, UserDefaults::Value(qint64{1}));
    EXPECT_TRUE(one.isSame(k, other));
    other.remove(k);
    EXPECT_FALSE(one.isSame(k, other));
}

} // namespace
} // namespace tavrine
