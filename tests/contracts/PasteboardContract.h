#pragma once

#include "ports/Pasteboard.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <ostream>

#include <gtest/gtest.h>

namespace tavrine {

/// A pasteboard together with the other programs on its desktop, played by the test.
class PasteboardWorld {
public:
    virtual ~PasteboardWorld() = default;
    virtual Pasteboard &pasteboard() = 0;

    /// Another program copies.
    virtual void copyText(const QString &text) = 0;
    virtual void copyImage(const QImage &image, const std::optional<QString> &text) = 0;
    /// Another program copies text as the types named in `pasteboardType`, which carry it in plain form too.
    virtual void copyTyped(const QStringList &types, const QString &text) = 0;
    /// The program that copied empties the clipboard on purpose.
    virtual void clear() = 0;
    /// The program that copied ends, and all that follows from it has happened.
    virtual void endOwner() = 0;
    /// A program claims the clipboard and never answers.
    virtual void claimWithoutAnswer() = 0;
    /// A program claims the clipboard, lists text, and hangs when asked for it.
    virtual void claimTextWithoutContents() = 0;

    /// Waits until the count has moved on to `count` or past it; false when it does not within a bounded time.
    virtual bool waitForCount(int count) = 0;
    /// Lets everything that is under way come to its end.
    virtual void settle() = 0;
};

struct PasteboardWorldMaker {
    const char *name;
    std::unique_ptr<PasteboardWorld> (*make)();
};
inline void PrintTo(const PasteboardWorldMaker &maker, std::ostream *stream) {
    *stream << maker.name;
}

/// The promises of `Pasteboard`, by their numbers.
class PasteboardContract : public testing::TestWithParam<PasteboardWorldMaker> {
protected:
    Pasteboard &pasteboard() { return m_world->pasteboard(); }
    PasteboardWorld &world() { return *m_world; }
    /// The next change has come.
    [[nodiscard]] bool waitForChange(int before) { return m_world->waitForCount(before + 1); }

    static QImage picture(int width = 3, int height = 2) {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(QColor(200, 30, 40));
        return image;
    }
    static bool has(const std::optional<QStringList> &types, const char *type) {
        return types && types->contains(QLatin1String(type));
    }

private:
    std::unique_ptr<PasteboardWorld> m_world = GetParam().make();
};

TEST_P(PasteboardContract, anEmptyClipboardHasNoTypesNoTextAndNoImage) {
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(pasteboard().string());
    EXPECT_FALSE(pasteboard().image());
}

// 1
TEST_P(PasteboardContract, theCountGrowsByOneForEachCopyOfAnotherProgram) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("one"));
    ASSERT_TRUE(waitForChange(start));
    EXPECT_EQ(pasteboard().changeCount(), start + 1);
    world().copyText(QStringLiteral("two"));
    ASSERT_TRUE(waitForChange(start + 1));
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), start + 2);
}

TEST_P(PasteboardContract, theSameTextCopiedAgainIsAChange) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("same"));
    ASSERT_TRUE(waitForChange(start));
    world().copyText(QStringLiteral("same"));
    EXPECT_TRUE(waitForChange(start + 1));
}

TEST_P(PasteboardContract, theTextIsThereWhenTheCountMoves) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("Grüße, 世界 🌍\n"));
    ASSERT_TRUE(waitForChange(start));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Grüße, 世界 🌍\n"));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::string));
    EXPECT_FALSE(pasteboard().image());
}

TEST_P(PasteboardContract, theImageAndTheTextBesideItAreThereWhenTheCountMoves) {
    const int start = pasteboard().changeCount();
    world().copyImage(picture(), QStringLiteral("caption"));
    ASSERT_TRUE(waitForChange(start));
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->convertToFormat(QImage::Format_RGB32), picture());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("caption"));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::png));
}

