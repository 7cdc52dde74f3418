#include "utilities/lofi/LofiSettingsView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ScrollArea.h"
#include "look/Tile.h"
#include "utilities/lofi/LofiPlayerModel.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <cmath>

namespace tavrine {
namespace {

constexpr int margin = 24;
constexpr int trackRowHeight = 64;
constexpr qreal plateSide = 36;
constexpr int stateLineHeight = 16;

} // namespace

/// The active track with the button that plays it.
class LofiSettingsView::TrackRow final : public QWidget {
public:
    explicit TrackRow(LofiPlayerModel &model) : m_model(model) {
        setFixedHeight(trackRowHeight);
        look::setRole(*this, QAccessible::StaticText);
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(look::space::medium, 0, look::space::medium, 0);
        row->setSpacing(look::space::small);
        row->addStretch();
        m_play = new look::Button(model.playActionName(), look::ButtonStyle::prominent);
        m_play->setButtonSize(look::ButtonSize::small);
        row->addWidget(m_play);
        connect(m_play, &QAbstractButton::clicked, this, [this] { m_model.toggle(); });
        connect(&model, &LofiPlayerModel::changed, this, [this] { refresh(); });
        refresh();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        const QRectF plate(look::space::medium, (height() - plateSide) / 2.0, plateSide, plateSide);
        look::paintSymbolPlate(painter, plate, QStringLiteral("music.note"),
                               m_model.isGlowing() ? theme.accent : theme.control,
                               m_model.isGlowing() ? theme.onAccent : theme.text);
        const qreal left = plate.right() + look::space::medium;
        const qreal wide = m_play->x() - look::space::medium - left;
        look::paintLine(painter, QRectF(left, 13, wide, 18), m_model.activeTrackTitle(), look::TextRole::bodyStrong,
                        theme.text);
        look::paintLine(painter, QRectF(left, 34, wide, 16), inDesktopWords(m_model.activeTrackNote()),
                        look::TextRole::caption, theme.secondaryText);
    }

private:
    void refresh() {
        m_play->setText(m_model.playActionName());
        m_play->setSymbol(m_model.icon());
        m_play->setAccessibleDescription(m_model.activeTrackTitle());
        setAccessibleName(m_model.activeTrackTitle());
        setAccessibleDescription(inDesktopWords(m_model.activeTrackNote()));
        setToolTip(m_model.activeTrackTitle());
        update();
    }

    LofiPlayerModel &m_model;
    look::Button *m_play;
};

LofiSettingsView::LofiSettingsView(std::unique_ptr<LofiPlayerModel> model) : m_model(std::move(model)) {
    auto *page = new QWidget;
    auto *whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(new look::ScrollPane(page));
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(0);
    column->addWidget(new look::Label(QLatin1String(title), look::TextRole::title));
    column->addSpacing(look::space::tiny);
    column->addWidget(new look::Label(QLatin1String(subtitle), look::TextRole::body, look::Label::Tone::secondary));
    column->addSpacing(look::space::large + look::space::tiny);
    column->addWidget(
        new look::Label(QStringLiteral("ACTIVE TRACK"), look::TextRole::captionStrong, look::Label::Tone::secondary));
    column->addSpacing(look::space::small);
    auto *track = new look::Card;
    track->add(new TrackRow(*m_model));
    column->addWidget(track);
    column->addSpacing(look::space::small);
    auto *state = new look::Label(m_model->statusLine(), look::TextRole::caption, look::Label::Tone::secondary);
    state->setFixedHeight(stateLineHeight);
    state->setMinimumWidth(
        static_cast<int>(std::ceil(look::lineWidth(QStringLiteral("Downloading... 100%"), look::TextRole::caption))));
    auto *progress = new look::ProgressBar;
    const auto refresh = [this, state, progress] {
        state->setText(m_model->isDownloading() ? m_model->statusLine() : QString());
        progress->setVisible(m_model->isDownloading());
        progress->setValue(m_model->downloadProgress());
    };
    connect(m_model.get(), &LofiPlayerModel::changed, state, refresh);
    auto *download = new QHBoxLayout;
    download->addWidget(state);
    download->addWidget(progress);
    column->addLayout(download);
    column->addSpacing(look::space::medium);
    addButtons(*column);
    column->addStretch();
    refresh();
}

LofiSettingsView::~LofiSettingsView() = default;

/// What the context menu of the mini player has, but for the way to this page.
void LofiSettingsView::addButtons(QVBoxLayout &column) {
    using Command = LofiPlayerModel::Command;
    for (const Command command : {Command::browseInternet, Command::chooseLocalFile, Command::resetToDefault}) {
        auto *button = new look::Button(LofiPlayerModel::titleOf(command));
        button->setSymbol(LofiPlayerModel::symbolOf(command));
        connect(button, &QAbstractButton::clicked, m_model.get(), [this, command] { m_model->perform(command); });
        const auto refresh = [this, command, button] { button->setVisible(m_model->commands().contains(command)); };
        connect(m_model.get(), &LofiPlayerModel::changed, button, refresh);
        column.addWidget(button, 0, Qt::AlignLeft);
        column.addSpacing(look::space::small);
        refresh();
    }
}

} // namespace tavrine
