#pragma once

#include "adapters/fake/FakeAudioPlayers.h"
#include "adapters/fake/FakeDownloads.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "base/UserDefaults.h"
#include "utilities/lofi/LofiManager.h"
#include "utilities/lofi/LofiTracks.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The music in a home of its own, over fakes; copies are made for real.
struct LofiWorld {
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("d.plist")), time, center};
    FakeAudioPlayers players{time};
    FakeDownloads downloads{time};
    FakeFilePanels panels{time};
    FakeUrlOpener urlOpener;
    SerialQueue queue{text("com.tavrine.lofi")};
    int choice = 0;  ///< of the track to fetch
    int offered = 0; ///< how many it was of
    bool mayPlay = true;
    QString folder = lofiTracks::folder(home.path());

    [[nodiscard]] std::unique_ptr<LofiManager> makeManager() {
        return std::make_unique<LofiManager>(
            LofiManager::Ports{.time = time,
                               .defaults = defaults,
                               .players = players,
                               .devices = players,
                               .downloads = downloads,
                               .filePanels = panels,
                               .fileQueue = queue,
                               .applicationSupport = home.path(),
                               .trackUrls = {QUrl(text("https://example.org/a/track_1.mp3")),
                                             QUrl(text("https://example.org/a/track_2.mp3"))},
                               .anyOf =
                                   [this](int count) {
                                       offered = count;
                                       return choice;
                                   },
                               .mayPlay = [this] { return mayPlay; }});
    }
    /// Until nothing is under way.
    void settle() {
        queue.sync([] {});
        time.runPending();
    }
    QString write(const QString &path, const QByteArray &contents = "sound") {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(contents);
        return path;
    }
    QString writeTrack(const char *name) { return write(folder + QLatin1Char('/') + text(name)); }
    [[nodiscard]] static QByteArray contentsOf(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// What the tracks folder holds, hidden files included.
    [[nodiscard]] QStringList kept() const {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
};

class LofiTest : public testing::Test, public LofiWorld {
protected:
    /// What is printed by `work` and by what follows from it.
    template <class Work>
    std::string printedBy(Work work) {
        testing::internal::CaptureStdout();
        work();
        settle();
        return testing::internal::GetCapturedStdout();
    }
    std::string play() {
        return printedBy([this] { manager->play(); });
    }
    std::string import(const QString &path) {
        return printedBy([&] { manager->importCustomTrack(path); });
    }
    QString stored(const Preference<QString> &preference) { return preference.get(defaults); }

    std::unique_ptr<LofiManager> manager = makeManager();
};

} // namespace tavrine
