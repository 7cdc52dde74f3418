#include "capture/SnipperSettingsView.h"

#include "capture/SnipperSettingsModel.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Text.h"
#include "look/Tile.h"
#include "look/Toggle.h"

#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr int margin = 24;
constexpr int folderRowHeight = 92;
constexpr qreal plateSide = 28;

look::SettingsRow *toggleRow(const char *symbol, const char *title, const char *note, SnipperSettingsModel &model,
                             bool (SnipperSettingsModel::*value)() const, void (SnipperSettingsModel::*set)(bool)) {
    auto *row = new look::SettingsRow(QLatin1String(symbol), QLatin1String(title), QLatin1String(note));
    auto *toggle = new look::Toggle;
    toggle->setChecked((model.*value)());
    toggle->setAccessibleDescription(QLatin1String(note));
    row->setTrailing(toggle);
    QObject::connect(toggle, &QAbstractButton::toggled, row, [&model, set](bool isOn) { (model.*set)(isOn); });
    QObject::connect(&model, &SnipperSettingsModel::changed, toggle, [&model, value, toggle] {
        if ((model.*value)() != toggle->isChecked()) // setting it back writes the same value again, and no more
            toggle->setChecked((model.*value)());
    });
    return row;
}

} // namespace

/// The folder's path in full, as far as it has room, and the two buttons about it.
class SnipperSettingsView::FolderRow final : public QWidget {
public:
    explicit FolderRow(SnipperSettingsModel &model) : m_model(model) {
        setFixedHeight(folderRowHeight);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(int(2 * look::space::medium + plateSide), 0, look::space::medium,
                                   look::space::medium);
        column->addStretch();
        auto *row = new QHBoxLayout;
        row->setSpacing(look::space::small);
        auto *change = new look::Button(QStringLiteral("Change..."));
        change->setButtonSize(look::ButtonSize::small);
        auto *reset = new look::Button(QStringLiteral("Reset to Default Folder"));
        reset->setButtonSize(look::ButtonSize::small);
        connect(change, &QAbstractButton::clicked, this, [this] { m_model.changeSaveFolder(); });
        connect(reset, &QAbstractButton::clicked, this, [this] { m_model.resetSaveFolder(); });
        row->addWidget(change);
        row->addWidget(reset);
        row->addStretch();
        column->addLayout(row);
        connect(&model, &SnipperSettingsModel::changed, this, [this] { refresh(); });
        refresh();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        const QRectF plate(look::space::medium, 15, plateSide, plateSide);
        look::paintSymbolPlate(painter, plate, QStringLiteral("folder.fill"), theme.control, theme.text);
        const qreal left = plate.right() + look::space::medium;
        const qreal wide = width() - left - look::space::medium;
        look::paintLine(painter, QRectF(left, 10, wide, 18), QStringLiteral("Save Folder"), look::TextRole::body,
                        theme.text);
        const QFontMetricsF metrics(look::fontFor(look::TextRole::caption));
        look::paintLine(painter, QRectF(left, 30, wide, 16),
                        metrics.elidedText(m_model.saveFolder(), Qt::ElideMiddle, wide), look::TextRole::caption,
                        theme.secondaryText);
    }

private:
    void refresh() {
        setToolTip(m_model.saveFolder());
        setAccessibleName(QStringLiteral("Save Folder"));
        setAccessibleDescription(m_model.saveFolder());
        update();
    }

    SnipperSettingsModel &m_model;
};

SnipperSettingsView::SnipperSettingsView(std::unique_ptr<SnipperSettingsModel> model, QWidget *shortcutEditor)
    : m_model(std::move(model)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(0);
    column->addWidget(new look::Label(QLatin1String(title), look::TextRole::title));
    column->addSpacing(look::space::tiny);
    column->addWidget(new look::Label(QLatin1String(subtitle), look::TextRole::body, look::Label::Tone::secondary));
    column->addSpacing(look::space::large + look::space::tiny);
    if (shortcutEditor) {
        column->addWidget(shortcutEditor);
        column->addSpacing(look::space::medium);
    }
    column->addWidget(soundCard());
    column->addSpacing(look::space::medium);
    column->addWidget(savingCard());
    column->addStretch();
}

SnipperSettingsView::~SnipperSettingsView() = default;

QWidget *SnipperSettingsView::soundCard() {
    auto *card = new look::Card;
    card->add(toggleRow("speaker.slash.fill", "Off shutter sound", "Silence the camera sound when capturing", *m_model,
                        &SnipperSettingsModel::isSoundMuted, &SnipperSettingsModel::setSoundMuted));
    return card;
}

QWidget *SnipperSettingsView::savingCard() {
    auto *card = new look::Card;
    card->add(new FolderRow(*m_model));
    card->add(toggleRow("tray.and.arrow.down", "Always save without asking",
                        "Skip the save dialog and use the folder above", *m_model,
                        &SnipperSettingsModel::savesWithoutAsking, &SnipperSettingsModel::setSavesWithoutAsking));
    return card;
}

} // namespace tavrine
