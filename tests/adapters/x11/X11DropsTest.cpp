// Drops of programs that behave well and badly, and drags out of this one.
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/DropView.h"
#include "adapters/x11/TestDrop.h"
#include "support/Wait.h"

#include <QApplication>
#include <QMimeData>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using testing::waitUntil;

constexpr double answerMs = 2000; // of 150 where the machine has a turn for it, and of the toolkit's own 5000

Answer giving(const QByteArray &bytes) {
    return {.bytes = bytes};
}
Answer pieces(const QByteArray &bytes) {
    return {.manner = Answer::Manner::piecemeal, .bytes = bytes};
}

class X11DropsTest : public ::testing::Test {
protected:
    X11DropsTest() {
        window->setContentView(view);
        const QRectF screen = screens.screens().first().frame;
        window->setFrame({screen.center().x() - 150, maxY(screen) - 100, 300, 100}, 0ms);
        window->setIgnoresMouseEvents(false);
        window->orderFrontRegardless();
        drag = std::make_unique<TestDrop>(static_cast<xcb_window_t>(window->windowNumber()));
        place = QPoint(int(screen.center().x()), 50);
    }

    /// The content, once all of it is here. None when it never comes.
    std::optional<DroppedContent> dropped(const TestOwner::Contents &contents) {
        if (!drag->enter(contents, place))
            return std::nullopt;
        drag->drop();
        if (!waitUntil([this] { return drag->isFinished() && view->content; }))
            return std::nullopt;
        EXPECT_LT(view->blockedMs, answerMs);
        return view->content;
    }

    /// The same where a program at work answers within the drop's event, as the machine may stand still in one.
    std::optional<DroppedContent> droppedWithinEvent(const TestOwner::Contents &contents) {
        std::optional<DroppedContent> content;
        for (int tries = 0; tries < 10 && !(content && view->isWithinEvent); ++tries)
            content = dropped(contents);
        EXPECT_TRUE(view->isWithinEvent);
        return content;
    }

    SelectionLimits limits{.answer = 3000ms, .stall = 3000ms, .total = 6000ms};
    X11Dragging dragging{limits};
    X11ApplicationActivator activator;
    X11EdgeWindows windows{[this]() -> X11ApplicationActivator & { return activator; }};
    X11Screens screens;
    std::unique_ptr<EdgeWindow> window =
        windows.makeEdgeWindow({.title = QStringLiteral("drops"), .largestSize = {550, 224}, .outline = {}});
    QPointer<DropView> view = new DropView(dragging);
    std::unique_ptr<TestDrop> drag;
    QPoint place;
};

TEST_F(X11DropsTest, theFilesOfThisMachineAreTakenInTheirOrderWhetherOrNotTheyAreThere) {
    const auto content = droppedWithinEvent(
        {{"text/plain", giving("no file")},
         {"application/x-other", giving("x")},
         {"UTF8_STRING", giving("no file")},
         {"text/uri-list", giving("# a comment\r\nfile:///tmp/a%20b%25.txt\r\nfile://otherhost/tmp/c\r\n"
                                  "file:///proc/self/maps\r\nfile:///tmp/\r\nhttp://example.org/d\r\n"
                                  "file:///nowhere/%D7%90%0A%09\r\nfile://localhost/tmp/%FF\r\nfile:/tmp/e\r\n")}});
    ASSERT_TRUE(content);
    QStringList urls;
    for (const QUrl &url : content->fileUrls)
        urls.append(QString::fromLatin1(url.toEncoded()));
    EXPECT_THAT(urls, ElementsAre(u"file:///tmp/a%20b%25.txt", u"file:///proc/self/maps", u"file:///tmp",
                                  u"file:///nowhere/%D7%90%0A%09", u"file:///tmp/%FF", u"file:///tmp/e"));
    EXPECT_EQ(content->fileUrls[0], QUrl::fromLocalFile(QStringLiteral("/tmp/a b%.txt")));
    EXPECT_THAT(content->types, ElementsAre(u"text/plain", u"application/x-other", u"UTF8_STRING", u"text/uri-list"));
    EXPECT_FALSE(content->string);
    EXPECT_TRUE(drag->isAccepted());
    EXPECT_TRUE(drag->isCopied()) << "whatever the dragging program proposed";
}

