#include "shell/settings/AbilitiesView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Metrics.h"

#include <QHBoxLayout>

#include <algorithm>

namespace tavrine {

using namespace look;

namespace {

Label::Tone toneOf(AbilityState state) {
    switch (state) {
    case AbilityState::there:
        return Label::Tone::success;
    case AbilityState::limited:
        return Label::Tone::secondary;
    case AbilityState::missing:
        break;
    }
    return Label::Tone::danger;
}

bool isThere(const AbilityReport &report) {
    return report.state == AbilityState::there;
}

} // namespace

AbilitiesView::AbilitiesView(HomeDashboardModel &model) : m_model(model) {
    connect(&model, &HomeDashboardModel::changed, this, &AbilitiesView::refresh);
    refresh();
}

void AbilitiesView::showEvent(QShowEvent *event) {
    Card::showEvent(event);
    refresh();
}

void AbilitiesView::refresh() {
    auto reports = m_model.abilities();
    if (reports == m_shown && !m_rows.empty())
        return;
    m_shown = std::move(reports);
    for (SettingsRow *row : m_rows) {
        row->hide();
        row->deleteLater();
    }
    m_rows.clear();
    if (std::ranges::all_of(m_shown, isThere)) {
        m_rows.push_back(new SettingsRow(QStringLiteral("checkmark.circle.fill"), QStringLiteral("Everything"),
                                         QStringLiteral("All that Tavrine does works on this desktop")));
    } else {
        for (const AbilityReport &report : m_shown)
            m_rows.push_back(makeRow(report));
    }
    for (SettingsRow *row : m_rows)
        add(row);
    updateGeometry();
}

SettingsRow *AbilitiesView::makeRow(const AbilityReport &report) {
    const auto &texts = HomeDashboardModel::textsOf(report.ability);
    QString note = isThere(report) ? QString(QLatin1String(texts.subtitle)) : inDesktopWords(report.reason);
    if (!report.step.isEmpty())
        note += u' ' + inDesktopWords(report.step);
    auto *row = new SettingsRow(QLatin1String(texts.symbol), QLatin1String(texts.title), note);
    row->setTrailing(makeEnd(report, note));
    return row;
}

QWidget *AbilitiesView::makeEnd(const AbilityReport &report, const QString &note) {
    const QString text = HomeDashboardModel::textOf(report.state);
    auto *state = new Label(text, TextRole::captionStrong, toneOf(report.state));
    // The row's own words are painted: a screen reader would hear of states alone.
    const QString title = inDesktopWords(QLatin1String(HomeDashboardModel::textsOf(report.ability).title));
    state->setAccessibleName(title + QStringLiteral(": ") + inDesktopWords(text));
    state->setAccessibleDescription(inDesktopWords(note));
    if (report.linesToCopy.isEmpty())
        return state;
    auto *end = new QWidget;
    auto *line = new QHBoxLayout(end);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(space::medium);
    auto *copy = new Button(QStringLiteral("Copy"), ButtonStyle::prominent);
    copy->setButtonSize(ButtonSize::small);
    copy->setAccessibleDescription(inDesktopWords(QLatin1String(HomeDashboardModel::textsOf(report.ability).title)));
    copy->setToolTip(report.linesToCopy.trimmed());
    connect(copy, &QAbstractButton::clicked, &m_model, [this, report, copy] {
        m_model.copyLines(report);
        copy->setText(QStringLiteral("Copied"));
    });
    line->addWidget(state);
    line->addWidget(copy);
    return end;
}

} // namespace tavrine
