#include "gallery/Gallery.h"
#include "look/Button.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"

#include <QPainter>
#include <QVBoxLayout>

namespace tavrine::look {
namespace {

struct Sample {
    const char *header;
    const char *symbol;
    const char *title;
    const char *subtitle;
};

const Sample samples[] = {
    {"Pinned Snippets", "", "", ""},
    {nullptr, "star.fill", "Thank you for your message. I will come back to you by Thursday.", "Pinned snippet"},
    {nullptr, "star.fill", "ssh -L 5432:localhost:5432 build@host", "Pinned snippet"},
    {"Recent Clipboard", "", "", ""},
    {nullptr, "link", "https://www.debian.org/releases/bookworm/", "21 Nov 2026 at 10:42"},
    {nullptr, "photo", "Screenshot", "21 Nov 2026 at 10:40"},
    {nullptr, "envelope", "mira.lindqvist@example.org", "21 Nov 2026 at 10:31"},
    {nullptr, "doc.text", "שלום עולם, this line begins in Hebrew and ends in Latin letters", "20 Nov 2026 at 18:05"},
    {nullptr, "doc.text", "Zwölf Boxkämpfer jagen Viktor quer über den großen Sylter Deich", "20 Nov 2026 at 17:58"},
};

QPixmap picture() {
    QPixmap made(160, 110);
    QPainter painter(&made);
    QLinearGradient sky(0, 0, 160, 110);
    sky.setColorAt(0, QColor(0x5B, 0x8D, 0xEF));
    sky.setColorAt(1, QColor(0xF2, 0xA6, 0x5A));
    painter.fillRect(made.rect(), sky);
    return made;
}

} // namespace

SamplePanel::SamplePanel(int rows, QWidget *parent) : QWidget(parent) {
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *search = new SearchField(QStringLiteral("Search clipboard & snippets..."));
    auto *add = new Button(QStringLiteral("plus.circle.fill"), QStringLiteral("Add item to My Saved"));
    add->setButtonSize(ButtonSize::large);
    search->addTrailing(add);
    layout->addWidget(search);
    auto *strip = new QHBoxLayout;
    strip->setContentsMargins(12, 8, 12, 4);
    auto *chips = new ChipStrip({QStringLiteral("All"), QStringLiteral("My Saved"), QStringLiteral("Text"),
                                 QStringLiteral("Images"), QStringLiteral("Links"), QStringLiteral("Snippets")});
    strip->addWidget(chips);
    layout->addLayout(strip);

    if (rows == 0) {
        layout->addWidget(new EmptyState(QStringLiteral("clipboard"), QStringLiteral("Your clipboard is empty")), 1);
    } else {
        auto *list = new VirtualList;
        list->setPadding({8, 4, 8, 8});
        VirtualList::Source source;
        const auto sample = [](int row) -> const Sample & { return samples[size_t(row) % std::size(samples)]; };
        source.count = [rows] { return rows; };
        source.height = [sample](int row) { return sample(row).header ? 30 : height::row; };
        source.isActive = [sample](int row) { return !sample(row).header; };
        source.paint = [this, sample](QPainter &painter, int row, const QRectF &rect, const RowState &state) {
            const Sample &one = sample(row);
            if (one.header) {
                paintSectionHeader(painter, rect, QString::fromUtf8(one.header), themeOf(this));
                return;
            }
            RowContent content;
            content.symbol = QString::fromUtf8(one.symbol);
            content.title = QString::fromUtf8(one.title);
            content.subtitle = QString::fromUtf8(one.subtitle);
            content.actions = {QStringLiteral("pin.fill"), QStringLiteral("bookmark"), QStringLiteral("trash")};
            if (content.symbol == QLatin1String("photo"))
                content.thumbnail = picture();
            paintRow(painter, rect, content, state, themeOf(this));
        };
        source.accessibleText = [sample](int row) { return QString::fromUtf8(sample(row).title); };
        source.toolTip = [](int, const QRectF &rect, QPointF place) -> std::pair<QString, QRectF> {
            const QString texts[] = {QStringLiteral("Pin snippet"), QStringLiteral("Add to My Saved"),
                                     QStringLiteral("Delete item")};
            const auto rects = rowActionRects(rect, 3);
            for (size_t i = 0; i < rects.size(); ++i) {
                if (rects[i].contains(place))
                    return {texts[i], rects[i]};
            }
            return {};
        };
        list->setSource(std::move(source));
        list->setSelectedRow(1);
        connect(list, &VirtualList::clicked, list, [list](int row) {
            list->setSelectedRow(row);
            list->centreRow(row, true);
        });
        layout->addWidget(list, 1);
    }
    layout->addWidget(new HintBar({{{}, QStringLiteral("arrow.up.arrow.down"), QStringLiteral("Navigate")},
                                   {QStringLiteral("↵"), {}, QStringLiteral("Paste")}},
                                  {{QStringLiteral("esc"), {}, QStringLiteral("Close")},
                                   {QStringLiteral("← →"), {}, QStringLiteral("Category")}}));
}

// A hairline under the search field and the chips parts them from the list.
void SamplePanel::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    paintSeparator(painter, QRectF(0, 0, width(), height::searchField), themeOf(this));
}

} // namespace tavrine::look
