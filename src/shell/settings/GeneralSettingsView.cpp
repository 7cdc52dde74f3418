#include "shell/settings/GeneralSettingsView.h"

#include "look/Tile.h"
#include "look/Toggle.h"

namespace tavrine {

using namespace look;

GeneralSettingsView::GeneralSettingsView(const GeneralSettingsModel::Ports &ports)
    : SettingsPage(QStringLiteral("General"), {}), m_model(ports) {
    Card *card = addSection();
    const auto [loginRow, login] = makeToggleRow(QStringLiteral("power"), QStringLiteral("Launch at Login"),
                                                 QStringLiteral("Start Tavrine automatically when you log in"));
    const auto [itemRow, item] =
        makeToggleRow(QStringLiteral("menubar.arrow.up.rectangle"), QStringLiteral("Show in Menu Bar"),
                      QStringLiteral("Hide or show the Tavrine menu bar icon"));
    card->add(loginRow);
    card->add(itemRow);
    const auto refresh = [this, login = login, item = item] {
        login->setChecked(m_model.launchAtLogin());
        item->setChecked(m_model.showInMenuBar());
    };
    refresh();
    connect(&m_model, &GeneralSettingsModel::changed, this, refresh);
    connect(login, &QAbstractButton::toggled, &m_model, &GeneralSettingsModel::setLaunchAtLogin);
    connect(item, &QAbstractButton::toggled, &m_model, &GeneralSettingsModel::setShowInMenuBar);
}

} // namespace tavrine
