#include "shell/settings/ClipboardSettingsView.h"

#include "look/Button.h"
#include "look/FactRow.h"
#include "look/FolderRow.h"
#include "look/Indicators.h"
#include "look/OutcomeView.h"
#include "look/SegmentedControl.h"
#include "look/Toggle.h"
#include "shell/settings/ExcludedAppsView.h"
#include "shell/settings/StatisticsView.h"

namespace tavrine {

using namespace look;

ClipboardSettingsView::ClipboardSettingsView(const Parts &parts, std::unique_ptr<ShortcutEditor> editor)
    : SettingsPage(QStringLiteral("Clipboard"), QStringLiteral("Track and access your clipboard history")),
      m_model(parts.ports) {
    addPanel(parts, std::move(editor));
    addHistory();
    addBehaviour();
    addSection(QStringLiteral("Excluded Applications"), new ExcludedAppsView(m_model));
    addData();
}

void ClipboardSettingsView::addPanel(const Parts &parts, std::unique_ptr<ShortcutEditor> editor) {
    Card *card = addSection();
    card->add(makeFlagRow(Feature::clipboardHistory, QStringLiteral("Clipboard History"),
                          QStringLiteral("Record what you copy, on this computer only"), parts.flags));
    auto *row = new SettingsRow(QStringLiteral("square.grid.2x2.fill"), QStringLiteral("Panel"),
                                QStringLiteral("Choose which panel the shortcut opens"));
    auto *choice = new SegmentedControl({QStringLiteral("Search"), QStringLiteral("Classic")});
    row->setTrailing(choice);
    card->add(row);
    const auto refresh = [this, choice] {
        choice->setCurrent(m_model.experience() == ClipboardExperience::search ? 0 : 1);
    };
    connect(choice, &SegmentedControl::chosen, &m_model, [this](int index) {
        m_model.setExperience(index == 0 ? ClipboardExperience::search : ClipboardExperience::classic);
    });
    connect(&m_model, &ClipboardSettingsModel::changed, choice, refresh);
    refresh();
    addSection(
        QStringLiteral("Shortcut"),
        new ShortcutEditorView(std::move(editor),
                               {.typeNote = QStringLiteral("Choose how you want to open the clipboard"),
                                .keyTitle = QStringLiteral("Key"),
                                .keyNote = {},
                                .doubleTapNote = QStringLiteral("Tap Option twice quickly to open the clipboard")},
                               parts.urlOpener));
}

void ClipboardSettingsView::addHistory() {
    addSection(QStringLiteral("Statistics"))->add(new StatisticsView(m_model));
    Card *card = addSection(QStringLiteral("History"));
    card->add(new SettingsRow(QStringLiteral("clock"), QStringLiteral("History Limit"),
                              QStringLiteral("Text-based clipboard history does not expire")));
    card->add(new SettingsRow(QStringLiteral("number.circle"), QStringLiteral("Max Items"),
                              QStringLiteral("Text-based clipboard items have no count limit")));
    card->add(new SettingsRow(QStringLiteral("photo"), QStringLiteral("Image Retention"),
                              QStringLiteral("7 Days (max 50 images)")));
    card->add(
        new FactRow(QStringLiteral("tray.fill"), QStringLiteral("Storage Location"),
                    QStringLiteral("Clipboard history is stored on disk, not in memory, allowing long-term search "
                                   "without increasing RAM usage.")));
}

void ClipboardSettingsView::addBehaviour() {
    Card *card = addSection(QStringLiteral("Behaviour"));
    const auto [stripRow, strip] = makeToggleRow(QStringLiteral("textformat"), QStringLiteral("Strip Formatting"),
                                                 QStringLiteral("Keep only the plain text of what you copy"));
    const auto [restartRow, restart] =
        makeToggleRow(QStringLiteral("arrow.counterclockwise"), QStringLiteral("Clear on Mac Restart"),
                      QStringLiteral("Wipe history when your Mac reboots"));
    card->add(stripRow);
    card->add(restartRow);
    auto *folder = new FolderRow(QStringLiteral("Save Folder"));
    card->add(folder);
    const auto refresh = [this, strip = strip, restart = restart, folder] {
        strip->setChecked(m_model.stripsFormatting());
        restart->setChecked(m_model.clearsOnRestart());
        folder->setFolder(m_model.saveFolder(), m_model.hasOwnSaveFolder());
    };
    refresh();
    connect(&m_model, &ClipboardSettingsModel::changed, this, refresh);
    connect(strip, &QAbstractButton::toggled, &m_model, &ClipboardSettingsModel::setStripsFormatting);
    connect(restart, &QAbstractButton::toggled, &m_model, &ClipboardSettingsModel::setClearsOnRestart);
    connect(folder, &FolderRow::changePressed, &m_model, &ClipboardSettingsModel::changeSaveFolder);
    connect(folder, &FolderRow::resetPressed, &m_model, &ClipboardSettingsModel::resetSaveFolder);
}

void ClipboardSettingsView::addData() {
    Card *card = addSection(QStringLiteral("Data"));
    auto *exportRow = new SettingsRow(QStringLiteral("square.and.arrow.up"), QStringLiteral("Export History"),
                                      QStringLiteral("Save a plain-text copy of your clipboard"));
    auto *exportButton = new Button(QStringLiteral("Export"));
    auto *outcome = new OutcomeView(exportButton, QStringLiteral("Exported"));
    exportRow->setTrailing(outcome);
    card->add(exportRow);
    auto *clearRow = new SettingsRow(QStringLiteral("trash.fill"), QStringLiteral("Clear History"),
                                     QStringLiteral("Pinned and My Saved items will not be removed"));
    auto *clear = new Button(QStringLiteral("Clear"), ButtonStyle::destructive);
    clearRow->setTrailing(clear);
    card->add(clearRow);
    connect(exportButton, &QAbstractButton::clicked, &m_model, &ClipboardSettingsModel::exportHistory);
    connect(clear, &QAbstractButton::clicked, &m_model, &ClipboardSettingsModel::clearHistory);
    connect(&m_model, &ClipboardSettingsModel::changed, outcome,
            [this, outcome] { outcome->setDone(m_model.exported()); });
}

} // namespace tavrine