TEST_F(X11DropsTest, fiveHundredFilesComeWhole) {
    QByteArray list;
    for (int i = 0; i < 500; ++i)
        list += "file:///home/somebody/a%20folder%20with%20a%20long%20name/file-" + QByteArray::number(i) + "\r\n";
    const auto content = dropped({{"text/uri-list", pieces(list)}});
    ASSERT_TRUE(content);
    ASSERT_EQ(content->fileUrls.size(), 500);
    EXPECT_EQ(content->fileUrls.last().fileName(), QLatin1String("file-499"));
}

TEST_F(X11DropsTest, aTextOfAMillionBytesComesPieceByPiece) {
    const auto content = dropped({{"UTF8_STRING", pieces(QByteArray(1'000'000, 'x'))}});
    ASSERT_TRUE(content && content->string);
    EXPECT_EQ(content->string->size(), 1'000'000);
}

TEST_F(X11DropsTest, anAddressOfAnotherMachinesFileIsRefused) {
    const auto content = droppedWithinEvent({{"text/uri-list", giving("file://otherhost/tmp/c\r\n")}});
    ASSERT_TRUE(content);
    EXPECT_TRUE(content->fileUrls.isEmpty() && !content->fileUrlString && !content->string);
    EXPECT_FALSE(drag->isAccepted());
}

