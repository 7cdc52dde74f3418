#include "base/Uuid.h"

#include <QSet>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const QString sample = QStringLiteral("0F8FAD5B-D9CB-469F-A165-70867728950E");

TEST(Uuid, theTextFormIsUpperCaseWithHyphensAndWithoutBraces) {
    EXPECT_EQ(uuidString(QUuid(QStringLiteral("{0f8fad5b-d9cb-469f-a165-70867728950e}"))), sample);
}

TEST(Uuid, eitherCaseIsRead) {
    EXPECT_EQ(uuidFromString(sample), QUuid(sample));
    EXPECT_EQ(uuidFromString(sample.toLower()), QUuid(sample));
}

TEST(Uuid, nothingElseIsRead) {
    QString noHyphens = sample;
    noHyphens.remove(QLatin1Char('-'));
    QString wrongDigit = sample;
    wrongDigit[0] = QLatin1Char('G');
    for (const QString &text : {QString(), QLatin1Char('{') + sample + QLatin1Char('}'), noHyphens, wrongDigit,
                                sample.chopped(1), sample + QLatin1Char('0'), sample + QLatin1Char(' ')})
        EXPECT_EQ(uuidFromString(text), std::nullopt) << text.toStdString();
}

TEST(Uuid, theNullUuidIsAUuid) {
    EXPECT_EQ(uuidFromString(QStringLiteral("00000000-0000-0000-0000-000000000000")), QUuid());
}

TEST(Uuid, freshOnesAreReadableAndDiffer) {
    QSet<QString> seen;
    for (int i = 0; i < 100; ++i) {
        const QString text = freshUuidString();
        EXPECT_TRUE(uuidFromString(text));
        EXPECT_EQ(text, text.toUpper());
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 100);
}

} // namespace
} // namespace tavrine
