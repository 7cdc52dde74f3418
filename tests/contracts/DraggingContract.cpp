// What is promised of drops on this program and of drags out of it: run on the fake, and on an X server with a program
// that drags by nothing but the protocol.
#include "adapters/fake/FakeDragging.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/DropView.h"
#include "adapters/x11/TestDrop.h"
#include "support/Eventually.h"
#include "support/TestKeyboard.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMimeData>
#include <QTimer>

#include <atomic>
#include <thread>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Forms = std::vector<std::pair<QByteArray, QByteArray>>;

/// A desktop with a program that drags these forms, and a person who drops them; and the other way round.
class DragDropDesk {
public:
    virtual ~DragDropDesk() = default;
    virtual Dragging &dragging() = 0;
    /// Drops the forms on a view that reads them. The content, once it is here.
    virtual std::optional<DroppedContent> drop(const Forms &forms) = 0;
    /// As `drop`, of a program that never answers. How long the drop's event took, if that ended.
    virtual std::optional<std::chrono::milliseconds> dropOfHangingProgram(std::optional<DroppedContent> &content) = 0;
    /// Drags the item over a view that takes it, and with `isDropped` lets go there; else gives up. `during` is called
    /// in the course of it, with the view that the drag comes out of.
    virtual quint32 drag(const DraggedItem &item, const std::function<quint32()> &mask, bool isDropped,
                         const std::function<void(QWidget &source)> &during) = 0;
};

class FakeDragDropDesk final : public DragDropDesk {
public:
    Dragging &dragging() override { return m_fake; }
    std::optional<DroppedContent> drop(const Forms &forms) override {
        QMimeData data;
        for (const auto &[name, bytes] : forms)
            data.setData(QString::fromLatin1(name), bytes);
        std::optional<DroppedContent> content;
        m_fake.readDrop(data, [&](const DroppedContent &read) { content = read; });
        m_time.runPending();
        return content;
    }
    std::optional<std::chrono::milliseconds> dropOfHangingProgram(std::optional<DroppedContent> &content) override {
        m_fake.beSlow();
        m_fake.setDroppedContent({});
        m_fake.readDrop({}, [&](const DroppedContent &read) { content = read; });
        EXPECT_FALSE(content);
        m_time.runPending();
        return 0ms;
    }
    quint32 drag(const DraggedItem &item, const std::function<quint32()> &mask, bool isDropped,
                 const std::function<void(QWidget &)> &during) override {
        auto *const source = new QWidget;
        m_fake.setDuring([&](const auto &) { during(*source); });
        if (!isDropped)
            m_fake.setOperation(dragOperation::none);
        return m_fake.beginDragging(*source, item, mask);
    }

private:
    VirtualTime m_time;
    FakeDragging m_fake{m_time};
};

class X11DragDropDesk final : public DragDropDesk {
public:
    X11DragDropDesk() {
        m_window->setContentView(m_view);
        const QRectF screen = m_screens.screens().first().frame;
        m_window->setFrame({screen.center().x() - 150, maxY(screen) - 100, 300, 100}, 0ms);
        m_window->setIgnoresMouseEvents(false);
        m_window->orderFrontRegardless();
        m_middle = QPoint(int(screen.center().x()), 50);
    }
    Dragging &dragging() override { return m_dragging; }
    std::optional<DroppedContent> drop(const Forms &forms) override {
        TestOwner::Contents contents;
        for (const auto &[name, bytes] : forms)
            contents.push_back({name, {.bytes = bytes}});
        TestDrop drag(static_cast<xcb_window_t>(m_window->windowNumber()));
        if (!drag.enter(contents, m_middle))
            return std::nullopt;
        drag.drop();
        (void)eventually([&] { return drag.isFinished() && m_view->content; });
        return m_view->content;
    }
    std::optional<std::chrono::milliseconds> dropOfHangingProgram(std::optional<DroppedContent> &content) override {
        TestDrop drag(static_cast<xcb_window_t>(m_window->windowNumber()));
        if (!drag.enter({{"text/uri-list", Answer::silent()}}, m_middle))
            return std::nullopt;
        drag.drop();
        if (!eventually([&] { return drag.isFinished(); }))
            return std::nullopt;
        EXPECT_FALSE(m_view->isWithinEvent);
        (void)eventually([&] { return m_view->content.has_value(); });
        content = m_view->content;
        return std::chrono::milliseconds(qRound(m_view->blockedMs));
    }
    quint32 drag(const DraggedItem &item, const std::function<quint32()> &mask, bool isDropped,
                 const std::function<void(QWidget &)> &during) override {
        std::atomic<bool> isTaken = false;
        std::atomic<bool> isOver = false;
        QTimer look;
        m_view->entered = 0;
        QObject::connect(&look, &QTimer::timeout, qApp, [&] {
            if (isTaken || m_view->entered == 0)
                return;
            during(*m_view);
            isTaken = true;
        });
        look.start(2);
        m_view->item = item;
        m_view->mask = mask;
        std::thread hand([&] { move(isTaken, isOver, isDropped); });
        // The drag's loop runs on this thread, out of the view's event.
        EXPECT_TRUE(eventually([&] { return isOver.load(); }, 30s));
        hand.join();
        EXPECT_TRUE(eventually([&] { return m_view->done.has_value(); }));
        return std::exchange(m_view->done, std::nullopt).value_or(dragOperation::move);
    }

private:
    /// On a thread of its own, as a person has two hands.
    void move(const std::atomic<bool> &isTaken, std::atomic<bool> &isOver, bool isDropped) const {
        testing::TestKeyboard hand;
        hand.movePointer(m_middle.x(), m_middle.y());
        hand.press(1);
        for (int step = 1; step < 600 && !isTaken; ++step) { // a hand is never quite still
            hand.movePointer(m_middle.x() + 20 + step % 40, m_middle.y());
            std::this_thread::sleep_for(20ms);
        }
        for (int step = 0; step < 10; ++step) { // what it was offered comes back to it
            hand.movePointer(m_middle.x() + 20 + step % 2, m_middle.y());
            std::this_thread::sleep_for(20ms);
        }
        if (!isDropped)
            hand.tap(testing::key::escape);
        hand.release(1);
        isOver = true;
    }