TEST_F(X11DropsTest, aLinkOfABrowserIsItsAddressAsText) {
    const QString wide = QStringLiteral("https://example.org/a\nA title");
    const QByteArray url(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2);
    auto content = dropped({{"text/x-moz-url", giving(url)}, {"text/html", giving("<a href=x>A title</a>")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->string, QStringLiteral("https://example.org/a"));
    EXPECT_TRUE(content->fileUrls.isEmpty());
    content = dropped({{"text/uri-list", giving("https://example.org/b\r\n")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->string, QStringLiteral("https://example.org/b"));
}

TEST_F(X11DropsTest, aSingleFileThatABrowserNamesIsToldApartFromAList) {
    const QString wide = QStringLiteral("file:///tmp/a%20b\nA title");
    const QByteArray url(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2);
    const auto content = dropped({{"text/x-moz-url", giving(url)}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->fileUrlString, QStringLiteral("file:///tmp/a%20b"));
}

TEST_F(X11DropsTest, aPictureIsTakenInItsBestFormAndTextBesideIt) {
    const QByteArray png = pngOf(coloured(30, 20));
    auto content =
        dropped({{"image/jpeg", giving("no picture")}, {"image/png", pieces(png)}, {"UTF8_STRING", giving("t")}});
    ASSERT_TRUE(content);
    ASSERT_EQ(content->images.size(), 1);
    EXPECT_EQ(content->images[0].size(), QSize(30, 20));
    content = dropped({{"text/html", giving("<img>")},
                       {"application/octet-stream", giving(png)},
                       {"XdndDirectSave0", giving("a.png")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->images.size(), 1) << "as browsers give it";
    content = dropped({{"application/octet-stream", giving(png)}});
    ASSERT_TRUE(content);
    EXPECT_TRUE(content->images.isEmpty());
}

TEST_F(X11DropsTest, aPictureThatIsTooLargeIsNotDecodedAndItsTextIsTaken) {
    const auto content =
        dropped({{"image/png", giving(pngThatSays(30'000, 30'000))}, {"UTF8_STRING", giving("a name")}});
    ASSERT_TRUE(content);
    EXPECT_TRUE(content->images.isEmpty());
    EXPECT_EQ(content->string, QStringLiteral("a name"));
}

TEST_F(X11DropsTest, textIsReadInItsEncodingAndARichOneAsWhatItSays) {
    auto content = dropped({{"STRING", giving("caf\xE9")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->string, QStringLiteral("café"));
    content = dropped({{"text/html", giving("<p>rich <b>text</b></p>")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->string, QStringLiteral("rich text"));
}

TEST_F(X11DropsTest, aProgramThatHangsIsNotWaitedForInTheEventAndItsDropIsEmpty) {
    ASSERT_TRUE(drag->enter({{"text/uri-list", Answer::silent()}, {"UTF8_STRING", giving("late")}}, place));
    drag->drop();
    ASSERT_TRUE(waitUntil([this] { return drag->isFinished(); }));
    EXPECT_LT(view->blockedMs, answerMs);
    EXPECT_FALSE(view->isWithinEvent);
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    EXPECT_FALSE(view->content->string) << "who missed a deadline is asked for nothing more";
    EXPECT_EQ(drag->owner.requestCount("UTF8_STRING"), 0);
}

TEST_F(X11DropsTest, whatStartsInTimeAndTakesLongerComesInALaterTurn) {
    const QByteArray text(300'000, 'y');
    const auto untilTheEventIsOver = [&events = view->events] {
        for (int i = 0; i < 500 && events == 0; ++i)
            std::this_thread::sleep_for(5ms);
    };
    ASSERT_TRUE(drag->enter(
        {{"UTF8_STRING", {.manner = Answer::Manner::piecemeal, .bytes = text, .before = untilTheEventIsOver}}}, place));
    drag->drop();
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    EXPECT_LT(view->blockedMs, answerMs);
    EXPECT_FALSE(view->isWithinEvent);
    EXPECT_EQ(view->content->string.value_or(QString()).size(), text.size());
}

TEST_F(X11DropsTest, aProgramThatEndsInTheMiddleIsNotWaitedForAnyLonger) {
    ASSERT_TRUE(drag->enter({{"UTF8_STRING", {.manner = Answer::Manner::silent}}}, place));
    drag->drop();
    ASSERT_TRUE(waitUntil([this] { return drag->owner.requestCount("UTF8_STRING") == 1; }));
    QElapsedTimer timer;
    timer.start();
    drag->end();
    ASSERT_TRUE(waitUntil([this] { return view->content.has_value(); }));
    EXPECT_LT(timer.elapsed(), 2500) << "of 3000 for one that hangs";
    EXPECT_FALSE(view->content->string);
}

TEST_F(X11DropsTest, rubbishIsNothing) {
    const Answer wide{.bytes = QByteArray(64, '\x7f'), .type = "INTEGER", .format = 32};
    const Answer endless{.manner = Answer::Manner::piecemeal, .bytes = QByteArray(65536, 'z'), .isEndless = true};
    const Answer hopeless{.manner = Answer::Manner::piecemeal, .bytes = "a", .announced = 2'000'000'000};
    const auto content = dropped({{"text/uri-list", wide},
                                  {"image/png", hopeless},
                                  {"image/tiff", Answer::refused()},
                                  {"UTF8_STRING", giving("\xff\xfe")},
                                  {"STRING", endless}});
    ASSERT_TRUE(content);
    EXPECT_TRUE(content->fileUrls.isEmpty() && content->images.isEmpty());
    EXPECT_EQ(content->string, QStringLiteral("��"));
}

TEST_F(X11DropsTest, onlyWhatIsOfferedIsAskedFor) {
    const auto content = dropped({{"text/plain", giving("t")}});
    ASSERT_TRUE(content);
    EXPECT_EQ(drag->owner.requestCount(), 1);
}

TEST_F(X11DropsTest, aViewThatGoesWhileItsDropIsReadIsNoHarm) {
    ASSERT_TRUE(drag->enter({{"text/uri-list", Answer::silent()}}, place));
    drag->drop();
    ASSERT_TRUE(waitUntil([this] { return drag->isFinished(); }));
    window.reset();
    EXPECT_TRUE(waitUntil([this] { return view.isNull(); }));
    (void)waitUntil([] { return false; }, 600ms);
}

TEST_F(X11DropsTest, aDragWithinThisProgramIsReadAtOnce) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a b"))});
    std::optional<DroppedContent> content;
    dragging.readDrop(data, [&](const DroppedContent &read) { content = read; });
    ASSERT_TRUE(content);
    EXPECT_THAT(content->fileUrls, ElementsAre(QUrl::fromLocalFile(QStringLiteral("/tmp/a b"))));
}

} // namespace
} // namespace tavrine

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
