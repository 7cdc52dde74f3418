#pragma once

#include "adapters/fake/FakePackageUpdates.h"
#include "adapters/fake/FakeUpdateFeed.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/FakeUserNotifications.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "shell/updates/SoftwareUpdater.h"
#include "shell/updates/UpdatePreferences.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using State = SoftwareUpdater::State;
using Packages = PackageUpdates::Answer;
using Start = PackageUpdates::Start;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

inline constexpr auto noSource =
    "Tavrine: This copy of Tavrine does not look for updates by itself. New versions come the way "
    "it was installed.";
inline constexpr auto noAnswer =
    "Tavrine: Tavrine could not find out whether there is a newer version. Try again later.";
inline constexpr auto upToDate = "Tavrine: Tavrine 2.3.1 is up to date.";
inline constexpr auto refused =
    "Tavrine: The answer about new versions was not signed by the makers of Tavrine, so it was not used.";
inline constexpr auto package =
    "Tavrine: Tavrine 2.4.0 is available; this is 2.3.1. Install it with the software updates of this computer.";
inline constexpr auto download =
    "Tavrine: Tavrine 2.5.0 is available; this is 2.3.1. You get it at https://example.org/2.5.0";
inline constexpr auto looking = "Tavrine: Tavrine is looking for a newer version…";

class SoftwareUpdaterTest : public testing::Test {
protected:
    /// The program, started now; `hasFeed` says whether it names one.
    void start(bool hasFeed = false) {
        updater = std::make_unique<SoftwareUpdater>(
            SoftwareUpdater::Ports{time, defaults, packages, hasFeed ? &feed : nullptr, notifications, opener},
            text("2.3.1"));
        updater->start();
    }
    void offerPackage(const char *version) {
        packages.setAnswer({Packages::Kind::versions, text("2.3.1"), {text(version)}});
    }
    void offerNothing() { packages.setAnswer({Packages::Kind::versions, text("2.3.1")}); }
    void offerDownload(const char *version) {
        feed.setContents(QByteArray("<rss><channel><item><version>") + version +
                         "</version><enclosure length='1' url='https://example.org/" + version +
                         "'/></item></channel></rss>");
    }
    void askByHand() {
        updater->checkForUpdates();
        time.runPending();
    }
    [[nodiscard]] std::vector<std::string> told() const {
        std::vector<std::string> all;
        for (const UserNotification &each : notifications.shown())
            all.push_back((each.title + text(": ") + each.body).toStdString());
        return all;
    }
    [[nodiscard]] qsizetype looks() const { return packages.asked().size(); }
    [[nodiscard]] Date lastCheck() const { return preference::updatesLastCheck.get(defaults); }
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }

    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(text("preferences.plist")), time, center};
    FakePackageUpdates packages{time};
    FakeUpdateFeed feed{time};
    FakeUserNotifications notifications{time};
    FakeUrlOpener opener;
    std::unique_ptr<SoftwareUpdater> updater;
};

} // namespace tavrine
