// A window that is hidden or destroyed while the toolkit's thread is telling it that its picture was shown. That takes
// the thread a millionth of a second; here it is held up at that moment, before it reaches the window.
#include "adapters/wayland/HiddenWindows.h"

#include "support/Wait.h"

#include <QPainter>
#include <QRasterWindow>

#include <atomic>
#include <chrono>
#include <string_view>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

namespace {

std::atomic<bool> isHeldUp = false;
std::atomic<int> timesHeldUp = 0;
constexpr std::chrono::milliseconds lengthOfStop{3};

/// Other libraries have threads that call through the same function.
bool isToolkitsThread() {
    char name[16] = "";
    return pthread_getname_np(pthread_self(), name, sizeof name) == 0 &&
           std::string_view(name).starts_with("WaylandEventThr");
}

/// The client library has listeners of its own, which hear in any thread which numbers are free again.
bool isToolkits(const void *function) {
    Dl_info found{};
    return ::dladdr(function, &found) != 0 &&
           std::string_view(found.dli_fname).find("WaylandClient") != std::string::npos;
}

} // namespace

/// The client library calls every listener through this function of another library, and finds this one before it.
extern "C" __attribute__((visibility("default"))) void ffi_call(void *shape, void (*function)(), void *result,
                                                                void **arguments) {
    using Call = void (*)(void *, void (*)(), void *, void **);
    static const auto call = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "ffi_call"));
    const bool holdsUp = isToolkitsThread() && isToolkits(reinterpret_cast<const void *>(function));
    if (holdsUp) {
        isHeldUp = true;
        ++timesHeldUp;
        const auto end = std::chrono::steady_clock::now() + lengthOfStop;
        while (std::chrono::steady_clock::now() < end) {
        }
    }
    call(shape, function, result, arguments);
    if (holdsUp)
        isHeldUp = false;
}

namespace tavrine {
namespace {

using testing::waitUntil;

/// Asks for the next picture with each.
class Restless final : public QRasterWindow {
public:
    Restless() { resize(200, 100); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter(this).fillRect(QRect(QPoint(), size()), ++m_pictures % 2 ? Qt::red : Qt::blue);
        update();
    }

private:
    int m_pictures = 0;
};

class HiddenWindowsTest : public ::testing::Test {
protected:
    HiddenWindowsTest() { hiddenWindows::guard(); }

    static bool isToldOfAPicture() {
        timesHeldUp = 0;
        return waitUntil([] { return timesHeldUp > 2 && isHeldUp; });
    }
};

constexpr int rounds = 40;

TEST_F(HiddenWindowsTest, aWindowMayBeDestroyedWhileItIsToldOfItsPicture) {
    for (int round = 0; round < rounds; ++round) {
        auto window = std::make_unique<Restless>();
        window->show();
        ASSERT_TRUE(isToldOfAPicture()) << round;
        window.reset();
        EXPECT_FALSE(isHeldUp);
    }
}

TEST_F(HiddenWindowsTest, aWindowMayBeHiddenWhileItIsToldOfItsPictureAndShownAgain) {
    Restless window;
    for (int round = 0; round < rounds; ++round) {
        window.show();
        ASSERT_TRUE(isToldOfAPicture()) << round;
        window.hide();
        EXPECT_FALSE(isHeldUp);
    }
}

TEST_F(HiddenWindowsTest, anotherWindowGoesOnWhenOneIsHidden) {
    Restless stays;
    stays.show();
    for (int round = 0; round < rounds; ++round) {
        auto goes = std::make_unique<Restless>();
        goes->show();
        ASSERT_TRUE(isToldOfAPicture()) << round;
        goes.reset();
        ASSERT_TRUE(isToldOfAPicture()) << round;
    }
}

} // namespace
} // namespace tavrine
