#include "adapters/linux/QtApplication.h"

#include <QCoreApplication>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

/// As a panel, which goes by the program's own way.
class StubbornWindow final : public QWindow {
protected:
    bool event(QEvent *event) override {
        if (event->type() != QEvent::Close)
            return QWindow::event(event);
        event->ignore();
        return true;
    }
};

TEST(QtApplication, endsAlsoWhileAWindowWillNotClose) {
    StubbornWindow window;
    window.show();
    QtApplication application;
    QTimer::singleShot(0, &window, [&] { application.terminate(); });
    QTimer::singleShot(std::chrono::seconds(5), &window, [] { QCoreApplication::exit(7); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST(QtApplication, anEndThatWasAskedForIsTold) {
    QtApplication application;
    testing::internal::CaptureStdout();
    application.terminate();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Tavrine quits, as it was asked to.\n");
}

} // namespace
} // namespace tavrine
