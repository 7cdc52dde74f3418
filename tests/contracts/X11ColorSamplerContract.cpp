#include "adapters/x11/X11ColorSampler.h"
#include "adapters/x11/XcbLink.h"
#include "contracts/ColorSamplerContract.h"
#include "support/Eventually.h"
#include "support/PatternWindow.h"
#include "support/TestKeyboard.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

namespace tavrine::test {
namespace {

using tavrine::testing::PatternWindow;
using tavrine::testing::TestKeyboard;
namespace key = tavrine::testing::key;

class X11Screen {
public:
    [[nodiscard]] ColorSamplers &samplers() { return m_samplers; }
    [[nodiscard]] QColor colour() const { return QColor::fromRgb(PatternWindow::colourAt(place.x(), place.y())); }
    [[nodiscard]] bool isShown() const { return m_samplers.isShown(); }
    void take() {
        waitForMagnifier();
        person.click(1, place.x(), place.y());
    }
    void cancel() {
        waitForMagnifier();
        person.tap(key::escape);
    }
    void settle() { letPass(std::chrono::milliseconds(150)); }

    QPoint place{321, 234};
    PatternWindow pattern;
    TestKeyboard person;

private:
    /// What another overlay covered is left the time to be painted.
    void waitForMagnifier() const {
        (void)eventually([this] { return isShown(); }, std::chrono::milliseconds(1000));
    }

    X11ColorSamplers m_samplers;
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, ColorSamplerContract, X11Screen);

class X11ColorSampler : public ::testing::Test {
protected:
    void SetUp() override {
        sampler = screen.samplers().makeSampler();
        sampler->showSampler([this](std::optional<QColor> colour) { answers.push_back(colour); });
        ASSERT_TRUE(eventually([this] { return screen.isShown(); }));
    }
    [[nodiscard]] bool isAnswered() {
        return eventually([this] { return !answers.empty(); });
    }
    [[nodiscard]] static qint64 residentKb() {
        QFile status(QStringLiteral("/proc/self/status"));
        if (!status.open(QIODevice::ReadOnly))
            return 0;
        const auto lines = status.readAll().split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith("VmRSS:"))
                return line.mid(6).trimmed().split(' ').first().toLongLong();
        return 0;
    }

    X11Screen screen;
    std::shared_ptr<ColorSampler> sampler;
    std::vector<std::optional<QColor>> answers;
};

TEST_F(X11ColorSampler, anOverlayOfAnotherProgramThatDoesNotEndHoldsUpNobody) {
    screen.cancel();
    ASSERT_TRUE(isAnswered());
    answers.clear();
    XcbLink other(XcbLink::forEver);
    const xcb_window_t window = other.newId();
    xcb_create_window(other.connection(), 0, window, other.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(other.connection(), window,
                            other.atom("_TAVRINE_SCREEN_TURN_S" + std::to_string(other.screenNumber())),
                            XCB_CURRENT_TIME);
    ASSERT_TRUE(other.finish());
    QElapsedTimer clock;
    clock.start();
    sampler = screen.samplers().makeSampler();
    sampler->showSampler([this](std::optional<QColor> colour) { answers.push_back(colour); });
    EXPECT_LT(clock.elapsed(), 100);
    EXPECT_FALSE(screen.isShown()); // the other one has 400 ms to go
    EXPECT_TRUE(eventually([this] { return screen.isShown(); }));
    EXPECT_GE(clock.elapsed(), 400);
    screen.cancel();
    EXPECT_TRUE(isAnswered());
}

TEST_F(X11ColorSampler, everyCornerAndEdgeOfTheScreenCanBeHit) {
    const QRect area = screen.pattern.screen();
    const QPoint middle = area.center();
    for (const QPoint place : {area.topLeft(), area.topRight(), area.bottomLeft(), area.bottomRight(),
                               QPoint(middle.x(), 0), QPoint(area.right(), middle.y()), middle}) {
        screen.place = place;
        screen.take();
        ASSERT_TRUE(isAnswered());
        EXPECT_EQ(answers.back(), screen.colour()) << place.x() << ", " << place.y();
        answers.clear();
        SetUp();
    }
    screen.cancel();
    ASSERT_TRUE(isAnswered());
}

TEST_F(X11ColorSampler, theMagnifierIsNotInWhatItSamples) {
    // It stands where the next click goes; were the live screen read, its pixels would be taken.
    screen.person.movePointer(300, 300);
    const QPoint within(390, 390);
    ASSERT_TRUE(eventually([&] {
        return screen.pattern.shownAt(within.x(), within.y()) != PatternWindow::colourAt(within.x(), within.y());
    }));
    screen.place = within;
    screen.take();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers[0], screen.colour());
}

TEST_F(X11ColorSampler, arrowKeysMoveThePixelByOne) {
    screen.person.movePointer(200, 200);
    ASSERT_TRUE(eventually([&] { return screen.pattern.shownAt(280, 280) != PatternWindow::colourAt(280, 280); }));
    for (const int keycode : {key::right, key::right, key::down, key::left})
        screen.person.tap(keycode);
    letPass(std::chrono::milliseconds(100));
    screen.person.tap(key::returnKey);
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers[0], QColor::fromRgb(PatternWindow::colourAt(201, 201)));
}

TEST_F(X11ColorSampler, aRightClickCancels) {
    screen.person.click(3, 50, 50);
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers[0], std::nullopt);
}

TEST_F(X11ColorSampler, anotherProgramsGrabIsWaitedOut) {
    screen.cancel();
    ASSERT_TRUE(isAnswered());
    answers.clear();
    TestKeyboard menu;
    ASSERT_TRUE(menu.grabPointer());
    ASSERT_TRUE(menu.grabKeyboard());
    SetUp();
    letPass(std::chrono::milliseconds(200));
    EXPECT_TRUE(answers.empty());
    menu.ungrabPointer();
    menu.ungrabKeyboard();
    ASSERT_TRUE(eventually([&] {
        const bool isFree = menu.grabKeyboard();
        if (isFree)
            menu.ungrabKeyboard();
        return !isFree;
    }));
    screen.take();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers[0], screen.colour());
}

TEST_F(X11ColorSampler, nothingOfThePicturesStaysAfterTheAnswer) {
    screen.cancel();
    ASSERT_TRUE(isAnswered());
    const qint64 before = residentKb();
    for (int i = 0; i < 10; ++i) {
        answers.clear();
        SetUp();
        screen.take();
        ASSERT_TRUE(isAnswered());
    }
    EXPECT_LT(residentKb() - before, 2000) << "two pictures of this screen are 8 MB";
}

} // namespace
} // namespace tavrine::test
