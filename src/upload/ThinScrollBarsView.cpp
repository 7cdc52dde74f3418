#include "upload/ThinScrollBarsView.h"

#include "look/Look.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <QWidget>

namespace tavrine {

void thinScrollBars(QAbstractScrollArea &area) {
    const look::Theme &theme = look::themeOf(&area);
    const auto thumb = [&](int part) { return look::mixed(theme.field, theme.text, part / 100.0).name(); };
    const QString sheet = QStringLiteral("QScrollBar { background: %1; border: none; }"
                                         "QScrollBar:vertical { width: 10px; } QScrollBar:horizontal { height: 10px; }"
                                         "QScrollBar::handle { background: %2; border-radius: 3px; margin: 2px; }"
                                         "QScrollBar::handle:vertical { min-height: 28px; }"
                                         "QScrollBar::handle:horizontal { min-width: 28px; }"
                                         "QScrollBar::handle:hover { background: %3; }"
                                         "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }"
                                         "QScrollBar::add-page, QScrollBar::sub-page { background: none; }")
                              .arg(theme.field.name(), thumb(28), thumb(45));
    if (!area.cornerWidget())
        area.setCornerWidget(new QWidget); // in place of the toolkit's grip
    area.verticalScrollBar()->setStyleSheet(sheet);
    area.horizontalScrollBar()->setStyleSheet(sheet);
}

} // namespace tavrine