TEST_P(PasteboardContract, emptyingOnPurposeIsAChangeToNothingWhereThatIsTold) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("text"));
    ASSERT_TRUE(waitForChange(start));
    world().settle();
    world().clear();
    if (!pasteboard().tellsEmptying()) {
        world().settle();
        EXPECT_EQ(pasteboard().changeCount(), start + 1);
        EXPECT_EQ(pasteboard().string(), QStringLiteral("text")) << "as if its owner had ended";
        return;
    }
    ASSERT_TRUE(waitForChange(start + 1));
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), start + 2);
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(pasteboard().string());
}

TEST_P(PasteboardContract, anOwnerThatNeverAnswersMovesTheCountOnceToNothing) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("text"));
    ASSERT_TRUE(waitForChange(start));
    world().claimWithoutAnswer();
    ASSERT_TRUE(waitForChange(start + 1));
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), start + 2);
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(pasteboard().string());
    EXPECT_FALSE(pasteboard().image());
}

TEST_P(PasteboardContract, aChangeOfAnotherProgramIsToldOnceItsContentsAreHere) {
    QList<std::pair<int, QString>> told;
    pasteboard().setOnForeignChange([this, &told] {
        told.append({pasteboard().changeCount(), pasteboard().string().value_or(QString())});
    });
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("one"));
    ASSERT_TRUE(waitForChange(start));
    world().copyText(QStringLiteral("two"));
    ASSERT_TRUE(waitForChange(start + 1));
    world().settle();
    EXPECT_EQ(told,
              (QList<std::pair<int, QString>>{{start + 1, QStringLiteral("one")}, {start + 2, QStringLiteral("two")}}));
    pasteboard().setOnForeignChange({});
}

TEST_P(PasteboardContract, anOwnWriteIsNotToldAsOneOfAnotherProgram) {
    int told = 0;
    pasteboard().setOnForeignChange([&told] { ++told; });
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("mine"));
    world().settle();
    EXPECT_EQ(told, 0);
    pasteboard().setOnForeignChange({});
}

// 2
TEST_P(PasteboardContract, nothingOfTheOldContentsIsLeftAfterAChange) {
    const int start = pasteboard().changeCount();
    world().copyImage(picture(), QStringLiteral("caption"));
    ASSERT_TRUE(waitForChange(start));
    world().copyText(QStringLiteral("text alone"));
    ASSERT_TRUE(waitForChange(start + 1));
    EXPECT_FALSE(pasteboard().image());
    EXPECT_FALSE(has(pasteboard().types(), pasteboardType::png));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("text alone"));
}

TEST_P(PasteboardContract, typesAreToldByTheirCommonNames) {
    const int start = pasteboard().changeCount();
    world().copyTyped({QLatin1String(pasteboardType::string), QLatin1String(pasteboardType::html),
                       QLatin1String(pasteboardType::rtf), QStringLiteral("application/x-something")},
                      QStringLiteral("text"));
    ASSERT_TRUE(waitForChange(start));
    EXPECT_EQ(pasteboard().types(),
              QStringList({QLatin1String(pasteboardType::string), QLatin1String(pasteboardType::html),
                           QLatin1String(pasteboardType::rtf), QStringLiteral("application/x-something")}));
}

TEST_P(PasteboardContract, concealedAndAutoGeneratedTypesAreTold) {
    const int start = pasteboard().changeCount();
    world().copyTyped({QLatin1String(pasteboardType::string), QLatin1String(pasteboardType::concealed)},
                      QStringLiteral("secret"));
    ASSERT_TRUE(waitForChange(start));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::concealed));
    world().copyTyped({QLatin1String(pasteboardType::string), QLatin1String(pasteboardType::autoGenerated)},
                      QStringLiteral("generated"));
    ASSERT_TRUE(waitForChange(start + 1));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::autoGenerated));
}

// 3
TEST_P(PasteboardContract, theContentsOutliveTheirOwnerAndThatIsNoChange) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("kept"));
    ASSERT_TRUE(waitForChange(start));
    world().settle();
    world().endOwner();
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), start + 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("kept"));
    world().copyText(QStringLiteral("next"));
    EXPECT_TRUE(waitForChange(start + 1));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("next"));
}

