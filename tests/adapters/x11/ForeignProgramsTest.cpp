#include "adapters/x11/ForeignPrograms.h"

#include "ports/Pasteboard.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

TEST_F(ForeignPrograms, xclipCopiesAndIsKilled) {
    const auto xclip = xclipCopies("xclip: Gr\xC3\xBC\xC3\x9F"
                                   "e\n");
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("xclip: Grüße\n"));
    expectTheSameAfterTheKill(*xclip);
    EXPECT_EQ(xclipPastes(), "xclip: Gr\xC3\xBC\xC3\x9F"
                             "e\n");
}

TEST_F(ForeignPrograms, xclipCopiesAPicture) {
    const QByteArray png = pngOf(coloured(200, 100));
    const auto xclip = xclipCopies(png, {QStringLiteral("-t"), QStringLiteral("image/png")});
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(200, 100));
    EXPECT_FALSE(pasteboard().string());
    expectTheSameAfterTheKill(*xclip);
    EXPECT_EQ(xclipPastes(QStringLiteral("image/png")), png);
}

TEST_F(ForeignPrograms, xclipPastesWhatWeWrite) {
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("Grüße 🌍"));
    pasteboard().writeImage(coloured(120, 90));
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    EXPECT_EQ(xclipPastes(), QStringLiteral("Grüße 🌍").toUtf8());
    EXPECT_EQ(QImage::fromData(xclipPastes(QStringLiteral("image/png"))).size(), QSize(120, 90));
    EXPECT_THAT(xclipPastes(QStringLiteral("TARGETS")).split('\n'),
                IsSupersetOf({QByteArray("TARGETS"), QByteArray("UTF8_STRING"), QByteArray("image/png")}));
}

TEST_F(ForeignPrograms, twentyMegabytesGoBothWaysByteForByte) {
    QByteArray bytes(20 * 1024 * 1024, '\0');
    QRandomGenerator random(3);
    for (char &byte : bytes)
        byte = static_cast<char>('!' + random.bounded(90));
    QElapsedTimer timer;
    timer.start();
    const auto xclip = xclipCopies(bytes);
    ASSERT_TRUE(changed(20000));
    std::printf("20 MB from xclip: %lld ms with its start\n", static_cast<long long>(timer.elapsed()));
    EXPECT_TRUE(pasteboard().string() == QString::fromLatin1(bytes));
    killAndWait(*xclip);
    EXPECT_TRUE(xclipPastes() == bytes) << "kept";
    pasteboard().clearContents();
    pasteboard().setString(QString::fromLatin1(bytes));
    const xcb_window_t before = requestor.owner();
    static_cast<void>(waitUntil([&] { return requestor.owner() != before; }, 200)); // ours before and after
    timer.restart();
    EXPECT_TRUE(xclipPastes() == bytes) << "written";
    std::printf("20 MB to xclip: %lld ms with its start\n", static_cast<long long>(timer.elapsed()));
}

TEST_F(ForeignPrograms, aStoppedXclipBlocksNobody) {
    const auto xclip = xclipCopies("never answered");
    ASSERT_TRUE(changed());
    // It copies again, as far as others can tell, and then hangs: a stopped process of the same kind.
    const auto hung = xclipCopies("hung");
    ASSERT_TRUE(changed());
    ::kill(static_cast<pid_t>(hung->processId()), SIGSTOP);
    SelectionLimits patient; // who would wait for it would do so for longer than this test
    patient.answer = patient.total = std::chrono::minutes(1);
    start(patient); // someone who meets it hung
    const auto next = xclipCopies("next");
    ASSERT_TRUE(changed(20000));
    EXPECT_EQ(pasteboard().string(), QStringLiteral("next"));
    ::kill(static_cast<pid_t>(hung->processId()), SIGKILL);
    hung->waitForFinished();
    next->kill();
    next->waitForFinished();
}

TEST_F(ForeignPrograms, xselCopiesAndPastes) {
    const auto xsel = launch(QStringLiteral("xsel"),
                             {QStringLiteral("--clipboard"), QStringLiteral("--input"), QStringLiteral("--nodetach")},
                             "xsel: Gr\xC3\xBC\xC3\x9F"
                             "e");
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("xsel: Grüße"));
    ASSERT_TRUE(settles());
    killAndWait(*xsel);
    EXPECT_EQ(output(QStringLiteral("xsel"), {QStringLiteral("--clipboard"), QStringLiteral("--output")}),
              "xsel: Gr\xC3\xBC\xC3\x9F"
              "e");
    pasteboard().clearContents();
    pasteboard().setString(QStringLiteral("to xsel: ü"));
    ASSERT_TRUE(waitUntil([&] { return requestor.paste("UTF8_STRING")->bytes.startsWith("to xsel"); }));
    EXPECT_EQ(output(QStringLiteral("xsel"), {QStringLiteral("--clipboard"), QStringLiteral("--output")}),
              QStringLiteral("to xsel: ü").toUtf8());
}

TEST_F(ForeignPrograms, gtkCopiesRichTextAndIsKilled) {
    const auto gtk = launch(QStringLiteral("/usr/bin/python3"),
                            {QStringLiteral(TEST_SOURCE_FOLDER "/gtk_copier.py"), QStringLiteral("rich")});
    ASSERT_TRUE(waitForReady(*gtk));
    ASSERT_TRUE(changed());
    EXPECT_EQ(pasteboard().string(), QStringLiteral("GTK: Grüße 🌍"));
    EXPECT_THAT(*pasteboard().types(), Contains(QLatin1String(pasteboardType::html)));
    EXPECT_THAT(*pasteboard().types(), Contains(QLatin1String(pasteboardType::string)));
    expectTheSameAfterTheKill(*gtk);
    EXPECT_EQ(xclipPastes(QStringLiteral("text/html")), "<b>GTK</b>");
}

