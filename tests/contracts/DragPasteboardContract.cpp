// What every drag pasteboard promises, run on the fake and on the X server of a private desktop.

#include "adapters/fake/FakeDragPasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/x11/TestOwner.h"
#include "adapters/x11/X11DragPasteboards.h"
#include "support/DragRehearsal.h"
#include "support/Eventually.h"
#include "support/TestKeyboard.h"

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

/// A desktop on which a program drags; one drag at a time.
class DragDesk {
public:
    virtual ~DragDesk() = default;
    virtual DragPasteboards &pasteboards() = 0;
    virtual void beginDrag(bool ofFiles) = 0;
    /// As `beginDrag` of files, by a program that is asked and says nothing until `answer`.
    virtual void beginSlowDrag() = 0;
    virtual void answer() = 0;
    virtual void releaseButton() = 0;
    /// The program ends the drag itself while the button is down.
    virtual void cancel() = 0;
    /// A button goes down and up, and what was dragged before still lies there.
    virtual void stroke() = 0;
    virtual bool comes(const std::function<bool()> &condition) = 0;
    /// Whether a watch that was just begun sees drags; waits for it.
    virtual bool sees(const DragPasteboard &pasteboard) = 0;
    virtual void rest() = 0;
};

class FakeDragDesk final : public DragDesk {
public:
    DragPasteboards &pasteboards() override { return m_fake; }
    void beginDrag(bool ofFiles) override { m_fake.begin(ofFiles); }
    void beginSlowDrag() override {
        m_fake.beSlow();
        m_fake.begin(true);
    }
    void answer() override { m_fake.answerWithFiles(); }
    void releaseButton() override { m_fake.end(); }
    void cancel() override { m_fake.end(); }
    void stroke() override {}
    bool comes(const std::function<bool()> &condition) override {
        m_time.advance(1s);
        return condition();
    }
    bool sees(const DragPasteboard &) override { return true; }
    void rest() override { m_time.advance(1s); }

private:
    VirtualTime m_time;
    FakeDragPasteboards m_fake{m_time};
};

class X11DragDesk final : public DragDesk {
public:
    X11DragDesk() { m_hand.movePointer(5, 5); }
    ~X11DragDesk() override { m_hand.release(1); }
    DragPasteboards &pasteboards() override { return m_real; }
    void beginDrag(bool ofFiles) override {
        m_hand.press(1);
        const TestOwner::Contents text{{"text/plain", {.bytes = "file:///not/of/text"}}};
        const TestOwner::Contents files{{"text/plain", {.bytes = "a"}}, {"text/uri-list", {.bytes = "file:///a\r\n"}}};
        m_owner.own(ofFiles ? files : text);
    }
    void beginSlowDrag() override {
        m_hand.press(1);
        Answer held{.bytes = "file:///a\r\n"};
        held.before = [this] { m_isHeld.wait(true); };
        m_owner.own({{"text/uri-list", held}}, [&] {
            Answer list = m_owner.listOf({{"text/uri-list", held}});
            list.before = held.before;
            return list;
        }());
    }
    void answer() override {
        m_isHeld = false;
        m_isHeld.notify_all();
    }
    void releaseButton() override { m_hand.release(1); }
    void cancel() override { m_owner.clear(); }
    void stroke() override {
        m_hand.press(1);
        m_hand.movePointer(300, 300);
        rest();
        m_hand.release(1);
    }
    bool comes(const std::function<bool()> &condition) override { return eventually(condition); }
    bool sees(const DragPasteboard &pasteboard) override { return testing::seesDrags(pasteboard); }
    void rest() override { letPass(60ms); }

private:
    std::atomic<bool> m_isHeld = true;
    testing::TestKeyboard m_hand;
    TestOwner m_owner{"XdndSelection"};
    X11DragPasteboards m_real;
};

template <class T>
std::unique_ptr<DragDesk> make() {
    return std::make_unique<T>();
}

