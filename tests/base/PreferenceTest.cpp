#include "base/Preference.h"

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"

#include <QTemporaryDir>

#include <array>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

enum class Drink { tea, coffee, milk };
constexpr std::array drinks{StoredText{Drink::tea, "Tea"}, StoredText{Drink::coffee, "Coffee"}};
constexpr std::array words{u"a", u"\u00e9"};

constexpr Preference<bool> flag{"flag", true};
constexpr Preference<qint64> number{"number", 7};
constexpr Preference<QString> phrase{"text", "fallback"};
constexpr Preference<QString> textWithout{"textWithout"};
constexpr Preference<QByteArray> data{"data"};
constexpr Preference<Date> date{"date", Date::distantPast()};
constexpr Preference<QStringList> texts{"list", words};
constexpr Preference<Drink> drink{"drink", Drink::coffee, drinks};

class PreferenceTest : public testing::Test {
protected:
    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("preferences.plist")), time, center};
};

TEST_F(PreferenceTest, whatIsNotStoredIsTheFallback) {
    EXPECT_TRUE(flag.get(defaults));
    EXPECT_EQ(number.get(defaults), 7);
    EXPECT_EQ(phrase.get(defaults), QStringLiteral("fallback"));
    EXPECT_EQ(textWithout.get(defaults), QString());
    EXPECT_EQ(data.get(defaults), QByteArray());
    EXPECT_EQ(date.get(defaults), Date::distantPast());
    EXPECT_EQ(texts.get(defaults), (QStringList{QStringLiteral("a"), QStringLiteral("é")}));
    EXPECT_EQ(drink.get(defaults), Drink::coffee);
    EXPECT_EQ(flag.stored(defaults), std::nullopt);
    EXPECT_EQ(texts.stored(defaults), std::nullopt);
    EXPECT_EQ(drink.stored(defaults), std::nullopt);
}

TEST_F(PreferenceTest, whatIsStoredComesBackFromUnderItsKey) {
    flag.set(defaults, false);
    number.set(defaults, 8);
    phrase.set(defaults, QString());
    data.set(defaults, "bytes");
    date.set(defaults, Date{1769860800.0});
    texts.set(defaults, {});
    drink.set(defaults, Drink::tea);
    EXPECT_FALSE(flag.get(defaults));
    EXPECT_EQ(number.get(defaults), 8);
    EXPECT_EQ(phrase.get(defaults), QString()) << "an empty text is a text";
    EXPECT_EQ(data.get(defaults), "bytes");
    EXPECT_EQ(date.get(defaults), Date{1769860800.0});
    EXPECT_EQ(texts.get(defaults), QStringList()) << "an empty list is a list";
    EXPECT_EQ(drink.get(defaults), Drink::tea);
    EXPECT_EQ(defaults.get<QString>(QStringLiteral("drink")), QStringLiteral("Tea"));
}

TEST_F(PreferenceTest, aValueOfAnotherTypeCountsAsNothing) {
    for (const char *key : {"flag", "number", "text", "data", "date", "list", "drink"})
        defaults.set(QLatin1String(key), 0.5);
    EXPECT_TRUE(flag.get(defaults));
    EXPECT_EQ(number.get(defaults), 7);
    EXPECT_EQ(phrase.get(defaults), QStringLiteral("fallback"));
    EXPECT_EQ(data.stored(defaults), std::nullopt);
    EXPECT_EQ(date.get(defaults), Date::distantPast());
    EXPECT_EQ(texts.stored(defaults), std::nullopt);
    EXPECT_EQ(drink.get(defaults), Drink::coffee);
}

TEST_F(PreferenceTest, aListWithSomethingElseThanTextsCountsAsNothing) {
    defaults.set(QStringLiteral("list"),
                 UserDefaults::Array{UserDefaults::Value(QStringLiteral("b")), UserDefaults::Value(true)});
    EXPECT_EQ(texts.stored(defaults), std::nullopt);
}

TEST_F(PreferenceTest, aTextThatIsNoChoiceKeepsTheFallbackAndTheText) {
    for (const QString &unknown : {QStringLiteral("tea"), QStringLiteral("Milk"), QString()}) {
        defaults.set(QStringLiteral("drink"), unknown);
        EXPECT_EQ(drink.get(defaults), Drink::coffee);
        EXPECT_EQ(defaults.get<QString>(QStringLiteral("drink")), unknown);
    }
}

TEST_F(PreferenceTest, aRemovedValueIsTheFallbackAgain) {
    flag.set(defaults, false);
    drink.set(defaults, Drink::tea);
    flag.remove(defaults);
    drink.remove(defaults);
    EXPECT_TRUE(flag.get(defaults));
    EXPECT_EQ(drink.get(defaults), Drink::coffee);
    EXPECT_FALSE(defaults.contains(QStringLiteral("flag")));
}

} // namespace
} // namespace tavrine