TEST_F(ForeignPrograms, gtkCopiesPlainTextAndPictures) {
    auto gtk = launch(QStringLiteral("/usr/bin/python3"),
                      {QStringLiteral(TEST_SOURCE_FOLDER "/gtk_copier.py"), QStringLiteral("text")});
    ASSERT_TRUE(waitForReady(*gtk));
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("GTK: Grüße 🌍"));
    expectTheSameAfterTheKill(*gtk);
    gtk = launch(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral(TEST_SOURCE_FOLDER "/gtk_copier.py"), QStringLiteral("image")});
    ASSERT_TRUE(waitForReady(*gtk));
    ASSERT_TRUE(changed());
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(31, 17));
    expectTheSameAfterTheKill(*gtk);
}

TEST_F(ForeignPrograms, qtCopiesRichTextAndAPictureAndIsKilled) {
    const auto qt = launch(QStringLiteral(QT_COPIER), {QStringLiteral("image")});
    ASSERT_TRUE(waitForReady(*qt));
    ASSERT_TRUE(changed());
    EXPECT_EQ(steps(), 1);
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Qt: Grüße 🌍"));
    ASSERT_TRUE(pasteboard().image());
    EXPECT_EQ(pasteboard().image()->size(), QSize(33, 22));
    EXPECT_THAT(*pasteboard().types(), Contains(QLatin1String(pasteboardType::html)));
    ASSERT_TRUE(settles()) << "it offers a dozen picture formats, and all are fetched";
    expectTheSameAfterTheKill(*qt);
    EXPECT_EQ(xclipPastes(QStringLiteral("text/html")), "<b>Qt</b>");
}

TEST_F(ForeignPrograms, aQtProgramThatEndsInOrderLeavesItsContents) {
    const auto qt = launch(QStringLiteral(QT_COPIER), {});
    ASSERT_TRUE(waitForReady(*qt));
    ASSERT_TRUE(changed());
    ASSERT_TRUE(settles());
    qt->closeWriteChannel();
    ASSERT_TRUE(qt->waitForFinished());
    ASSERT_TRUE(waitUntil([&] { return requestor.owner() != 0; }));
    EXPECT_EQ(xclipPastes(QStringLiteral("text/html")), "<b>Qt</b>");
    EXPECT_EQ(pasteboard().string(), QStringLiteral("Qt: Grüße 🌍"));
}

TEST_F(ForeignPrograms, aSecretOfAQtProgramIsNotKept) {
    const auto qt = launch(QStringLiteral(QT_COPIER), {QStringLiteral("secret")});
    ASSERT_TRUE(waitForReady(*qt));
    ASSERT_TRUE(changed());
    EXPECT_THAT(*pasteboard().types(), Contains(QLatin1String(pasteboardType::concealed)));
    EXPECT_FALSE(pasteboard().string());
    qt->kill();
    qt->waitForFinished();
    EXPECT_FALSE(waitUntil([&] { return requestor.owner() != 0; }, 500));
}

TEST_F(ForeignPrograms, aLargePictureOfGtkIsKeptInOneForm) {
    const auto small = xclipCopies("small");
    ASSERT_TRUE(changed());
    const double before = residentMegabytes();
    const auto gtk = launch(QStringLiteral("/usr/bin/python3"),
                            {QStringLiteral(TEST_SOURCE_FOLDER "/gtk_copier.py"), QStringLiteral("large")});
    ASSERT_TRUE(waitForReady(*gtk));
    ASSERT_TRUE(changed());
    ASSERT_TRUE(settles());
    killAndWait(*gtk);
    EXPECT_TRUE(waitUntil([&] { return residentMegabytes() < before + 9 + 5; })) << residentMegabytes() - before;
    const double kept = residentMegabytes();
    const QByteArray jpeg = xclipPastes(QStringLiteral("image/jpeg"));
    EXPECT_EQ(QImage::fromData(jpeg).size(), QSize(2000, 1500));
    EXPECT_TRUE(waitUntil([&] { return residentMegabytes() < before + 9 + 10; })) << residentMegabytes() - before;
    std::printf(
        "resident: %.1f MB before, %.1f MB with a picture of 9 MB kept, %.1f MB after a paste of another form\n",
        before, kept, residentMegabytes());
}

TEST_F(ForeignPrograms, theMemoryOfLargeCopiesIsGivenBack) {
    const auto small = xclipCopies("small");
    ASSERT_TRUE(changed());
    const double before = residentMegabytes();
    double most = 0;
    for (int i = 0; i < 5; ++i) {
        const auto large = xclipCopies(QByteArray(40 * 1024 * 1024, static_cast<char>('a' + i)));
        ASSERT_TRUE(changed(20000));
        EXPECT_EQ(pasteboard().string()->size(), 40 * 1024 * 1024);
        most = std::max(most, residentMegabytes());
        ASSERT_TRUE(large->state() == QProcess::Running);
        const auto again = xclipCopies("small");
        ASSERT_TRUE(changed());
        ASSERT_TRUE(waitUntil([&] { return large->state() == QProcess::NotRunning; })); // it has lost the clipboard
        again->kill();
        again->waitForFinished();
    }
    EXPECT_TRUE(waitUntil([&] { return residentMegabytes() < before + 10; })) << residentMegabytes() - before;
    const double after = residentMegabytes();
    std::printf("resident: %.1f MB before, %.1f MB at most, %.1f MB after five copies of 40 MB\n", before, most, after);
    EXPECT_GT(most, before + 35);
}

} // namespace
} // namespace tavrine