// 4
TEST_P(PasteboardContract, clearingMovesTheCountByOneAtOnceAndReturnsIt) {
    const int start = pasteboard().changeCount();
    world().copyText(QStringLiteral("text"));
    ASSERT_TRUE(waitForChange(start));
    EXPECT_EQ(pasteboard().clearContents(), start + 2);
    EXPECT_EQ(pasteboard().changeCount(), start + 2);
    EXPECT_FALSE(pasteboard().types());
    EXPECT_FALSE(pasteboard().string());
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), start + 2);
}

TEST_P(PasteboardContract, ownWritesCanBeReadAtOnceAndCountNoMore) {
    const int count = pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("mine"));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("mine"));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::string));
    EXPECT_EQ(pasteboard().changeCount(), count);
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), count);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("mine"));
}

TEST_P(PasteboardContract, anOwnImageCanBeReadBack) {
    pasteboard().clearContents();
    pasteboard().writeImage(picture(7, 5));
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(*pasteboard().image(), picture(7, 5));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::png));
    EXPECT_FALSE(pasteboard().string());
}

TEST_P(PasteboardContract, anOwnImageWithoutPixelsIsNone) {
    pasteboard().clearContents();
    pasteboard().writeImage(QImage());
    EXPECT_FALSE(pasteboard().image());
    EXPECT_FALSE(pasteboard().types());
}

TEST_P(PasteboardContract, anOwnEmptyTextIsNone) {
    pasteboard().clearContents();
    pasteboard().setString(QString());
    EXPECT_FALSE(pasteboard().string());
    EXPECT_FALSE(pasteboard().types());
}

TEST_P(PasteboardContract, anOwnFileIsNoTextHereAndAPictureInItIsTheImage) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a picture.png"));
    ASSERT_TRUE(picture(4, 4).save(file));
    pasteboard().clearContents();
    pasteboard().writeFileUrls({QUrl::fromLocalFile(file)});
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::fileUrl));
    EXPECT_FALSE(has(pasteboard().types(), pasteboardType::string));
    EXPECT_FALSE(pasteboard().string());
    const int count = pasteboard().changeCount();
    ASSERT_TRUE(QTest::qWaitFor([this] { return pasteboard().image().has_value(); }));
    EXPECT_EQ(pasteboard().changeCount(), count);
    EXPECT_EQ(pasteboard().image()->size(), QSize(4, 4));
}

TEST_P(PasteboardContract, aCopyOfAnotherProgramReplacesWhatWasWritten) {
    const int count = pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("mine"));
    world().settle();
    world().copyText(QStringLiteral("theirs"));
    ASSERT_TRUE(waitForChange(count));
    EXPECT_EQ(pasteboard().changeCount(), count + 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("theirs"));
}

TEST_P(PasteboardContract, twoWritesInOneTurnAreTwoChangesAndTheLastOneStands) {
    const int first = pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("first"));
    EXPECT_EQ(pasteboard().clearContents(), first + 1);
    pasteboard().setString(QStringLiteral("second"));
    world().settle();
    EXPECT_EQ(pasteboard().changeCount(), first + 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("second"));
}

// 5
TEST_P(PasteboardContract, contentsThatDoNotArriveAreAbsentThoughTheirTypeIsTold) {
    const int start = pasteboard().changeCount();
    world().claimTextWithoutContents();
    ASSERT_TRUE(waitForChange(start));
    EXPECT_TRUE(has(pasteboard().types(), pasteboardType::string));
    EXPECT_FALSE(pasteboard().string());
    world().copyText(QStringLiteral("next"));
    ASSERT_TRUE(waitForChange(start + 1));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("next"));
}

TEST_P(PasteboardContract, anEmptyTextIsAbsent) {
    const int start = pasteboard().changeCount();
    world().copyText(QString());
    ASSERT_TRUE(waitForChange(start));
    EXPECT_FALSE(pasteboard().string());
}

} // namespace tavrine
