#include "shell/settings/PrivacySettingsView.h"

#include "look/Button.h"
#include "look/FactRow.h"
#include "look/Indicators.h"
#include "look/OutcomeView.h"
#include "look/Tile.h"

namespace tavrine {

using namespace look;

PrivacySettingsView::PrivacySettingsView(const PrivacySettingsModel::Ports &ports)
    : SettingsPage(QStringLiteral("Privacy"), QStringLiteral("Your data stays on your Mac. Nothing is ever uploaded.")),
      m_model(ports) {
    Card *promise = addSection();
    promise->add(new FactRow(QStringLiteral("lock.shield.fill"), QStringLiteral("All data is stored locally"),
                             QStringLiteral("Clipboard history, screenshots, and settings are stored only on this Mac "
                                            "and are never sent to any server.")));

    Card *management = addSection(QStringLiteral("Data Management"));
    auto *row = new SettingsRow(QStringLiteral("trash.fill"), QStringLiteral("Clear All Data"),
                                QStringLiteral("Permanently delete clipboard history and cached files"));
    auto *clear = new Button(QStringLiteral("Clear All"), ButtonStyle::destructive);
    auto *outcome = new OutcomeView(clear, QStringLiteral("Cleared"));
    row->setTrailing(outcome);
    management->add(row);
    connect(clear, &QAbstractButton::clicked, &m_model, &PrivacySettingsModel::clearAll);
    connect(&m_model, &PrivacySettingsModel::changed, outcome,
            [this, outcome] { outcome->setDone(m_model.cleared()); });

    Card *more = addSection();
    auto *policyRow = new SettingsRow(QStringLiteral("doc.text"), QStringLiteral("Privacy Policy"));
    auto *policy = new Button(QStringLiteral("arrow.up.right"), QStringLiteral("Privacy Policy"));
    policyRow->setTrailing(policy);
    more->add(policyRow);
    connect(policy, &QAbstractButton::clicked, &m_model, &PrivacySettingsModel::openPolicy);
}

} // namespace tavrine
