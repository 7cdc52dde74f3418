#include "clipboard/ClipboardSearchRow.h"

#include <QDateTime>

#include <limits>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QString str(const char *text) {
    return QString::fromUtf8(text);
}

constexpr Date noonOfJanuary31{1769860800.0}; // 2026-01-31 12:00:00 UTC

QString date(Date moment, const char *locale, const char *zone = "UTC") {
    return abbreviatedDateWithShortenedTime(moment, QLocale(str(locale)), QTimeZone(zone));
}

ClipboardSearchRow row(const ClipboardItem &item, bool isLink = false) {
    return clipboardSearchRow(item, isLink, QLocale(str("en_US")), QTimeZone::utc());
}

ClipboardItem item(const char *content) {
    ClipboardItem made;
    made.content = str(content);
    made.date = noonOfJanuary31;
    return made;
}

TEST(ClipboardSearchRowDate, hasAShortMonthNoWeekdayAndNoSeconds) {
    EXPECT_EQ(date(noonOfJanuary31, "en_US"), str("Jan 31, 2026, 12:00 PM"));
}

TEST(ClipboardSearchRowDate, isWrittenAsTheLocaleDoes) {
    EXPECT_EQ(date(noonOfJanuary31, "en_GB"), str("31 Jan 2026, 12:00"));
    EXPECT_EQ(date(noonOfJanuary31, "de_DE"), str("31. Jan. 2026, 12:00"));
    EXPECT_EQ(date(noonOfJanuary31, "ja_JP"), str("2026年1月31日, 12:00"));
    EXPECT_EQ(date(noonOfJanuary31, "fr_FR"), str("31 janv. 2026, 12:00"));
    EXPECT_EQ(date(noonOfJanuary31, "C"), str("31 Jan 2026, 12:00"));
}

TEST(ClipboardSearchRowDate, standsInNoLocaleWithAWeekday) {
    for (const char *name : {"en_US", "en_GB", "de_DE", "fr_FR", "es_ES", "ja_JP", "zh_CN", "ko_KR", "ru_RU", "hu_HU",
                             "th_TH", "da_DK", "sv_SE", "pt_BR", "lt_LT", "C"}) {
        const QLocale locale(str(name));
        const QString text = abbreviatedDateWithShortenedTime(noonOfJanuary31, locale, QTimeZone::utc());
        EXPECT_FALSE(text.contains(locale.dayName(6, QLocale::LongFormat))) << text.toStdString();
        EXPECT_FALSE(text.startsWith(u' ') || text.startsWith(u',')) << text.toStdString();
        EXPECT_TRUE(text.contains(locale.toString(2026).remove(locale.groupSeparator()))) << text.toStdString();
    }
}

TEST(ClipboardSearchRowDate, isThatOfTheTimeZone) {
    EXPECT_EQ(date(noonOfJanuary31, "en_US", "Asia/Tokyo"), str("Jan 31, 2026, 9:00 PM"));
    EXPECT_EQ(date(noonOfJanuary31, "en_US", "Pacific/Kiritimati"), str("Feb 1, 2026, 2:00 AM"));
}

TEST(ClipboardSearchRowDate, cutsTheSecondsOff) {
    EXPECT_EQ(date({noonOfJanuary31.secondsSince1970 + 59.999}, "en_US"), str("Jan 31, 2026, 12:00 PM"));
    EXPECT_EQ(date({noonOfJanuary31.secondsSince1970 + 60}, "en_US"), str("Jan 31, 2026, 12:01 PM"));
    EXPECT_EQ(date({noonOfJanuary31.secondsSince1970 - 0.001}, "en_US"), str("Jan 31, 2026, 11:59 AM"));
}

TEST(ClipboardSearchRowDate, survivesEveryStoredNumber) {
    EXPECT_EQ(date({std::numeric_limits<double>::infinity()}, "en_US"), str("Jan 1, 4001, 12:00 AM"));
    EXPECT_EQ(date({1e300}, "en_US"), str("Jan 1, 4001, 12:00 AM"));
    EXPECT_EQ(date({-1e300}, "en_US"), str("Jan 1, 0001, 12:00 AM"));
    EXPECT_EQ(date({std::numeric_limits<double>::quiet_NaN()}, "en_US"), str("Jan 1, 1970, 12:00 AM"));
}

TEST(ClipboardSearchRow, ofATextReadsAsTheText) {
    EXPECT_EQ(row(item("hello")), (ClipboardSearchRow{str("hello"), str("Jan 31, 2026, 12:00 PM"), str("doc.text"),
                                                      str("Pin snippet"), str("Add to My Saved"), str("bookmark")}));
}

TEST(ClipboardSearchRow, ofAnyFileIsAScreenshot) {
    ClipboardItem image = item("Copied Image");
    image.imageFileName = str("a.png");
    EXPECT_EQ(row(image).title, str("Screenshot"));
    EXPECT_EQ(row(image).icon, str("photo"));
    image.imageFileName = str("a.mp4");
    EXPECT_EQ(row(image).title, str("Screenshot"));
    EXPECT_EQ(row(image).icon, str("photo"));
}

TEST(ClipboardSearchRow, tellsThatAnItemIsSavedOrPinnedInPlaceOfItsDate) {
    ClipboardItem snippet = item("a");
    snippet.isPinned = true;
    EXPECT_EQ(row(snippet).subtitle, str("Pinned snippet"));
    EXPECT_EQ(row(snippet).pinToolTip, str("Remove pin"));
    snippet.isSaved = true;
    EXPECT_EQ(row(snippet).subtitle, str("My Saved"));
    EXPECT_EQ(row(snippet).savedToolTip, str("Remove from My Saved"));
    EXPECT_EQ(row(snippet).savedSymbol, str("bookmark.fill"));
}

TEST(ClipboardSearchRow, hasTheFirstIconThatApplies) {
    ClipboardItem all = item("https://me@example.com");
    all.isSaved = all.isPinned = true;
    all.imageFileName = str("a.png");
    EXPECT_EQ(row(all, true).icon, str("bookmark.fill"));
    all.isSaved = false;
    EXPECT_EQ(row(all, true).icon, str("star.fill"));
    all.isPinned = false;
    EXPECT_EQ(row(all, true).icon, str("photo"));
    all.imageFileName.reset();
    EXPECT_EQ(row(all, true).icon, str("envelope"));
    EXPECT_EQ(row(item("example.com"), true).icon, str("link"));
    EXPECT_EQ(row(item("example"), false).icon, str("doc.text"));
}

} // namespace
} // namespace tavrine
