#include "adapters/x11/X11PasteboardFixture.h"
#include "ports/Pasteboard.h"

#include <QTemporaryDir>
#include <QUrl>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::Not;

constexpr auto copiedFiles = "x-special/gnome-copied-files";
constexpr auto cutMark = "application/x-kde-cutselection";

/// File managers whose files wait to be moved. One of them takes the first program that asks for the list with the verb
/// for the one that moves them, and gives the clipboard up.
class CutFiles : public X11PasteboardFixture {
protected:
    CutFiles() {
        start();
        EXPECT_TRUE(coloured(12, 11).save(m_path));
    }
    [[nodiscard]] QByteArray uri() const { return QUrl::fromLocalFile(m_path).toEncoded(); }
    /// All strings end in a NUL, as that program has it.
    [[nodiscard]] TestOwner::Contents cut(const QByteArray &mark) const {
        return {{"text/uri-list", {.bytes = uri() + '\0'}},
                {copiedFiles, {.bytes = "cut\n" + uri() + '\0', .isGivenUpAfter = true}},
                {cutMark, mark.isNull() ? Answer::refused() : Answer{.bytes = mark}}};
    }
    void settle() { EXPECT_FALSE(changed(300)); }

    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("picture.png"));
    TestOwner owner;
    TestRequestor requestor;
};

TEST_F(CutFiles, areLeftToTheProgramThatMovesThem) {
    owner.own(cut(QByteArray("1\0", 2)));
    ASSERT_TRUE(changed());
    settle();
    EXPECT_TRUE(owner.isOwner());
    EXPECT_EQ(owner.requestCount(copiedFiles), 0);
    const auto pasted = requestor.paste(copiedFiles);
    ASSERT_TRUE(pasted);
    EXPECT_EQ(pasted->bytes, "cut\n" + uri() + '\0');
    ASSERT_TRUE(changed()) << "it has given the clipboard up, as it does without us";
    EXPECT_FALSE(pasteboard().types());
    EXPECT_EQ(requestor.owner(), xcb_window_t{0});
}

TEST_F(CutFiles, areReadAsFilesAllTheSame) {
    owner.own(cut("1"));
    ASSERT_TRUE(changed());
    EXPECT_THAT(*pasteboard().types(), Contains(QLatin1String(pasteboardType::fileUrl)));
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(12, 11));
}

TEST_F(CutFiles, canStillBeMovedWhenTheirProgramHasEnded) {
    owner.own(cut("1"));
    ASSERT_TRUE(changed());
    settle();
    const xcb_window_t before = requestor.owner();
    owner.end();
    ASSERT_TRUE(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
    EXPECT_THAT(requestor.targets(), Not(Contains(QByteArray(copiedFiles))));
    EXPECT_EQ(requestor.paste("text/uri-list")->bytes, uri() + '\0');
    EXPECT_EQ(requestor.paste(cutMark)->bytes, "1");
}

TEST_F(CutFiles, areLeftAloneAlsoWhereAPictureIsOfferedBesides) {
    TestOwner::Contents contents = cut("1");
    contents.push_back({"image/png", {.bytes = pngOf(coloured(7, 7))}});
    owner.own(contents);
    ASSERT_TRUE(changed());
    settle();
    EXPECT_EQ(pasteboard().image()->size(), QSize(7, 7));
    EXPECT_TRUE(owner.isOwner());
}

TEST_F(CutFiles, thatAreOnlyCopiedAreReadWhole) {
    for (const QByteArray &mark : {QByteArray("0"), QByteArray()}) {
        TestOwner::Contents contents = cut(mark);
        contents[1].second = {.bytes = "copy\n" + uri()};
        owner.own(contents);
        ASSERT_TRUE(changed());
        ASSERT_TRUE(waitUntil([&] { return owner.requestCount(copiedFiles) == 1; }));
        settle();
        EXPECT_TRUE(owner.isOwner());
    }
}

TEST_F(CutFiles, ofAProgramWithoutTheMarkAreReadWhole) {
    owner.own({{copiedFiles, {.bytes = "cut\n" + uri()}}, {"text/uri-list", {.bytes = uri()}}});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(waitUntil([&] { return owner.requestCount(copiedFiles) == 1; }));
    settle();
    EXPECT_TRUE(owner.isOwner());
}

} // namespace
} // namespace tavrine
