#include "gallery/Gallery.h"

#include "look/Button.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/SearchField.h"
#include "look/SegmentedControl.h"
#include "look/Symbols.h"
#include "look/Tile.h"
#include "look/Toggle.h"

#include <QGridLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine::look {
namespace {

QHBoxLayout *row(std::initializer_list<QWidget *> widgets) {
    auto *layout = new QHBoxLayout;
    layout->setSpacing(space::small);
    for (QWidget *widget : widgets)
        layout->addWidget(widget, 0, Qt::AlignVCenter);
    layout->addStretch();
    return layout;
}

template <class Widget>
Widget *disabled(Widget *widget) {
    widget->setEnabled(false);
    return widget;
}

template <class Widget>
Widget *checked(Widget *widget) {
    widget->setChecked(true);
    return widget;
}

Button *sized(Button *button, ButtonSize size) {
    button->setButtonSize(size);
    return button;
}

Button *withSymbol(Button *button, const QString &symbol) {
    button->setSymbol(symbol);
    return button;
}

} // namespace

Gallery::Gallery(QWidget *parent) : QWidget(parent) {
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::huge, space::huge, space::huge, space::huge);
    layout->setSpacing(space::medium);
    layout->addWidget(new Label(QStringLiteral("Your Mac. Simplified."), TextRole::hero));
    layout->addWidget(new Label(QStringLiteral("Title of a page"), TextRole::title));
    layout->addWidget(new Label(QStringLiteral("A heading within it"), TextRole::heading));
    layout->addLayout(row({new Label(QStringLiteral("Primary text"), TextRole::body),
                           new Label(QStringLiteral("secondary text"), TextRole::body, Label::Tone::secondary),
                           new Label(QStringLiteral("tertiary"), TextRole::body, Label::Tone::tertiary),
                           new Label(QStringLiteral("accent"), TextRole::body, Label::Tone::accent),
                           new Label(QStringLiteral("danger"), TextRole::body, Label::Tone::danger),
                           new Label(QStringLiteral("success"), TextRole::body, Label::Tone::success)}));
    layout->addLayout(
        row({new Button(QStringLiteral("Cancel")), new Button(QStringLiteral("Save"), ButtonStyle::prominent),
             new Button(QStringLiteral("Delete"), ButtonStyle::destructive),
             new Button(QStringLiteral("Explore Features"), ButtonStyle::link),
             disabled(new Button(QStringLiteral("Allow"), ButtonStyle::prominent))}));
    layout->addLayout(row({sized(new Button(QStringLiteral("Get Started"), ButtonStyle::prominent), ButtonSize::large),
                           withSymbol(new Button(QStringLiteral("Open Settings")), QStringLiteral("gearshape")),
                           sized(new Button(QStringLiteral("Small")), ButtonSize::small),
                           new Button(QStringLiteral("gearshape.fill"), QStringLiteral("Settings")),
                           new Button(QStringLiteral("trash"), QStringLiteral("Delete item")),
                           new Button(QStringLiteral("bookmark"), QStringLiteral("Add to My Saved"))}));
    layout->addLayout(row(
        {new Toggle, checked(new Toggle), disabled(checked(new Toggle)),
         new SegmentedControl({QStringLiteral("Day"), QStringLiteral("Week"), QStringLiteral("Month")}), new Spinner}));
    auto *progress = new ProgressBar;
    progress->setValue(0.62);
    layout->addWidget(progress);
    layout->addWidget(new ChipStrip({QStringLiteral("All"), QStringLiteral("My Saved"), QStringLiteral("Text"),
                                     QStringLiteral("Images"), QStringLiteral("Links"), QStringLiteral("Snippets")}));
    layout->addWidget(new SearchField(QStringLiteral("Search history…"), SearchField::Style::framed));
    auto *filled = new SearchField(QStringLiteral("Search history…"), SearchField::Style::framed);
    filled->setText(QStringLiteral("invoice"));
    layout->addWidget(filled);

    auto *tiles = new QGridLayout;
    tiles->setSpacing(space::small);
    tiles->addWidget(
        new Tile(QStringLiteral("camera.viewfinder"), QStringLiteral("Screenshot"), QStringLiteral("Capture & edit")),
        0, 0);
    tiles->addWidget(new Tile(QStringLiteral("video.badge.plus"), QStringLiteral("Record Screen"),
                              QStringLiteral("Capture screen area")),
                     0, 1);
    tiles->addWidget(
        new Tile(QStringLiteral("qrcode.viewfinder"), QStringLiteral("QR Scan"), QStringLiteral("Scan from screen")), 1,
        0);
    tiles->addWidget(checked(new Tile(QStringLiteral("keyboard.fill"), QStringLiteral("Clean Mode"),
                                      QStringLiteral("Input Blocked"), Tile::Kind::toggle)),
                     1, 1);
    tiles->addWidget(new Tile(QStringLiteral("gearshape.fill"), QStringLiteral("Open Settings"), {}), 2, 0);
    tiles->addWidget(new Tile(QStringLiteral("photo.badge.plus"), QStringLiteral("Tavrine Editor"),
                              QStringLiteral("Edit photos & snips")),
                     2, 1);
    layout->addLayout(tiles);

    auto *card = new Card;
    auto *first = new SettingsRow(QStringLiteral("cup.and.saucer.fill"), QStringLiteral("Keep Awake"),
                                  QStringLiteral("Prevent your Mac from sleeping on demand"));
    first->setPlate(QColor(0xE0, 0x7B, 0x1F));
    first->setTrailing(checked(new Toggle));
    card->add(first);
    auto *second = new SettingsRow(QStringLiteral("doc.on.clipboard"), QStringLiteral("Clipboard History"),
                                   QStringLiteral("Track and access your clipboard history"));
    second->setPlate(QColor(0x0A, 0x6C, 0xF0));
    second->setTrailing(new Toggle);
    card->add(second);
    auto *third = new SettingsRow(QStringLiteral("lock.shield.fill"), QStringLiteral("Privacy"));
    third->setTrailing(new Button(QStringLiteral("Open Settings")));
    card->add(third);
    layout->addWidget(card);
    layout->addWidget(new HintBar(
        {{QStringLiteral("↵"), {}, QStringLiteral("Paste")}, {QStringLiteral("⌘⇧V"), {}, QStringLiteral("Clipboard")}},
        {{QStringLiteral("esc"), {}, QStringLiteral("Close")}}));
    layout->addStretch();
}

