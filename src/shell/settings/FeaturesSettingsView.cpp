#include "shell/settings/FeaturesSettingsView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Metrics.h"
#include "look/Toggle.h"
#include "look/Unfolding.h"

#include <QHBoxLayout>
#include <QMouseEvent>

namespace tavrine {

using namespace look;

namespace {

QWidget *makeStarting() {
    auto *starting = new QWidget;
    auto *row = new QHBoxLayout(starting);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    auto *spinner = new Spinner;
    spinner->setFixedSize(spinner->sizeHint());
    row->addWidget(spinner);
    row->addWidget(
        new Label(QString::fromUtf8(FeatureRowModel::startingText), TextRole::caption, Label::Tone::secondary));
    return starting;
}

} // namespace

FeatureRowView::FeatureRowView(Feature feature, FeatureFlags &flags, Time &time, QWidget *parent)
    : SettingsRow(QLatin1String(textOf(feature).icon), QLatin1String(textOf(feature).title),
                  QLatin1String(textOf(feature).description), parent),
      m_model(feature, flags, time), m_end(new QWidget), m_starting(new Unfolding(makeStarting(), Qt::Horizontal)),
      m_toggle(new Toggle) {
    auto *row = new QHBoxLayout(m_end);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(m_starting);
    row->addWidget(m_toggle);
    m_toggle->setAccessibleName(inDesktopWords(QLatin1String(textOf(feature).title)));
    m_toggle->setAccessibleDescription(inDesktopWords(QLatin1String(textOf(feature).description)));
    connect(m_toggle, &QAbstractButton::toggled, &m_model, &FeatureRowModel::setOn);
    connect(&m_model, &FeatureRowModel::changed, this, &FeatureRowView::refresh);
    connect(m_starting, &Unfolding::moved, this, &FeatureRowView::placeEnd);
    refresh();
}

void FeatureRowView::addControl(QWidget *widget) {
    auto *row = static_cast<QHBoxLayout *>(m_end->layout());
    row->insertWidget(row->count() - 1, widget);
    refresh();
}

void FeatureRowView::refresh() {
    m_toggle->setChecked(m_model.isOn());
    if (m_model.isStarting())
        m_starting->setShown(true, Spring::responding(0.3, 0.825));
    else
        m_starting->setShownAtOnce(false);
    placeEnd();
}

void FeatureRowView::placeEnd() {
    m_end->layout()->invalidate();
    setTrailing(m_end);
    resizeEvent(nullptr);
    update();
}

void FeatureRowView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        m_toggle->click();
}

FeaturesSettingsView::FeaturesSettingsView(FeatureFlags &flags, Time &time,
                                           const std::function<void()> &clearAndDisable)
    : SettingsPage(QStringLiteral("Features"),
                   QStringLiteral("Enable only what you use. Disabled features stop consuming memory.")) {
    Card *card = addSection();
    for (const FeatureText &text : featureTexts) {
        auto *row = new FeatureRowView(text.feature, flags, time);
        if (text.feature == Feature::clipboardHistory) {
            auto *button = new Button(QStringLiteral("trash"), QStringLiteral("Clear & Disable"));
            connect(button, &QAbstractButton::clicked, this, clearAndDisable);
            row->addControl(button);
        }
        card->add(row);
    }
}

} // namespace tavrine
