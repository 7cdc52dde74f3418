#include "capture/reading/QRScanner.h"

#include "ReadingTest.h"
#include "adapters/fake/FakeApplication.h"
#include "adapters/fake/FakeApplicationActivator.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/FakeWorkspace.h"
#include "capture/ClearedScreen.h"
#include "capture/reading/QRResultModel.h"
#include "support/Eventually.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace tavrine {
namespace {

class QRScannerTest : public ReadingTest {
protected:
    [[nodiscard]] QString temporary() const { return folder.filePath(QStringLiteral("tmp")); }
    [[nodiscard]] QString capturePath() const { return launcher.tasks().last()->arguments().last(); }
    [[nodiscard]] FakePanelWindows::Window *panel() {
        return static_cast<FakePanelWindows::Window *>(scanner.resultPanel());
    }
    /// The person drags a region.
    void capture() {
        scanner.startScan();
        ASSERT_TRUE(picture().save(capturePath()));
        launcher.tasks().last()->finish(0);
        finishScan();
    }
    void finishScan() {
        time.runPending();
        settle();
    }

    QTemporaryDir folder;
    FakeTaskLauncher launcher;
    FakePanelWindows windows;
    FakeScreens screens;
    FakeApplication application;
    FakeWorkspace workspace;
    FakeApplicationActivator activator{workspace};
    QList<QStringList> shown;
    std::function<void()> dismiss;
    bool hasOtherWindow = false;
    ClearedScreen screen{time};
    QRScanner scanner{{launcher, detector, queue, windows, screens, application, activator, screen, time, temporary()},
                      {.makeView =
                           [this](const QStringList &codes, const std::function<void()> &onDismiss) {
                               shown.append(codes);
                               dismiss = onDismiss;
                               return QRScanner::Content{nullptr, {300, 200}};
                           },
                       .hasOtherVisibleWindow = [this] { return hasOtherWindow; }}};
};

TEST_F(QRScannerTest, theToolIsAskedForASilentRegion) {
    scanner.startScan();
    const auto &task = launcher.tasks().last();
    EXPECT_EQ(task->launchPath(), text("/usr/sbin/screencapture"));
    EXPECT_EQ(task->arguments(),
              (QStringList{text("-i"), text("-x"), temporary() + text("/tavrine_qr_1769860800.png")}));
    EXPECT_TRUE(task->wasLaunched());
    EXPECT_TRUE(QDir(temporary()).exists());
}

/// Something that stands on the screen until it is set aside.
struct InTheWay final : ClearedScreen::Windows {
    bool setAside() override { return std::exchange(isShown, false); }
    void bringBack() override { isShown = true; }
    bool isShown = true;
};

TEST_F(QRScannerTest, whatFloatsOverTheDesktopIsNotInTheScan) {
    InTheWay card;
    screen.setWindows(&card);
    scanner.startScan();
    scanner.startScan(); // an impatient hand
    EXPECT_FALSE(card.isShown);
    EXPECT_TRUE(launcher.tasks().isEmpty());
    time.advance(ClearedScreen::settling);
    ASSERT_EQ(launcher.tasks().size(), 1);
    launcher.tasks().last()->finish(1);
    finishScan();
    EXPECT_TRUE(card.isShown);
    launcher.failNextLaunch(text("no such file"));
    scanner.startScan();
    time.advance(ClearedScreen::settling);
    EXPECT_TRUE(card.isShown);
    screen.setWindows(nullptr);
}

TEST_F(QRScannerTest, theTimeInTheNameIsWholeSeconds) {
    time.advance(Seconds{1.9});
    scanner.startScan();
    EXPECT_TRUE(capturePath().endsWith(text("/tavrine_qr_1769860801.png")));
}

TEST_F(QRScannerTest, aSecondScanEndsTheFirst) {
    scanner.startScan();
    scanner.startScan();
    EXPECT_TRUE(launcher.tasks().at(0)->isTerminated());
    EXPECT_FALSE(launcher.tasks().at(1)->isTerminated());
}

TEST_F(QRScannerTest, aToolThatCannotBeLaunchedIsSilent) {
    launcher.failNextLaunch(text("no such file"));
    scanner.startScan();
    finishScan();
    EXPECT_TRUE(shown.isEmpty());
    capture();
    EXPECT_EQ(shown.size(), 1);
}

TEST_F(QRScannerTest, escapeInTheCaptureOpensNoPanel) {
    detector.setPayloads({text("never")});
    scanner.startScan();
    launcher.tasks().last()->finish(1);
    finishScan();
    EXPECT_TRUE(shown.isEmpty());
    EXPECT_EQ(scanner.resultPanel(), nullptr);
    EXPECT_TRUE(detector.images().isEmpty());
}

TEST_F(QRScannerTest, aRegionWithoutACodeIsShownAsOne) {
    capture();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_TRUE(shown.first().isEmpty());
    EXPECT_TRUE(panel()->isVisible());
}

TEST_F(QRScannerTest, aRegionThatCouldNotBeLookedAtIsNotCalledOneWithoutACode) {
    detector.failNext();
    testing::internal::CaptureStdout();
    capture();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to read codes: no answer\n");
    EXPECT_TRUE(shown.isEmpty());
    EXPECT_EQ(scanner.resultPanel(), nullptr);
    EXPECT_FALSE(QFile::exists(capturePath()));
}

TEST_F(QRScannerTest, twoIdenticalCodesAreTwoRows) {
    detector.setPayloads({text("same"), text("same")});
    capture();
    EXPECT_EQ(shown.last(), (QStringList{text("same"), text("same")}));
}

TEST_F(QRScannerTest, theDetectorsOrderStays) {
    detector.setPayloads({text("b"), text("a"), text("c")});
    capture();
    EXPECT_EQ(shown.last(), (QStringList{text("b"), text("a"), text("c")}));
}

TEST_F(QRScannerTest, theFileIsRemoved) {
    capture();
    EXPECT_FALSE(QFile::exists(capturePath()));
}

TEST_F(QRScannerTest, aFileThatIsNoPictureIsRemovedInSilence) {
    scanner.startScan();
    QFile file(capturePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a picture");
    file.close();
    launcher.tasks().last()->finish(0);
    finishScan();
    EXPECT_TRUE(shown.isEmpty());
    EXPECT_FALSE(QFile::exists(file.fileName()));
}

TEST_F(QRScannerTest, aScannerThatGoesEndsWhatIsBeingLookedAt) {
    detector.hold();
    auto gone = std::make_unique<QRScanner>(QRScanner::Ports{launcher, detector, queue, windows, screens, application,
                                                             activator, screen, time, temporary()},
                                            QRScanner::Actions{});
    ASSERT_TRUE(QDir().mkpath(temporary()));
    const QString path = temporary() + text("/tavrine_qr_1.png");
    ASSERT_TRUE(picture().save(path));
    gone->scan(path);
    ASSERT_TRUE(test::eventually([&] { return detector.waiting() == 1; }));
    gone.reset();
    EXPECT_TRUE(test::eventually([&] { return detector.waiting() == 0; }));
    detector.hold(false);
    settle();
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(QRScannerTest, theTerminationTouchesNothingBeforeTheMainQueuesTurn) {
    scanner.startScan();
    picture().save(capturePath());
    launcher.tasks().last()->finish(0);
    drain();
    EXPECT_TRUE(detector.images().isEmpty());
    finishScan();
    EXPECT_EQ(detector.images().size(), 1);
}

TEST_F(QRScannerTest, thePanelIsAsItsContentAndInTheMiddle) {
    capture();
    EXPECT_EQ(panel()->description().level, 3);
    EXPECT_TRUE(panel()->description().hasShadow);
    EXPECT_TRUE(panel()->description().isMovableByBackground);
    EXPECT_TRUE(panel()->description().isInTaskBar);
    EXPECT_EQ(panel()->frame(), QRectF(720 - 150, 438 - 100, 300, 200));
    EXPECT_TRUE(panel()->isKey());
}

TEST_F(QRScannerTest, itOpensOnTheScreenUnderTheMouse) {
    screens.setScreens(
        {{.number = 1, .localizedName = {}, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 876}},
         {.number = 2, .localizedName = {}, .frame = {1440, 0, 1000, 800}, .visibleFrame = {1440, 0, 1000, 800}}});
    screens.setMouseLocation({1500, 20});
    capture();
    EXPECT_EQ(panel()->frame().center(), QPointF(1940, 400));
}

TEST_F(QRScannerTest, withTheMouseOnNoScreenTheMainOneIsTaken) {
    screens.setMouseLocation({-500, -500});
    capture();
    EXPECT_EQ(panel()->frame().center(), QPointF(720, 438));
}

TEST_F(QRScannerTest, theProgramIsRegularWhileThePanelIsOpen) {
    capture();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
    dismiss();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
    EXPECT_EQ(scanner.resultPanel(), nullptr);
}

TEST_F(QRScannerTest, aPanelThatTheDesktopClosesIsDismissed) {
    capture();
    panel()->closeFromOutside();
    EXPECT_EQ(scanner.resultPanel(), nullptr);
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::accessory);
}

TEST_F(QRScannerTest, withAnotherWindowItStaysRegular) {
    capture();
    hasOtherWindow = true;
    dismiss();
    EXPECT_EQ(application.activationPolicy(), ActivationPolicy::regular);
}

TEST_F(QRScannerTest, thePanelOutlivesTheClickThatClosesIt) {
    capture();
    dismiss();
    EXPECT_EQ(windows.windows().size(), 1U) << "it is still telling of the click";
    time.runPending();
    EXPECT_TRUE(windows.windows().empty());
}

TEST_F(QRScannerTest, dismissingNothingChangesNothing) {
    scanner.dismissResults();
    EXPECT_TRUE(application.policies().empty());
}

TEST_F(QRScannerTest, anOlderPictureIsNotReadOnWhenThereIsANewerOne) {
    detector.hold();
    const auto handIn = [this] {
        scanner.startScan();
        ASSERT_TRUE(picture().save(capturePath()));
        launcher.tasks().last()->finish(0);
        time.runPending();
    };
    handIn();
    ASSERT_TRUE(test::eventually([&] { return detector.waiting() == 1; }));
    time.advance(Seconds{1});
    handIn();
    EXPECT_TRUE(test::eventually([&] { return detector.images().size() == 2; }));
    detector.hold(false);
    settle();
    EXPECT_EQ(shown.size(), 1);
}

TEST_F(QRScannerTest, newResultsReplaceTheOldPanel) {
    scanner.showResults({text("a")});
    scanner.showResults({text("b")});
    time.runPending();
    EXPECT_EQ(windows.windows().size(), 1U);
}

TEST(QRResultModelTest, theTitleCounts) {
    EXPECT_EQ(qrResult::title(1), QStringLiteral("1 QR Code Found"));
    EXPECT_EQ(qrResult::title(2), QStringLiteral("2 QR Codes Found"));
    EXPECT_EQ(qrResult::title(10), QStringLiteral("10 QR Codes Found"));
}

TEST(QRResultModelTest, rowsAreCountedFromOneUnlessThereIsButOne) {
    EXPECT_EQ(qrResult::header(0), QStringLiteral("Code 1"));
    EXPECT_EQ(qrResult::header(9), QStringLiteral("Code 10"));
    EXPECT_EQ(qrResult::header(std::nullopt), std::nullopt);
}

TEST(QRResultModelTest, webAddressesCanBeOpened) {
    EXPECT_EQ(qrResult::webAddress(QStringLiteral("https://example.org/a?b=c")),
              QUrl(QStringLiteral("https://example.org/a?b=c")));
    EXPECT_TRUE(qrResult::webAddress(QStringLiteral("http://example.org")));
    EXPECT_TRUE(qrResult::webAddress(QStringLiteral("HTTP://EXAMPLE.ORG")));
}

TEST(QRResultModelTest, nothingElseCanBeOpened) {
    for (const char *code :
         {"", "hello", "ftp://example.org", "mailto:a@example.org", "example.org", "file:///etc/passwd", "https",
          "see https://example.org", "https://exa mple.org", "javascript:alert(1)"})
        EXPECT_FALSE(qrResult::webAddress(QString::fromUtf8(code))) << code;
}

} // namespace
} // namespace tavrine
