#include "shell/settings/NetworkSettingsView.h"

#include "look/SegmentedControl.h"
#include "look/Tile.h"
#include "look/Toggle.h"

namespace tavrine {

using namespace look;

NetworkSettingsView::NetworkSettingsView(std::unique_ptr<NetworkSettingsModel> model)
    : SettingsPage(QStringLiteral("Network Speed"), QStringLiteral("Live upload and download speeds in the menu bar")),
      m_model(std::move(model)) {
    const auto [shownRow, shown] = makeToggleRow(QStringLiteral("network"), QStringLiteral("Show Internet Speed"),
                                                 QStringLiteral("Replace the menu bar icon with the live speed"));
    auto *mode = new SegmentedControl(NetworkSettingsModel::displayModeLabels());
    auto *modeRow = new SettingsRow(QStringLiteral("arrow.up.arrow.down"), QStringLiteral("Display"));
    modeRow->setTrailing(mode);
    auto *theme = new SegmentedControl(NetworkSettingsModel::themeLabels());
    auto *themeRow = new SettingsRow(QStringLiteral("paintbrush.fill"), QStringLiteral("Theme"));
    themeRow->setTrailing(theme);
    Card *card = addSection();
    card->add(shownRow);
    card->add(modeRow);
    card->add(themeRow);

    const auto refresh = [this, shown = shown, mode, theme] {
        shown->setChecked(m_model->showsInternetSpeed());
        mode->setCurrent(static_cast<int>(m_model->displayMode()));
        theme->setCurrent(static_cast<int>(m_model->theme()));
    };
    refresh();
    NetworkSettingsModel *followed = m_model.get();
    connect(followed, &NetworkSettingsModel::changed, this, refresh);
    connect(shown, &QAbstractButton::toggled, followed, &NetworkSettingsModel::setShowsInternetSpeed);
    connect(mode, &SegmentedControl::chosen, followed,
            [followed](int index) { followed->setDisplayMode(static_cast<SpeedDisplayMode>(index)); });
    connect(theme, &SegmentedControl::chosen, followed,
            [followed](int index) { followed->setTheme(static_cast<SpeedTheme>(index)); });
}

NetworkSettingsView::~NetworkSettingsView() = default;

} // namespace tavrine
