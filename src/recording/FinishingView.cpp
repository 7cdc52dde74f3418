#include "recording/FinishingView.h"

#include "base/DesktopWords.h"
#include "look/Indicators.h"
#include "look/Metrics.h"

#include <QHBoxLayout>

namespace tavrine {
namespace {

constexpr int barHeight = 44;

} // namespace

FinishingView::FinishingView() : PanelSurface(barHeight / 2.0) {
    const QString words = inDesktopWords(QString::fromUtf8("Finishing…"));
    setAccessibleName(words);
    setFixedHeight(barHeight);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(look::space::large - 2, 0, look::space::large, 0);
    row->setSpacing(look::space::small);
    row->addWidget(new look::Spinner);
    row->addWidget(new look::Label(words, look::TextRole::heading));
}

QSize FinishingView::sizeHint() const {
    return {layout()->sizeHint().width(), barHeight};
}

} // namespace tavrine
