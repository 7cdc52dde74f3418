#pragma once

namespace tavrine {

/// The software updater. Lives on the main thread.
class Updater {
public:
    virtual ~Updater() = default;
    /// Begins to look for updates on its own terms. Called once, early in the launch.
    virtual void start() = 0;
    /// Looks now, because the person asked, and tells the person the result, also when no feed is configured.
    virtual void checkForUpdates() = 0;
};

} // namespace tavrine
