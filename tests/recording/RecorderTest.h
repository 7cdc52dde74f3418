#pragma once

#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeMicrophoneSessions.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakeMoviePlayers.h"
#include "adapters/fake/FakeMovieWriter.h"
#include "adapters/fake/FakePanelWindow.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeScreenStreams.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/VirtualTime.h"
#include "recording/ScreenRecorder.h"
#include "support/Eventually.h"
#include "support/TestHome.h"

#include <QDir>
#include <QFileInfo>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The recorder over fakes.
class RecorderTest : public testing::Test {
protected:
    RecorderTest() {
        access.setScreenCaptureGranted(true);
        QDir(home.path()).mkpath(text("Shots"));
        make();
        testing::internal::CaptureStdout();
    }
    ~RecorderTest() override {
        recorder.reset();
        EXPECT_EQ(windows.living(), 0);
        time.advance(1h); // what was still to come does no harm
        testing::internal::GetCapturedStdout();
    }

    void make() {
        recorder = std::make_unique<ScreenRecorder>(
            ScreenRecorder::Ports{
                .selection = {time, access, screens, windows, monitors},
                .engine = {streams, microphones, writers, time, [this] { return mediaNow; }},
                .preview = {time, screens, windows, asset, players, filePanels, pasteboard, folders, corner}},
            ScreenRecorder::Actions{
                .isEnabled = [this] { return isEnabled; },
                .mayCaptureScreen = [this] { return mayCapture; },
                .activateApplication = [this] { events << text("activate"); },
                .showMicrophoneAlert =
                    [this] {
                        recorder->clearSelectionWindow();
                        events << text("microphone alert");
                    },
                .showToast = [this](const QString &message, const QString &icon) { toasts << message + u'|' + icon; }},
            RecordingPreview::Saving{
                .quickShotsDirectory = [this] { return shots; },
                .customSaveDirectoryPath = [this] { return customFolder; },
                .setCustomSaveDirectoryPath =
                    [this](const QString &folder) {
                        customFolder = folder;
                        events << text("folder ") + QFileInfo(folder).fileName();
                    },
                .saveRecording = [this](const QString &path, const QString &name,
                                        RecordingPreview::Saving::Then then) { save(path, name, std::move(then)); }},
            views());
    }
    /// None but the border's, of which it is written down where it was wanted.
    [[nodiscard]] ScreenRecorder::Views views() {
        ScreenRecorder::Views views;
        views.border = [this](const QRectF &appKitRect, const Screen &screen) -> QWidget * {
            borders.append({appKitRect, screen.number});
            return nullptr;
        };
        return views;
    }
    /// As the history does it: moves the movie and puts it on the pasteboard.
    void save(const QString &path, const QString &name, const RecordingPreview::Saving::Then &then) {
        saved << name;
        const auto move = [this, path, name, then] {
            const QString target = *shots + text("/") + savedAs.value_or(name) + text(".mp4");
            if (!saves || !QFile::rename(path, target)) {
                then(std::nullopt);
                return;
            }
            pasteboard.clearContents();
            pasteboard.writeFileUrls({QUrl::fromLocalFile(target)});
            then(target);
        };
        if (savesSlowly)
            time.asyncAfter(10s, move);
        else
            move();
    }

    /// The flow up to the card, with this area.
    ScreenRecorderSelectionModel &selectArea(QRectF area = {100, 200, 320, 240}) {
        recorder->startScreenRecording();
        recorder->selectionModel()->drag(area.topLeft(), area.bottomRight());
        recorder->selectionModel()->endDrag();
        return *recorder->selectionModel();
    }
    /// The flow up to a recording that has its first picture.
    void record() {
        selectArea().start();
        ASSERT_TRUE(happens([this] { return recorder->isRecording(); }));
        awaitPicture();
    }
    void awaitPicture() {
        auto frame = streams.makeFrame({320, 240}, 1);
        const std::weak_ptr<const ScreenFrame> out = frame;
        streams.deliver({static_cast<int>(ScreenFrameStatus::complete), 1s, std::move(frame)});
        ASSERT_TRUE(happens([&] { return out.expired(); }));
    }
    /// The flow up to the preview.
    ScreenRecordingPreviewModel &recordAndStop() {
        record();
        recorder->stopRecording();
        EXPECT_TRUE(happens([this] { return recorder->previewModel(); }));
        return *recorder->previewModel();
    }
    /// Waits, with the main queue running, for what other threads do.
    [[nodiscard]] bool happens(const std::function<bool()> &claim) {
        return test::eventually([&] {
            time.runPending();
            return claim();
        });
    }
    /// Every engine has answered.
    void settle() {
        ASSERT_TRUE(happens([this] {
            return std::ranges::all_of(streams.streams(), [](const auto *stream) { return stream->isDropped; });
        }));
    }
    [[nodiscard]] std::string output() {
        const std::string printed = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return printed;
    }
    [[nodiscard]] FakePanelWindows::Window &fake(PanelWindow *window) {
        return *static_cast<FakePanelWindows::Window *>(window);
    }
    [[nodiscard]] QStringList temporaryFiles() const { return test::TestHome::filesIn(folders.temporary); }
    [[nodiscard]] QStringList savedFiles() const { return test::TestHome::filesIn(*shots); }
    QString leftover(const char *name) {
        QDir().mkpath(folders.temporary);
        const QString path = folders.temporary + text("/") + text(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("movie") > 0);
        return path;
    }

    test::TestHome home;
    Folders folders = home.folders();
    VirtualTime time;
    FakeAccess access;
    FakeScreens screens;
    FakePanelWindows windows;
    FakeEventMonitors monitors;
    FakeScreenStreams streams{time};
    FakeMicrophoneSessions microphones{time};
    FakeMovieWriters writers{time};
    FakeMovieAsset asset;
    FakeMoviePlayers players{time};
    FakeFilePanels filePanels{time};
    FakePasteboard pasteboard;
    TakenCorner corner;
    MediaTime mediaNow = 1s;

    bool isEnabled = true;
    bool mayCapture = true;
    bool saves = true;
    bool savesSlowly = false; ///< to another disk
    std::optional<QString> shots = home.filePath(text("Shots"));
    std::optional<QString> savedAs; ///< another name than the one that was asked for
    QString customFolder;
    QList<std::pair<QRectF, quint32>> borders; ///< the area, with its origin at the bottom left, and its screen
    QStringList events;
    QStringList toasts;
    QStringList saved;
    std::unique_ptr<ScreenRecorder> recorder;
};

} // namespace tavrine
