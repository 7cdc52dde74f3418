#include "recording/RecordingSetupCardView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SegmentedControl.h"
#include "look/SymbolPlateView.h"
#include "look/Symbols.h"
#include "look/Toggle.h"
#include "recording/ScreenRecorderSelectionModel.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

constexpr int cardWidth = 348;
constexpr int margin = 16;
constexpr int rowHeight = 44;

/// A symbol and a word at the left of their switch, on a ground that both rows share.
class SwitchRow final : public QWidget {
public:
    SwitchRow(const QString &symbol, const QString &title) : m_symbol(symbol), m_title(inDesktopWords(title)) {
        setFixedHeight(rowHeight);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::paintCard(painter, rect(), theme);
        const QRectF symbol(look::space::medium, 0, look::symbolsize::large, height());
        look::paintSymbol(painter, symbol, m_symbol, look::symbolsize::medium, theme.accentText);
        look::paintLine(painter, QRectF(symbol.right() + look::space::small, 0, width() / 2.0, height()), m_title,
                        look::TextRole::body, theme.text);
    }

private:
    QString m_symbol;
    QString m_title;
};

look::Label *sectionTitle(const char *title) {
    return new look::Label(QLatin1String(title), look::TextRole::captionStrong, look::Label::Tone::secondary);
}

look::Label *hint() {
    return new look::Label(QStringLiteral("Either one records the microphone"), look::TextRole::caption,
                           look::Label::Tone::secondary);
}

} // namespace

RecordingSetupCardView::RecordingSetupCardView(std::shared_ptr<ScreenRecorderSelectionModel> model, QWidget *parent)
    : QWidget(parent), m_model(std::move(model)) {
    setFixedWidth(cardWidth);
    setAccessibleName(inDesktopWords(QStringLiteral("Screen Recording Setup")));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin - 2, margin, margin);
    column->setSpacing(look::space::small);
    column->addWidget(makeHeader());
    column->addSpacing(look::space::tiny);
    column->addWidget(makeAudioTitle());
    m_switches = new QBoxLayout(QBoxLayout::TopToBottom);
    m_switches->setSpacing(look::space::small);
    column->addLayout(m_switches);
    m_mic = addSwitch("mic.fill", "Mic");
    m_system = addSwitch("speaker.wave.2.fill", "System");
    m_hint = hint();
    column->addWidget(m_hint);
    column->addSpacing(look::space::small);
    column->addWidget(sectionTitle("START DELAY"));
    QStringList delays;
    for (const int seconds : ScreenRecorderSelectionModel::delays)
        delays << ScreenRecorderSelectionModel::delayLabel(seconds);
    m_delay = new look::SegmentedControl(delays);
    m_delay->setAccessibleName(inDesktopWords(QStringLiteral("Start delay")));
    m_delay->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_delay, &look::SegmentedControl::chosen, this, [this](int index) {
        m_model->setTimerDelay(ScreenRecorderSelectionModel::delays.at(static_cast<size_t>(index)));
    });
    column->addWidget(m_delay);
    column->addSpacing(look::space::medium);
    auto *start = new look::Button(QStringLiteral("Start Recording"), look::ButtonStyle::prominent);
    start->setSymbol(QStringLiteral("record.circle.fill"));
    start->setButtonSize(look::ButtonSize::large);
    start->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(start, &QAbstractButton::clicked, m_model.get(), &ScreenRecorderSelectionModel::start);
    column->addWidget(start);

    // The model decides: a switch that may not move goes back.
    connect(m_mic, &QAbstractButton::clicked, this, [this] {
        m_model->pressMic();
        refresh();
    });
    connect(m_system, &QAbstractButton::clicked, m_model.get(), &ScreenRecorderSelectionModel::flipSystemAudio);
    connect(m_model.get(), &ScreenRecorderSelectionModel::changed, this, &RecordingSetupCardView::refresh);
    setLow(false);
    refresh();
}

void RecordingSetupCardView::fitInto(int height) {
    if (std::exchange(m_room, height) == height)
        return;
    setLow(false);
    setLow(sizeHint().height() > height);
}

void RecordingSetupCardView::setLow(bool isLow) {
    m_switches->setDirection(isLow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_hint->setVisible(!isLow);
    m_hintAbove->setVisible(isLow);
    layout()->activate();
}

QWidget *RecordingSetupCardView::makeHeader() {
    auto *header = new QWidget;
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(look::space::small + 2);
    row->addWidget(new SymbolPlate(QStringLiteral("video.fill")));
    row->addWidget(new look::Label(QStringLiteral("Screen Recording Setup"), look::TextRole::heading), 1);
    auto *close = new look::Button(QStringLiteral("xmark"), QStringLiteral("Close"));
    connect(close, &QAbstractButton::clicked, m_model.get(), &ScreenRecorderSelectionModel::closeCard);
    row->addWidget(close);
    return header;
}

QWidget *RecordingSetupCardView::makeAudioTitle() {
    auto *title = new QWidget;
    auto *row = new QHBoxLayout(title);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(sectionTitle("AUDIO INPUTS"), 1);
    m_hintAbove = hint();
    row->addWidget(m_hintAbove);
    return title;
}

look::Toggle *RecordingSetupCardView::addSwitch(const char *symbol, const char *title) {
    auto *row = new SwitchRow(QLatin1String(symbol), QLatin1String(title));
    auto *line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, look::space::medium, 0);
    auto *toggle = new look::Toggle;
    toggle->setAccessibleName(inDesktopWords(QLatin1String(title)));
    line->addStretch();
    line->addWidget(toggle);
    m_switches->addWidget(row);
    return toggle;
}

void RecordingSetupCardView::refresh() {
    m_mic->setChecked(m_model->includesMic());
    m_system->setChecked(m_model->includesSystemAudio());
    const auto &delays = ScreenRecorderSelectionModel::delays;
    m_delay->setCurrent(static_cast<int>(std::ranges::find(delays, m_model->timerDelay()) - delays.begin()));
}

void RecordingSetupCardView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    look::fillRounded(painter, rect(), look::radius::panel, theme.surface);
    look::strokeHairline(painter, rect(), look::radius::panel, theme.outline);
}

void RecordingSetupCardView::mousePressEvent(QMouseEvent *event) {
    event->accept();
}

} // namespace tavrine
