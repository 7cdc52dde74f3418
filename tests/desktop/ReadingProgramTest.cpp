// The built program with all its real parts: the text of a capture in the notepad, and a capture's way to a server by
// the person's script in a real key ring.

#include "desktop/Capturing.h"
#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/Wait.h"
#include "upload/RealWorker.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto notepad = "Extracted Text";
// Places in the card: its last and its last but one button.
constexpr QPoint lastOfFive(300, 212);
constexpr QPoint lastOfSix(305, 212);

class CapturesOfAProgram : public ::testing::Test {
protected:
    /// A terminal with words in it, and a capture of its inner part.
    void captureWords() {
        terminal = std::make_unique<Client>(
            QStringLiteral("xterm"),
            QStringList{
                QStringLiteral("-T"), QStringLiteral("words"), QStringLiteral("-fa"), QStringLiteral("Monospace"),
                QStringLiteral("-fs"), QStringLiteral("18"), QStringLiteral("-geometry"), QStringLiteral("44x6+420+80"),
                QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                QStringLiteral("echo; echo ' The quick brown fox jumps'; echo ' over the lazy dog'; sleep 600")});
        ASSERT_TRUE(waitUntil([this] { return desktop.isShown("words"); }));
        const QRect area = desktop.geometry(desktop.windowsTitled(QStringLiteral("words")).front());
        ASSERT_TRUE(waitUntil([&] { return area.width() > 400; }));
        (void)waitUntil([] { return false; }, 500ms); // until the terminal has drawn
        ASSERT_TRUE(capturing.take(QRect(area.topLeft() + QPoint(4, 4), area.bottomRight() - QPoint(20, 4))))
            << qPrintable(program.output());
    }
    [[nodiscard]] QStringList savedCaptures() const {
        return QDir(program.home() + QStringLiteral("/Documents/tavrine")).entryList(QDir::Files);
    }

    Program program;
    Desktop desktop;
    Capturing capturing{desktop, program};
    std::unique_ptr<Client> terminal;
};

TEST_F(CapturesOfAProgram, theTextOfACaptureIsCopiedAndItsPictureSavedWithTheNotepad) {
    ASSERT_TRUE(program.startOnboarded());
    captureWords();
    ASSERT_TRUE(capturing.clickInCard(lastOfFive));
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(notepad); }));
    EXPECT_TRUE(waitUntil([] { return paste().contains("The quick brown fox jumps\n"); }, 30s)) << paste().constData();
    EXPECT_TRUE(paste().contains("over the lazy dog"));
    EXPECT_EQ(savedCaptures(), QStringList());
    desktop.pressEscape();
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(notepad); }));
    ASSERT_TRUE(waitUntil([this] { return savedCaptures().size() == 1; }));
    const QString path = program.home() + QStringLiteral("/Documents/tavrine/") + savedCaptures().constFirst();
    EXPECT_TRUE(waitUntil([&] { return QImage(path).width() > 300; }));
}

TEST_F(CapturesOfAProgram, theTextOfACaptureGoesWhenThePersonSwitchesToAnotherWindowByTheKeyboard) {
    ASSERT_TRUE(program.startOnboarded());
    captureWords();
    ASSERT_TRUE(capturing.clickInCard(lastOfFive));
    ASSERT_TRUE(waitUntil([this] { return desktop.hasKeyboard(notepad); }));
    (void)waitUntil([] { return false; }, 700ms); // until it takes the loss of the keyboard for the person's wish
    // As long as a finger holds it: a window manager whose grab comes after Alt has been let go waits for that for
    // ever.
    desktop.keyboard.down(key::leftAlt);
    desktop.keyboard.tap(key::tab);
    (void)waitUntil([] { return false; }, 200ms);
    desktop.keyboard.up(key::leftAlt);
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(notepad); }));
    EXPECT_TRUE(
        waitUntil([this] { return desktop.activeWindow() == desktop.windowsTitled(QStringLiteral("words")).front(); }));
    EXPECT_TRUE(waitUntil([this] { return savedCaptures().size() == 1; })) << "as every way of closing does";
}

TEST_F(CapturesOfAProgram, aCaptureIsUploadedByTheScriptInTheKeyRing) {
    const tavrine::test::HttpServer server;
    const QTemporaryDir ringHome;
    QProcess keyRing;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        environment.insert(QString::fromLatin1(name), ringHome.path());
    keyRing.setProcessEnvironment(environment);
    keyRing.start(QStringLiteral("gnome-keyring-daemon"),
                  {QStringLiteral("--foreground"), QStringLiteral("--components=secrets"), QStringLiteral("--unlock"),
                   QStringLiteral("--control-directory=") + ringHome.path()});
    keyRing.write("the password");
    keyRing.closeWriteChannel();
    const QString script = QStringLiteral(R"js(function uploadImage(image, fileName) {
        return new Promise((resolve, reject) => nativeHTTPRequest('%1', 'POST', { Authorization: 'Bearer YOUR_TOKEN' },
            JSON.stringify({ fileName, image }), (error, status, body) =>
                error || status !== 200 ? reject(error || body) : resolve(JSON.parse(body).url)));
    })js")
                               .arg(server.url("/upload"));
    const auto isOnTheBus = [] {
        QProcess ask;
        ask.start(QStringLiteral("dbus-send"), {QStringLiteral("--session"), QStringLiteral("--print-reply"),
                                                QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/"),
                                                QStringLiteral("org.freedesktop.DBus.NameHasOwner"),
                                                QStringLiteral("string:org.freedesktop.secrets")});
        return ask.waitForFinished(3000) && ask.readAllStandardOutput().contains("true");
    };
    ASSERT_TRUE(waitUntil(isOnTheBus)) << "a question before that would start another ring, which is locked";
    const auto isStored = // as another program stores it
        [&] {
            QProcess store;
            store.start(QStringLiteral("secret-tool"),
                        {QStringLiteral("store"), QStringLiteral("--label=Tavrine"), QStringLiteral("xdg:schema"),
                         QStringLiteral("org.qt.keychain"), QStringLiteral("server"),
                         QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("user"),
                         QStringLiteral("cloudUploadScript"), QStringLiteral("type"), QStringLiteral("plaintext")});
            store.write(script.toUtf8());
            store.closeWriteChannel();
            return store.waitForFinished(10'000) && store.exitCode() == 0;
        };
    ASSERT_TRUE(isStored());
    ASSERT_TRUE(program.startOnboarded("<key>cloudUploadEnabled</key><true/>"));
    (void)waitUntil([] { return false; }, 2s); // until the script has come from the key ring
    captureWords();
    ASSERT_TRUE(capturing.clickInCard(lastOfSix));
    EXPECT_TRUE(waitUntil([] { return paste().startsWith("https://own/screenshot-"); }, 30s)) << paste().constData();
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(captureCard); }));
    keyRing.kill();
    keyRing.waitForFinished();
}

} // namespace
