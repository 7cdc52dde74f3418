#pragma once

#include "look/SettingsPage.h"

namespace tavrine {

class UrlOpener;

/// Who made the program, and which one it is. Belongs to the window; main thread.
class AboutView final : public look::SettingsPage {
    Q_OBJECT

public:
    struct Parts {
        UrlOpener &urlOpener; ///< outlives the page
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

    int m_tapCount = 0;
};

} // namespace tavrine
