#include "capture/SnipperSettingsView.h"

#include "capture/SnipperSettingsModel.h"
#include "look/ChoiceButton.h"
#include "look/FolderRow.h"
#include "look/Tile.h"
#include "look/Toggle.h"

namespace tavrine {

using namespace look;

SnipperSettingsView::SnipperSettingsView(std::unique_ptr<SnipperSettingsModel> model, Card *shortcutEditor)
    : SettingsPage(QLatin1String(title), QLatin1String(subtitle)), m_model(std::move(model)) {
    const QString heading = QStringLiteral("Capture");
    if (shortcutEditor)
        addSection(heading, shortcutEditor);
    const auto [soundRow, sound] =
        makeToggleRow(QStringLiteral("speaker.slash.fill"), QStringLiteral("Off shutter sound"),
                      QStringLiteral("Silence the camera sound when capturing"));
    addSection(shortcutEditor ? QString() : heading)->add(soundRow);

    auto *folder = new FolderRow(QStringLiteral("Save Folder"));
    const auto [alwaysRow, always] =
        makeToggleRow(QStringLiteral("tray.and.arrow.down"), QStringLiteral("Always save without asking"),
                      QStringLiteral("Skip the save dialog and use the folder above"));
    Card *saving = addSection();
    saving->add(folder);
    saving->add(alwaysRow);

    QStringList labels;
    for (const auto &[format, label] : colorFormatLabels)
        labels.append(QLatin1String(label));
    auto *color = new ChoiceButton(labels);
    auto *colorRow = new SettingsRow(QStringLiteral("eyedropper"), QStringLiteral("Colour Format"),
                                     QStringLiteral("How the Colour Picker writes what it copies"));
    colorRow->setTrailing(color);
    addSection()->add(colorRow);

    const auto refresh = [this, sound = sound, always = always, folder, color] {
        color->setCurrent(static_cast<int>(m_model->colorFormat()));
        sound->setChecked(m_model->isSoundMuted());
        always->setChecked(m_model->savesWithoutAsking());
        folder->setFolder(m_model->saveFolder(), m_model->hasOwnSaveFolder());
    };
    refresh();
    SnipperSettingsModel *shown = m_model.get();
    connect(shown, &SnipperSettingsModel::changed, this, refresh);
    connect(sound, &QAbstractButton::toggled, shown, &SnipperSettingsModel::setSoundMuted);
    connect(always, &QAbstractButton::toggled, shown, &SnipperSettingsModel::setSavesWithoutAsking);
    connect(color, &ChoiceButton::chosen, shown,
            [shown](int index) { shown->setColorFormat(static_cast<ColorFormat>(index)); });
    connect(folder, &FolderRow::changePressed, shown, &SnipperSettingsModel::changeSaveFolder);
    connect(folder, &FolderRow::resetPressed, shown, &SnipperSettingsModel::resetSaveFolder);
}

SnipperSettingsView::~SnipperSettingsView() = default;

} // namespace tavrine