class DragPasteboardContract : public ::testing::TestWithParam<std::unique_ptr<DragDesk> (*)()> {
protected:
    void watch() {
        pasteboard = desk->pasteboards().watch();
        ASSERT_TRUE(desk->sees(*pasteboard));
        pasteboard->setOnChange([this] { ++changes; });
        before = pasteboard->changeCount();
    }
    bool isDragging(bool ofFiles) {
        return desk->comes([&] { return pasteboard->isDragging() && pasteboard->holdsFileReference() == ofFiles; });
    }
    bool isOver() {
        return desk->comes([&] { return !pasteboard->isDragging(); });
    }

    std::unique_ptr<DragDesk> desk = GetParam()();
    std::unique_ptr<DragPasteboard> pasteboard;
    int before = 0;
    int changes = 0;
};

INSTANTIATE_TEST_SUITE_P(Fake, DragPasteboardContract, ::testing::Values(&make<FakeDragDesk>));
INSTANTIATE_TEST_SUITE_P(X11, DragPasteboardContract, ::testing::Values(&make<X11DragDesk>));

TEST_P(DragPasteboardContract, aDragOfFilesIsSeenUntilItsButtonIsReleased) {
    watch();
    EXPECT_FALSE(pasteboard->isDragging());
    desk->beginDrag(true);
    EXPECT_TRUE(isDragging(true));
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    desk->releaseButton();
    EXPECT_TRUE(isOver());
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    EXPECT_TRUE(pasteboard->holdsFileReference()) << "what was dragged last stays";
}

TEST_P(DragPasteboardContract, aDragOfTextCountsAndHoldsNoFile) {
    watch();
    desk->beginDrag(false);
    EXPECT_TRUE(isDragging(false));
    desk->rest();
    EXPECT_FALSE(pasteboard->holdsFileReference());
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    desk->releaseButton();
    EXPECT_TRUE(isOver());
}

TEST_P(DragPasteboardContract, eachDragCountsOnceAndSpeaksForItself) {
    watch();
    for (const bool isOfFiles : {true, false, true, true}) {
        desk->beginDrag(isOfFiles);
        EXPECT_TRUE(isDragging(isOfFiles));
        EXPECT_EQ(pasteboard->changeCount(), ++before);
        desk->releaseButton();
        EXPECT_TRUE(isOver());
    }
}

TEST_P(DragPasteboardContract, aStrokeAfterADragOfFilesIsNoDrag) {
    watch();
    desk->beginDrag(true);
    ASSERT_TRUE(isDragging(true));
    desk->releaseButton();
    ASSERT_TRUE(isOver());
    changes = 0;
    desk->stroke();
    desk->rest();
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(pasteboard->isDragging());
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
}

TEST_P(DragPasteboardContract, aDragThatIsCancelledIsOver) {
    watch();
    desk->beginDrag(true);
    ASSERT_TRUE(isDragging(true));
    desk->cancel();
    EXPECT_TRUE(isOver());
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    desk->releaseButton();
}

TEST_P(DragPasteboardContract, aProgramThatAnswersLateIsKnownToDragBeforeWhatItDragsIs) {
    watch();
    desk->beginSlowDrag();
    EXPECT_TRUE(isDragging(false));
    changes = 0;
    desk->answer();
    EXPECT_TRUE(isDragging(true));
    EXPECT_GE(changes, 1);
    EXPECT_EQ(pasteboard->changeCount(), before + 1);
    desk->releaseButton();
    EXPECT_TRUE(isOver());
}

TEST_P(DragPasteboardContract, theHandlerMayDestroyThePasteboard) {
    watch();
    bool isDestroyed = false;
    pasteboard->setOnChange([&] {
        pasteboard.reset();
        isDestroyed = true;
    });
    desk->beginDrag(true);
    EXPECT_TRUE(desk->comes([&] { return isDestroyed; }));
    desk->releaseButton();
}

TEST_P(DragPasteboardContract, aPasteboardThatIsGoneTellsNothing) {
    watch();
    desk->beginDrag(true);
    pasteboard.reset();
    desk->rest();
    EXPECT_EQ(changes, 0);
    desk->releaseButton();
}

} // namespace
} // namespace tavrine::test
