#include "shell/updates/UpdateCheck.h"

#include "base/Time.h"

#include <utility>

namespace tavrine {

UpdateCheck::UpdateCheck(const Ports &ports, PackageUpdates::Start start, const QString &ownVersion,
                         std::function<void(const UpdateOutcome &)> finished)
    : m_ownVersion(ownVersion), m_finished(std::move(finished)), m_hasFeed(ports.feed != nullptr) {
    m_packageQuestion = ports.packages.ask(start, [this](const PackageUpdates::Answer &answer) {
        m_packages = answer;
        finishIfAnswered();
    });
    if (m_hasFeed) {
        m_systemVersion = ports.feed->systemVersion();
        m_feedQuestion = ports.feed->fetch([this](const UpdateFeed::Answer &answer) {
            m_feed = answer;
            finishIfAnswered();
        });
    }
    ports.time.asyncAfter(longest, this, [this] { finish(); });
}

void UpdateCheck::finishIfAnswered() {
    if (m_packages && (m_feed || !m_hasFeed))
        finish();
}

void UpdateCheck::finish() {
    const auto finished = std::exchange(m_finished, nullptr);
    if (!finished)
        return;
    if (m_hasFeed && !m_feed)
        m_feed.emplace();
    const UpdateOutcome outcome = outcomeOf({.ownVersion = m_ownVersion,
                                             .packages = m_packages.value_or(PackageUpdates::Answer{}),
                                             .feed = m_feed,
                                             .systemVersion = m_systemVersion});
    finished(outcome); // and with that, most likely, this is gone
}

} // namespace tavrine
