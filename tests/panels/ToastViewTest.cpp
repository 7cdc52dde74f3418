#include "panels/ToastView.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

const QString icon = QStringLiteral("checkmark.circle.fill");

QStringList shownLines(const QString &message) {
    ToastView view(message, icon);
    view.resize(view.sizeHint());
    EXPECT_EQ(view.size(), QSize(250, 60));
    return view.shownLines();
}

TEST(ToastView, aMessageThatFitsIsShownWhole) {
    EXPECT_EQ(shownLines(QStringLiteral("Copied")), QStringList(QStringLiteral("Copied")));
}

TEST(ToastView, aMessageThatNeedsTwoLinesIsShownWhole) {
    for (const char *message :
         {"Enable Accessibility to paste automatically", "Enable Accessibility to insert automatically"}) {
        const QStringList lines = shownLines(QLatin1String(message));
        EXPECT_EQ(lines.size(), 2) << message;
        EXPECT_EQ(lines.join(QLatin1Char(' ')), QLatin1String(message));
    }
}

TEST(ToastView, aLongMessageIsCutAndTheSizeStays) {
    const QStringList lines = shownLines(QStringLiteral("a word ").repeated(60));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.at(1).endsWith(QChar(0x2026)));
    EXPECT_LT(lines.at(1).size(), 60);
}

TEST(ToastView, aLongWordIsCutOnOneLine) {
    const QStringList lines = shownLines(QString(300, QLatin1Char('m')));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.at(0).endsWith(QChar(0x2026)));
    EXPECT_LT(lines.at(0).size(), 40);
}

TEST(ToastView, anEmptyMessageIsOneEmptyLine) {
    EXPECT_EQ(shownLines(QString()), QStringList(QString()));
}

TEST(ToastView, keepsItsSizeInWhateverHoldsIt) {
    ToastView view(QString(300, QLatin1Char('m')), icon);
    view.resize(400, 400);
    EXPECT_EQ(view.size(), QSize(250, 60));
}

} // namespace
} // namespace tavrine
