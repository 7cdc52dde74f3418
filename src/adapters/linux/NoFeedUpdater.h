#pragma once

#include "ports/Updater.h"

#include <QString>

#include <functional>

namespace tavrine {

/// The updater of a build without an update feed: it looks for nothing and says so when asked.
class NoFeedUpdater final : public Updater {
public:
    using Tell = std::function<void(const QString &title, const QString &text)>;

    /// `tell` shows a message to the person.
    explicit NoFeedUpdater(Tell tell);

    /// Shows messages as notifications of the desktop; a line on standard output where there is no such service.
    [[nodiscard]] static Tell byDesktopNotification();

    void start() override {}
    void checkForUpdates() override;

private:
    Tell m_tell;
};

} // namespace tavrine
