#pragma once

#include "look/SettingsPage.h"

namespace tavrine {

class SoftwareUpdater;
class UrlOpener;

/// Who made the program, which one it is, and what the last look for a newer one brought. Belongs to the window; main
/// thread.
class AboutView final : public look::SettingsPage {
    Q_OBJECT

public:
    struct Parts {
        UrlOpener &urlOpener;     ///< outlives the page
        SoftwareUpdater &updater; ///< may go before it
        QString resources;
        QString appVersion;
        QString buildNumber; ///< empty when the build has none
    };
    explicit AboutView(const Parts &parts);

    /// How often the icon was pressed since the page opened or since the last fifth time. It counts, and nothing comes
    /// of it.
    [[nodiscard]] int tapCount() const { return m_tapCount; }

private:
    static constexpr int tapsInARound = 5;

    [[nodiscard]] QWidget *makeIcon();
    [[nodiscard]] QWidget *makeUpdates(SoftwareUpdater &updater);

    int m_tapCount = 0;
};

} // namespace tavrine
