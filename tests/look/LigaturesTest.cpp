#include "look/Ligatures.h"

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

QByteArray words(std::initializer_list<int> values) {
    QByteArray bytes;
    for (const int value : values) {
        bytes += static_cast<char>(value >> 8);
        bytes += static_cast<char>(value);
    }
    return bytes;
}

/// One lookup of one subtable: 10 and 11 become 90; 10, 11 and 12 become 91; nothing begins with another glyph.
QByteArray table(int coverageFormat, bool isExtended) {
    const QByteArray header = words({1, 0, 0, 0, 10});              // the lookups begin at 10
    const QByteArray list = words({1, 4});                          // one of them, 4 behind this
    const QByteArray lookup = words({isExtended ? 7 : 4, 0, 1, 8}); // kind, flags, one subtable, 8 behind this
    const QByteArray extension = words({1, 4, 0, 8});               // the true kind, the true subtable 8 behind this
    const QByteArray ligatures = words({90, 2, 11}) + words({91, 3, 11, 12});
    const QByteArray set = words({2, 6, 12}) + ligatures; // two, 6 and 12 behind this
    const int coverage = 8 + static_cast<int>(set.size());
    const QByteArray subtable = words({1, coverage, 1, 8}) + set; // one set, 8 behind this
    return header + list + lookup + (isExtended ? extension : QByteArray()) + subtable +
           (coverageFormat == 1 ? words({1, 1, 10}) : words({2, 1, 10, 10, 0}));
}

using Found = std::optional<quint32>;

class LigaturesTest : public testing::TestWithParam<std::pair<int, bool>> {
protected:
    [[nodiscard]] QByteArray bytes() const { return table(GetParam().first, GetParam().second); }
};

TEST_P(LigaturesTest, joinWholeRunsOfGlyphs) {
    const Ligatures ligatures(bytes());
    EXPECT_EQ(ligatures.of({10, 11}), Found(90));
    EXPECT_EQ(ligatures.of({10, 11, 12}), Found(91));
}

TEST_P(LigaturesTest, leaveAllOthersApart) {
    const Ligatures ligatures(bytes());
    for (const QList<quint32> &glyphs :
         {QList<quint32>{10}, {10, 12}, {11, 10}, {13, 11}, {10, 11, 13}, {10, 11, 12, 12}, {}, {9, 11}})
        EXPECT_EQ(ligatures.of(glyphs), std::nullopt);
}

TEST_P(LigaturesTest, readNothingBeyondATableThatIsCut) {
    const QByteArray whole = bytes();
    for (qsizetype size = 0; size < whole.size(); ++size) {
        const QByteArray part(whole.constData(), size); // of its own, so that a sanitizer sees its end
        EXPECT_NE(Ligatures(part).of({10, 11, 12}), Found(92)) << size;
    }
    EXPECT_EQ(Ligatures(QByteArray()).of({10, 11}), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(EveryForm, LigaturesTest,
                         testing::Values(std::pair(1, false), std::pair(2, false), std::pair(1, true),
                                         std::pair(2, true)));

} // namespace
} // namespace tavrine::look
