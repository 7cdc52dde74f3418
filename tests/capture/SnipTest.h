#pragma once

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeTaskLauncher.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "base/UserDefaults.h"
#include "capture/PngData.h"
#include "capture/ScreenSnipper.h"
#include "capture/SnipFlow.h"
#include "ports/Keychain.h"
#include "support/Eventually.h"
#include "support/TestHome.h"
#include "upload/CustomUploadManager.h"
#include "upload/FakeWorker.h"
#include "upload/Uploads.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

inline QImage picture(int width = 40, int height = 30, QColor colour = Qt::red) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

inline void writeFile(const QString &path, const QByteArray &content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    file.write(content);
}

/// A key ring that holds an upload script.
class ScriptKeychain final : public Keychain {
public:
    Data copyMatching(const KeychainItem &) override { return QByteArray("function uploadImage() {}"); }
    KeychainStatus update(const KeychainItem &, const QByteArray &) override { return KeychainStatus::success; }
    KeychainStatus add(const KeychainItem &, const QByteArray &) override { return KeychainStatus::success; }
    KeychainStatus remove(const KeychainItem &) override { return KeychainStatus::success; }
    void cancel() override {} // no call of this one waits
};

/// The capture tool over fakes.
class SnipTest : public testing::Test {
protected:
    SnipTest() {
        QDir(home.path()).mkpath(text("Documents"));
        snipper.setOnSnipComplete([this](const QImage &image) {
            captured.append(image);
            if (flow)
                flow->presentSnip(image);
        });
        makeFlow();
    }

    void makeFlow() {
        flow = std::make_unique<SnipFlow>(
            SnipFlow::Ports{time, defaults, pasteboard, screens, windows, panels, snipper, screen, queue, folders,
                            uploads, corner},
            SnipFlow::Actions{.mayCaptureScreen =
                                  [this] {
                                      ++permissionQuestions;
                                      return mayCapture;
                                  },
                              .saveImage =
                                  [this](const QImage &image) {
                                      if (whileStoring)
                                          whileStoring();
                                      stored.append(image);
                                      return storedName;
                                  },
                              .activateApplication = [this] { events << text("activate"); },
                              .openEditorDirectly = [this](const QImage &) { events << text("editor"); },
                              .getTextFromSnip = [this](const QImage &) { events << text("text"); },
                              .showToast = [this](const QString &message, const QString &) { toasts << message; }},
            SnipFlow::Views{});
    }
    /// Lets the files be written and their answers come.
    void settle() {
        queue.sync([] {});
        time.runPending();
    }
    void configureUpload() {
        uploads.manager().setEnabled(true);
        // The key ring answers on a thread of its own.
        ASSERT_TRUE(happens([this] { return uploads.isButtonShown(); }));
    }
    /// Waits, with the main queue running, for what other threads do.
    [[nodiscard]] bool happens(const std::function<bool()> &condition) {
        return test::eventually([&] {
            time.runPending();
            return condition();
        });
    }
    [[nodiscard]] SnippetPreviewModel &card() { return *flow->previewModel(); }
    [[nodiscard]] SnipSaveDialogModel &dialog() { return *flow->saveDialogModel(); }
    [[nodiscard]] QString documents(const char *name = "") {
        return folders.documents + text("/tavrine") + (*name ? text("/") + text(name) : QString());
    }
    [[nodiscard]] static QStringList filesIn(const QString &folder) { return test::TestHome::filesIn(folder); }
    [[nodiscard]] QStringList temporaryFiles() { return filesIn(folders.temporary); }
    [[nodiscard]] FakeTaskLauncher::FakeTask &tool(qsizetype index) { return *launcher.tasks().at(index); }
    [[nodiscard]] std::string outputOf(const std::function<void()> &action) {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }

    test::TestHome home;
    Folders folders = home.folders();
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("defaults.plist")), time, center};
    FakePasteboard pasteboard;
    FakeScreens screens;
    FakePanelWindows windows;
    FakeFilePanels panels{time};
    FakeTaskLauncher launcher;
    ScriptKeychain keychain;
    test::FakeWorker worker{R"(echo '{"url":"https://i.example/1","logs":[]}')"};
    Uploads uploads{{.time = time,
                     .defaults = defaults,
                     .center = center,
                     .keychain = keychain,
                     .pasteboard = pasteboard,
                     .workerPath = worker.path(),
                     .pngData = pngData}};
    SerialQueue queue{text("com.tavrine.snip")};
    ClearedScreen screen{time};
    TakenCorner corner;
    ScreenSnipper snipper{{launcher, defaults, time, folders.temporary}};

    bool mayCapture = true;
    int permissionQuestions = 0;
    std::optional<QString> storedName = text("stored.jpg");
    std::function<void()> whileStoring; ///< on the thread that stores
    QList<QImage> stored;
    QList<QImage> captured;
    QStringList events;
    QStringList toasts;
    std::unique_ptr<SnipFlow> flow;
};

} // namespace tavrine
