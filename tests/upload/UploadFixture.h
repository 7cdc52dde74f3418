#pragma once

#include "adapters/fake/FakeKeychain.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "support/Eventually.h"
#include "upload/CustomUploadManager.h"
#include "upload/UploadRunner.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace tavrine::test {

/// A script store over a key ring in memory, and an engine that is played by the test.
class UploadFixture : public testing::Test {
protected:
    struct Run {
        QString script;
        QString imageBase64;
        QString fileName;
        Seconds timeout;
        std::function<void(const UploadScriptRunResult &)> completion;
    };

    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(QStringLiteral("defaults.plist")), time, center};
    FakeKeychain keychain;
    KeychainItem item{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("cloudUploadScript")};
    std::unique_ptr<CustomUploadManager> manager;
    std::vector<Run> runs;

    UploadRunner runner() {
        return [this](const QString &script, const QString &image, const QString &name, Seconds timeout,
                      const std::function<void(const UploadScriptRunResult &)> &completion) {
            runs.push_back({script, image, name, timeout, completion});
        };
    }

    CustomUploadManager &makeManager() {
        manager = std::make_unique<CustomUploadManager>(
            CustomUploadManager::Ports{.defaults = defaults, .keychain = keychain, .time = time});
        return *manager;
    }
    /// Waits, with the main queue running, for what the key ring's queue does.
    template <class Condition>
    [[nodiscard]] bool happens(Condition condition) {
        return eventually([&] {
            time.runPending();
            return condition();
        });
    }
    /// A manager whose script has arrived.
    CustomUploadManager &makeManagerWith(const QString &script) {
        keychain.store(item, script.toUtf8());
        makeManager().setEnabled(true);
        EXPECT_TRUE(happens([&] { return manager->savedScript() == script; }));
        return *manager;
    }
};

} // namespace tavrine::test
