#include "capture/reading/QRResultView.h"

#include "base/DesktopWords.h"
#include "capture/reading/QRCodeRow.h"
#include "capture/reading/QRResultModel.h"
#include "capture/reading/ReadingTexts.h"
#include "look/ApplicationIcon.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/ScrollArea.h"
#include "look/SymbolPlateView.h"
#include "look/Symbols.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int panelWidth = 420;
constexpr int emptyHeight = 216;
constexpr int headerHeight = 64;
constexpr int mostHeight = 520;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// A symbol without a ground, in the middle.
class LargeSymbol final : public QWidget {
public:
    explicit LargeSymbol(const QString &symbol) : m_symbol(symbol) { setFixedHeight(int(look::symbolsize::huge)); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        look::paintSymbol(painter, rect(), m_symbol, look::symbolsize::huge, look::themeOf(this).tertiaryText);
    }

private:
    QString m_symbol;
};

look::Label *centred(const char *words, look::TextRole role, look::Label::Tone tone) {
    auto *label = new look::Label(text(words), role, tone);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

QRResultView::QRResultView(const QStringList &codes, const Ports &ports, std::function<void()> onDismiss,
                           QWidget *parent)
    : PanelSurface(look::radius::panel, parent), m_onDismiss(std::move(onDismiss)) {
    setFocusPolicy(Qt::StrongFocus);
    setWindowIcon(look::applicationIcon());
    if (codes.isEmpty())
        buildEmpty();
    else
        build(codes, ports);
}

void QRResultView::buildEmpty() {
    setAccessibleName(inDesktopWords(text(readingTexts::noCode)));
    setAccessibleDescription(inDesktopWords(text(readingTexts::noCodeAdvice)));
    auto *close = new look::Button(text(readingTexts::closeCircle), text(readingTexts::close));
    connect(close, &QAbstractButton::clicked, this, [this] { m_onDismiss(); });
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(look::space::large, look::space::small, look::space::small, look::space::huge);
    column->setSpacing(0);
    column->addWidget(close, 0, Qt::AlignRight);
    column->addWidget(new LargeSymbol(text(readingTexts::noCodeSymbol)));
    column->addSpacing(look::space::medium);
    column->addWidget(centred(readingTexts::noCode, look::TextRole::heading, look::Label::Tone::primary));
    column->addSpacing(look::space::hair);
    column->addWidget(centred(readingTexts::noCodeNote, look::TextRole::body, look::Label::Tone::secondary));
    column->addSpacing(look::space::medium);
    column->addWidget(centred(readingTexts::noCodeAdvice, look::TextRole::callout, look::Label::Tone::secondary));
    column->addStretch(1);
    m_fitting = {panelWidth, emptyHeight};
}

void QRResultView::build(const QStringList &codes, const Ports &ports) {
    setAccessibleName(inDesktopWords(qrResult::title(codes.size())));
    auto *close = new look::Button(text(readingTexts::closeCircle), text(readingTexts::close));
    connect(close, &QAbstractButton::clicked, this, [this] { m_onDismiss(); });
    auto *words = new QVBoxLayout;
    words->setSpacing(0);
    words->addWidget(new look::Label(qrResult::title(codes.size()), look::TextRole::heading));
    words->addWidget(
        new look::Label(text(readingTexts::tapToCopy), look::TextRole::callout, look::Label::Tone::secondary));
    auto *header = new QHBoxLayout;
    header->setContentsMargins(look::space::large, look::space::medium, look::space::medium, look::space::medium);
    header->setSpacing(look::space::medium);
    header->addWidget(new SymbolPlate(text(readingTexts::codesSymbol)));
    header->addLayout(words, 1);
    header->addWidget(close, 0, Qt::AlignTop);

    auto *rows = new QWidget;
    auto *list = new QVBoxLayout(rows);
    list->setContentsMargins(look::space::large, 0, look::space::large, look::space::large);
    list->setSpacing(look::space::small);
    int tall = look::space::large - look::space::small;
    for (int i = 0; i < codes.size(); ++i) {
        const auto index = codes.size() > 1 ? std::optional(i) : std::nullopt;
        auto *row = new QRCodeRow(codes.at(i), index, ports.pasteboard, ports.urlOpener, ports.time);
        tall += row->sizeHint().height() + look::space::small;
        list->addWidget(row);
    }
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, look::space::hair);
    column->setSpacing(0);
    auto *top = new QWidget;
    top->setLayout(header);
    top->setFixedHeight(headerHeight);
    column->addWidget(top);
    column->addWidget(new look::ScrollPane(rows), 1);
    m_fitting = {panelWidth, std::min(headerHeight + tall + look::space::hair, mostHeight)};
}

void QRResultView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        m_onDismiss(); // the panel may be gone
    else
        PanelSurface::keyPressEvent(event);
}

} // namespace tavrine
