// A hundred pastes into each kind of program, through the built program, its hot key and its panel: each item arrives
// once, whole, in its turn, and in no other window.

#include "desktop/Desktop.h"
#include "desktop/PasteTargets.h"
#include "desktop/Program.h"

#include <QElapsedTimer>

#include <algorithm>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr int pastes = 100;
// How long what has to come is waited for on a desktop that may be busy; how fast it comes is measured elsewhere.
constexpr auto openingBound = 10s;
constexpr auto pasteBound = 10s;
constexpr auto secondArrival = 500ms; ///< a paste that came twice would be there by then

QByteArray number(int i) {
    return QByteArray::number(i).rightJustified(3, '0');
}

class PasteMatrix : public testing::Test {
protected:
    /// The program with `pastes` items in its history.
    bool startWithItems(const QString &end) {
        if (!program.startOnboarded())
            return false;
        program.kill9();
        QStringList contents;
        for (int i = 0; i < pastes; ++i)
            contents.append(content(i) + end);
        return program.addRows(contents) && program.startOnboarded();
    }
    static QString content(int i) { return QStringLiteral("item-") + QLatin1String(number(i)) + QLatin1Char(';'); }

    void pasteOne(int i, PasteTarget &target, const QString &expected) {
        desktop.openClipboardPanel();
        ASSERT_TRUE(waitUntil([&] { return desktop.hasKeyboard(clipboardPanel); }, openingBound)) << "paste " << i;
        desktop.type(("item-" + number(i)).constData());
        QElapsedTimer timer;
        timer.start();
        desktop.pressReturn();
        ASSERT_TRUE(waitUntil([&] { return target.text() == expected; }, pasteBound))
            << "paste " << i << ": " << qPrintable(target.text().right(60)) << "; panel "
            << (desktop.isShown(clipboardPanel) ? "shown" : "gone") << ", pasteboard " << paste().constData()
            << ", keyboard with " << qPrintable(desktop.title(desktop.keyboard.focusedWindow()));
        milliseconds.push_back(timer.elapsed());
        EXPECT_FALSE(desktop.isShown(clipboardPanel));
    }

    void pasteAll(const std::function<std::unique_ptr<PasteTarget>()> &makeTarget) {
        // A window that was in front before must stay empty, whatever happens to the keyboard.
        LineTarget other(TAVRINE_CLIENTS "/gtk-entry");
        ASSERT_TRUE(other.isReady());
        const auto made = makeTarget();
        PasteTarget &target = *made;
        ASSERT_TRUE(target.isReady());
        ASSERT_TRUE(startWithItems(target.end()));
        QString expected;
        for (int i = 0; i < pastes; ++i) {
            expected += content(i) + target.end();
            ASSERT_NO_FATAL_FAILURE(pasteOne(i, target, expected));
        }
        (void)waitUntil([] { return false; }, secondArrival);
        EXPECT_EQ(target.text(), expected);
        EXPECT_EQ(other.text(), QString());
        std::sort(milliseconds.begin(), milliseconds.end());
        std::printf("Return to arrival: median %lld ms, longest %lld ms\n",
                    static_cast<long long>(milliseconds.at(pastes / 2)), static_cast<long long>(milliseconds.back()));
    }

    Desktop desktop;
    Program program;
    std::vector<qint64> milliseconds;
};

} // namespace

TEST_F(PasteMatrix, aHundredPastesArriveOnceInATerminal) {
    pasteAll([this] { return std::make_unique<TerminalTarget>(desktop); });
}

TEST_F(PasteMatrix, aHundredPastesArriveOnceInAGtkEntry) {
    pasteAll([] { return std::make_unique<LineTarget>(TAVRINE_CLIENTS "/gtk-entry"); });
}

TEST_F(PasteMatrix, aHundredPastesArriveOnceInAQtLineEdit) {
    pasteAll([] { return std::make_unique<LineTarget>(TAVRINE_QT_LINE_EDIT); });
}

TEST_F(PasteMatrix, aHundredPastesArriveOnceInAFieldOfAPage) {
    pasteAll(
        [this] { return std::make_unique<PageTarget>(desktop, QStringLiteral(TAVRINE_DESKTOP_CLIENTS "/page.html")); });
}

TEST_F(PasteMatrix, pastesGoInTurnsToTheWindowThatThePersonWorksIn) {
    LineTarget first(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(first.isReady());
    LineTarget second(TAVRINE_QT_LINE_EDIT);
    ASSERT_TRUE(second.isReady());
    ASSERT_TRUE(startWithItems(QString()));
    const quint32 windows[] = {desktop.windowOf(first.processId()), desktop.windowOf(second.processId())};
    ASSERT_TRUE(windows[0] && windows[1] && windows[0] != windows[1]);
    QString expected[2];
    for (int i = 0; i < 40; ++i) {
        LineTarget &target = i % 2 ? second : first;
        desktop.activate(windows[i % 2]);
        ASSERT_TRUE(waitUntil([&] { return desktop.activeWindow() == windows[i % 2]; }));
        expected[i % 2] += content(i);
        ASSERT_NO_FATAL_FAILURE(pasteOne(i, target, expected[i % 2]));
    }
    (void)waitUntil([] { return false; }, secondArrival);
    EXPECT_EQ(first.text(), expected[0]);
    EXPECT_EQ(second.text(), expected[1]);
}

TEST_F(PasteMatrix, emojisAreInsertedOneByOne) {
    LineTarget target(TAVRINE_CLIENTS "/gtk-entry");
    ASSERT_TRUE(target.isReady());
    ASSERT_TRUE(program.startOnboarded());
    const std::pair<const char *, const char *> wanted[] = {{"rocket", "🚀"}, {"pizza", "🍕"}, {"thumb", "👍"}};
    QString expected;
    for (int i = 0; i < 30; ++i) {
        const auto &[word, emoji] = wanted[i % 3];
        desktop.openEmojiPanel();
        ASSERT_TRUE(waitUntil([&] { return desktop.hasKeyboard(emojiPanel); }, openingBound)) << i;
        desktop.type(word);
        expected += QString::fromUtf8(emoji);
        desktop.pressReturn();
        ASSERT_TRUE(waitUntil([&] { return target.text() == expected; }, pasteBound))
            << "emoji " << i << ": " << qPrintable(target.text());
    }
    (void)waitUntil([] { return false; }, secondArrival);
    EXPECT_EQ(target.text(), expected);
}