void Gallery::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    painter.fillRect(rect(), theme.surface);
    qreal x = width() - space::huge;
    for (const QString &count : {QStringLiteral("3"), QStringLiteral("128")}) {
        x -= badgeWidth(count) + space::small;
        paintBadge(painter, QRectF(x, space::huge, 60, 28), count, theme.accent, theme.onAccent);
    }
}

SymbolPage::SymbolPage(QWidget *parent) : QWidget(parent) {}

void SymbolPage::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    painter.fillRect(rect(), theme.surface);
    const QStringList names = symbolNames();
    const int columns = std::max(1, width() / 150);
    for (int i = 0; i < names.size(); ++i) {
        const QRectF cell(i % columns * 150, i / columns * 58, 150, 58);
        paintSymbol(painter, QRectF(cell.left() + 4, cell.top() + 4, 34, 34), names[i], 32, theme.text);
        paintSymbol(painter, QRectF(cell.left() + 44, cell.top() + 4, 20, 34), names[i], 16, theme.text);
        paintSymbol(painter, QRectF(cell.left() + 70, cell.top() + 4, 20, 34), names[i], 20, theme.accentText);
        paintSymbol(painter, QRectF(cell.left() + 96, cell.top() + 4, 20, 34), names[i], 12, theme.secondaryText);
        paintLine(painter, QRectF(cell.left() + 4, cell.top() + 40, 142, 14), names[i], TextRole::mini,
                  theme.secondaryText);
    }
}

} // namespace tavrine::look
