#pragma once

#include "adapters/fake/FakeApplicationCatalog.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakeLoginItem.h"
#include "adapters/fake/FakeMovieAsset.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeWorkspace.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "clipboard/ClipboardManager.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <limits>

#include <gtest/gtest.h>

namespace tavrine {

using namespace std::chrono_literals;

inline QString str(const char *text) {
    return QString::fromUtf8(text);
}

inline const QStringList plainTypes{QLatin1String(pasteboardType::string)};

/// A manager over fakes, a real database and real files in a home of its own. My Saved counts as seeded, so that a
/// history holds what the test put there and nothing else.
class ManagerTest : public testing::Test {
protected:
    ManagerTest() { defaults.set(str("ClipboardMySaveSeeded"), true); }

    void SetUp() override { ASSERT_TRUE(home.isValid()); }

    void start() { start(database); }
    void start(ClipboardDatabase &store) {
        manager = std::make_unique<ClipboardManager>(ClipboardManager::Ports{
            time, defaults, pasteboard, workspace, catalog, coder, movies, loginItem, folders, store});
    }
    void quit() { manager.reset(); }

    void tick() {
        time.advance(ClipboardManager::pollInterval);
        manager->finishRecording();
    }
    void copy(const QString &text) {
        pasteboard.copyFromOutside(text);
        tick();
    }
    void copy(const QImage &image) {
        pasteboard.copyFromOutside(image);
        tick();
    }

    /// A row that is `age` old.
    ClipboardItem save(const QString &content, Seconds age = Seconds{0},
                       const std::optional<QString> &fileName = std::nullopt) {
        ClipboardItem item{QUuid::createUuid(), content, time.now() - age, false, false, fileName};
        database.save(item);
        return item;
    }
    ClipboardItem savePinned(const QString &content, Seconds age = Seconds{0},
                             const std::optional<QString> &fileName = std::nullopt) {
        ClipboardItem item = save(content, age, fileName);
        item.isPinned = true;
        database.save(item);
        return item;
    }
    ClipboardItem saveInMySaved(const QString &content, Seconds age = Seconds{0}) {
        ClipboardItem item = save(content, age);
        item.isSaved = true;
        database.save(item);
        return item;
    }

    [[nodiscard]] std::vector<ClipboardItem> rows() {
        return database.loadAll(std::nullopt, std::numeric_limits<qint64>::max());
    }
    [[nodiscard]] static QStringList contents(const std::vector<ClipboardItem> &items) {
        QStringList list;
        for (const ClipboardItem &item : items)
            list.append(item.content);
        return list;
    }
    [[nodiscard]] QStringList historyContents() const { return contents(manager->history()); }

    static QImage picture(int width, int height) {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        return image;
    }
    [[nodiscard]] QStringList storedImages() const { return QDir(imagesFolder).entryList(QDir::Files, QDir::Name); }
    static void write(const QString &path, const QByteArray &content = "content") {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
        ASSERT_EQ(file.write(content), content.size());
    }

    QTemporaryDir home;
    Folders folders{home.path() + str("/.local/share"), home.path(), home.path() + str("/Dokumente"),
                    home.path() + str("/.cache/Tavrine/tmp")};
    QString imagesFolder = folders.applicationSupport + str("/Tavrine/Images");
    QString quickShotsFolder = home.path() + str("/Documents/Tavrine QuickShots");
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.path() + str("/.config/com.veltrane.Tavrine.plist"), time, center};
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeApplicationCatalog catalog;
    FakeImageCoder coder;
    FakeMovieAsset movies;
    FakeLoginItem loginItem;
    ClipboardDatabase database{folders.applicationSupport + str("/Tavrine/clipboard.db")};
    std::unique_ptr<ClipboardManager> manager;
};

} // namespace tavrine
