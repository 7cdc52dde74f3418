#pragma once

#include "base/Date.h"
#include "ports/PackageUpdates.h"
#include "ports/UpdateFeed.h"
#include "shell/updates/UpdateOutcome.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class Time;

/// One look for a newer version: both places are asked at once, and who does not answer in time has not answered.
/// Belongs to `SoftwareUpdater`; main thread. Dropping it cancels both questions.
class UpdateCheck : public QObject {
    Q_OBJECT

public:
    /// A package system that has to be started first may read its lists for half a minute on a slow disk.
    static constexpr Seconds longest{60};

    /// All outlive the check.
    struct Ports {
        Time &time;
        PackageUpdates &packages;
        UpdateFeed *feed; ///< null where the build names none
    };

    /// Asks. `finished` is called once, in a later turn, and may destroy the check.
    UpdateCheck(const Ports &ports, PackageUpdates::Start start, const QString &ownVersion,
                std::function<void(const UpdateOutcome &)> finished);

private:
    void finishIfAnswered();
    void finish();

    QString m_ownVersion;
    QString m_systemVersion;
    std::function<void(const UpdateOutcome &)> m_finished;
    bool m_hasFeed;
    std::optional<PackageUpdates::Answer> m_packages;
    std::optional<UpdateFeed::Answer> m_feed;
    std::unique_ptr<PackageUpdates::Question> m_packageQuestion;
    std::unique_ptr<UpdateFeed::Question> m_feedQuestion;
};

} // namespace tavrine
