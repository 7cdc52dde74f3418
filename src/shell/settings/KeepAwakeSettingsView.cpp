#include "shell/settings/KeepAwakeSettingsView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/ColorWell.h"
#include "look/Metrics.h"
#include "look/Tile.h"
#include "look/Toggle.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace tavrine {

using namespace look;

KeepAwakeSettingsView::KeepAwakeSettingsView(std::unique_ptr<KeepAwakeSettingsModel> model, QWidget *controls)
    : SettingsPage(QLatin1String(KeepAwakeSettingsModel::title), QLatin1String(KeepAwakeSettingsModel::subtitle)),
      m_model(std::move(model)) {
    using Model = KeepAwakeSettingsModel;
    const auto [indicatorRow, indicator] =
        makeToggleRow(QStringLiteral("cup.and.saucer.fill"), QLatin1String(Model::indicatorTitle),
                      QLatin1String(Model::indicatorNote));
    auto *colorRow = new SettingsRow(QStringLiteral("paintbrush.fill"), QLatin1String(Model::colorTitle),
                                     QLatin1String(Model::colorNote));
    auto *end = new QWidget;
    auto *row = new QHBoxLayout(end);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    auto *reset = new Button(QLatin1String(Model::resetTitle));
    reset->setButtonSize(ButtonSize::small);
    reset->setToolTip(QLatin1String(Model::resetHelp));
    reset->setAccessibleDescription(inDesktopWords(QLatin1String(Model::resetHelp)));
    auto *well = new ColorWell;
    well->setAccessibleName(inDesktopWords(QLatin1String(Model::colorTitle)));
    row->addWidget(reset);
    row->addWidget(well);
    colorRow->setTrailing(end);
    Card *card = addSection(QLatin1String(Model::section));
    card->add(indicatorRow);
    card->add(colorRow);
    if (controls) {
        addSection(QStringLiteral("Awake"))->hide(); // the card has a ground of its own
        column().addWidget(controls, 0, Qt::AlignLeft);
    }

    const auto refresh = [this, indicator = indicator, well] {
        indicator->setChecked(m_model->showsIndicator());
        well->setColor(m_model->indicatorColor());
    };
    refresh();
    Model *shown = m_model.get();
    connect(shown, &Model::changed, this, refresh);
    connect(indicator, &QAbstractButton::toggled, shown, &Model::setShowsIndicator);
    connect(well, &ColorWell::chosen, shown, &Model::setIndicatorColor);
    connect(reset, &QAbstractButton::clicked, shown, &Model::resetIndicatorColor);
}

KeepAwakeSettingsView::~KeepAwakeSettingsView() = default;

} // namespace tavrine