    X11Dragging m_dragging{{.answer = 1500ms, .stall = 1500ms, .total = 4000ms}};
    X11ApplicationActivator m_activator;
    X11EdgeWindows m_windows{[this]() -> X11ApplicationActivator & { return m_activator; }};
    X11Screens m_screens;
    std::unique_ptr<EdgeWindow> m_window =
        m_windows.makeEdgeWindow({.title = QStringLiteral("drops"), .largestSize = {300, 100}, .outline = {}});
    DropView *m_view = new DropView(m_dragging);
    QPoint m_middle;
};

template <class T>
std::unique_ptr<DragDropDesk> make() {
    return std::make_unique<T>();
}

class DraggingContract : public ::testing::TestWithParam<std::unique_ptr<DragDropDesk> (*)()> {
protected:
    static DraggedItem anItem() {
        DraggedItem item;
        item.url = QUrl::fromLocalFile(QStringLiteral("/tmp/a b"));
        item.draggingImage = QPixmap(50, 50);
        item.draggingImage.fill(Qt::red);
        return item;
    }

    std::unique_ptr<DragDropDesk> desk = GetParam()();
};

INSTANTIATE_TEST_SUITE_P(Fake, DraggingContract, ::testing::Values(&make<FakeDragDropDesk>));
INSTANTIATE_TEST_SUITE_P(X11, DraggingContract, ::testing::Values(&make<X11DragDropDesk>));

TEST_P(DraggingContract, filesAreToldInTheirOrderAndNothingElseOfThatDrop) {
    const auto content =
        desk->drop({{"text/plain", "a b"}, {"text/uri-list", "file:///tmp/b\r\nfile:///tmp/a%20b\r\n"}});
    ASSERT_TRUE(content);
    EXPECT_THAT(content->fileUrls, ElementsAre(QUrl::fromLocalFile(QStringLiteral("/tmp/b")),
                                               QUrl::fromLocalFile(QStringLiteral("/tmp/a b"))));
    EXPECT_THAT(content->types, ElementsAre(u"text/plain", u"text/uri-list"));
    EXPECT_FALSE(content->string);
    EXPECT_THAT(content->images, IsEmpty());
}

TEST_P(DraggingContract, aPictureIsDecodedAndTextBesideItIsTold) {
    const auto content = desk->drop({{"image/png", pngOf(coloured(30, 20))}, {"text/plain", "words"}});
    ASSERT_TRUE(content);
    ASSERT_EQ(content->images.size(), 1);
    EXPECT_EQ(content->images[0].size(), QSize(30, 20));
    EXPECT_EQ(content->string, QStringLiteral("words"));
    EXPECT_THAT(content->fileUrls, IsEmpty());
}

TEST_P(DraggingContract, whatCannotBeDecodedIsAbsent) {
    const auto content = desk->drop({{"image/png", "no picture"}, {"application/x-color", "red"}});
    ASSERT_TRUE(content);
    EXPECT_THAT(content->types, ElementsAre(u"image/png", u"application/x-color"));
    EXPECT_THAT(content->images, IsEmpty());
    EXPECT_THAT(content->fileUrls, IsEmpty());
    EXPECT_FALSE(content->string || content->fileUrlString);
}

TEST_P(DraggingContract, aProgramThatHangsHoldsNothingUpAndItsDropIsEmpty) {
    std::optional<DroppedContent> content;
    const auto took = desk->dropOfHangingProgram(content);
    ASSERT_TRUE(took);
    EXPECT_LT(*took, 1500ms) << "as long as the program is waited for beside it";
    ASSERT_TRUE(content);
    EXPECT_THAT(content->fileUrls, IsEmpty());
}

TEST_P(DraggingContract, whatWasDroppedIsDoneAsItWasOfferedAndWhatWasGivenUpIsNotDone) {
    const auto during = [](QWidget &) {};
    EXPECT_EQ(desk->drag(
                  anItem(), [] { return dragOperation::copy; }, true, during),
              dragOperation::copy);
    EXPECT_EQ(desk->drag(
                  anItem(), [] { return dragOperation::copy; }, false, during),
              dragOperation::none);
}

TEST_P(DraggingContract, whileOneDragGoesOnNoOtherBegins) {
    quint32 second = dragOperation::copy;
    int asked = 0;
    const auto countAsking = [&] {
        ++asked;
        return dragOperation::copy;
    };
    EXPECT_EQ(desk->drag(
                  anItem(), [] { return dragOperation::copy; }, true,
                  [&](QWidget &source) { second = desk->dragging().beginDragging(source, anItem(), countAsking); }),
              dragOperation::copy);
    EXPECT_EQ(second, dragOperation::none);
    EXPECT_EQ(asked, 0);
}

} // namespace
} // namespace tavrine::test
