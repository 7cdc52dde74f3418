#include "shell/settings/StatisticsView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QLocale>
#include <QPainter>

namespace tavrine {
namespace {

using namespace look;

constexpr int cardHeight = 76;

} // namespace

StatisticsView::StatisticsView(ClipboardSettingsModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
    setFixedHeight(cardHeight);
    setRole(*this, QAccessible::StaticText);
    connect(&model, &ClipboardSettingsModel::statisticsChanged, this, &StatisticsView::refresh);
    refresh();
}

void StatisticsView::refresh() {
    QStringList words;
    for (const auto &[title, count] : m_model.statistics())
        words.append(inDesktopWords(QLatin1String(title)) + QStringLiteral(" ") + QLocale().toString(count));
    setAccessibleName(words.join(QStringLiteral(", ")));
    update();
}

void StatisticsView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const auto figures = m_model.statistics();
    const qreal wide = double(width()) / double(figures.size());
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const QRectF cell(wide * double(i), 0, wide, height());
        paintLine(painter, cell.adjusted(4, space::medium, -4, -36), QLocale().toString(figures.at(i).count),
                  TextRole::title, theme.text, Qt::AlignHCenter);
        paintLine(painter, cell.adjusted(4, 46, -4, -space::medium), inDesktopWords(QLatin1String(figures.at(i).title)),
                  TextRole::caption, theme.secondaryText, Qt::AlignHCenter);
        if (i > 0) {
            const QRectF line(std::round(cell.left()), space::large, 1, height() - 2 * space::large);
            painter.fillRect(line, theme.separator);
        }
    }
}

} // namespace tavrine
