#include "capture/editor/TavrineEditorLandingView.h"

#include "base/DesktopWords.h"
#include "capture/editor/RecentImageTile.h"
#include "capture/editor/RecentStripView.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QBoxLayout>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

namespace tavrine {
namespace {

constexpr int sideMargin = 32;
constexpr int headerHeight = 52;
constexpr int lowHeight = 440; // below, margins give their room to what stands between them
constexpr double dropCorner = 16;

QString words(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// The place to drop a picture, drawn as one, and brighter while a drag is over the window.
class DropArea final : public QWidget {
public:
    DropArea(const EditorLandingModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
        setAccessibleName(inDesktopWords(words("Drag & Drop Image Here")));
        connect(&model, &EditorLandingModel::isTargetedChanged, this, qOverload<>(&QWidget::update));
        setMinimumHeight(contentHeight - symbolHeight);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        const bool isTargeted = m_model.isTargeted();
        const QRectF body = QRectF(rect()).adjusted(1, 1, -1, -1);
        QColor fill = isTargeted ? theme.accent : theme.control;
        if (isTargeted)
            fill.setAlphaF(0.14F);
        look::fillRounded(painter, body, dropCorner, fill);
        QPen dashes(isTargeted ? theme.accent : theme.tertiaryText, isTargeted ? 2 : 1.25);
        dashes.setDashPattern(isTargeted ? QList<qreal>{4, 3} : QList<qreal>{5, 4});
        dashes.setCapStyle(Qt::RoundCap);
        painter.setPen(dashes);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(body.adjusted(0.5, 0.5, -0.5, -0.5), dropCorner, dropCorner);
        // Above the buttons, which stand in the lower part.
        const double top = contentTop();
        if (hasRoomForSymbol())
            look::paintSymbol(painter, QRectF(0, top, width(), symbolHeight), QStringLiteral("photo.badge.plus"),
                              look::symbolsize::huge, isTargeted ? theme.accentText : theme.secondaryText);
        look::paintLine(painter, QRectF(0, top + symbolHeight + 12, width(), 26),
                        inDesktopWords(words("Drag & Drop Image Here")), look::TextRole::title, theme.text,
                        Qt::AlignHCenter);
        look::paintLine(painter, QRectF(0, top + symbolHeight + 40, width(), 20),
                        inDesktopWords(words("Supports PNG, JPEG, WebP, HEIC & TIFF formats")), look::TextRole::body,
                        theme.secondaryText, Qt::AlignHCenter);
    }
    void resizeEvent(QResizeEvent *) override {
        layout()->setContentsMargins(0, int(contentTop()) + symbolHeight + 80, 0, 0);
    }

private:
    [[nodiscard]] bool hasRoomForSymbol() const { return height() >= contentHeight + look::space::large; }
    /// Where the symbol begins, or would: without room for it the rest stands in the middle alone.
    [[nodiscard]] double contentTop() const {
        const double above = hasRoomForSymbol() ? 0 : symbolHeight + 8;
        return std::round((height() - contentHeight + above) / 2.0) - above;
    }

    static constexpr int symbolHeight = 56;
    static constexpr int contentHeight = symbolHeight + 80 + 38;

    const EditorLandingModel &m_model;
};

/// A symbol before a heading.
class HeadingSymbol final : public QWidget {
public:
    HeadingSymbol(QString symbol, QWidget *parent) : QWidget(parent), m_symbol(std::move(symbol)) {
        setFixedSize(RecentStripView::edge + int(look::symbolsize::medium) + look::space::tiny, look::height::control);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        look::paintSymbol(painter, QRectF(RecentStripView::edge, 0, look::symbolsize::medium, height()), m_symbol,
                          look::symbolsize::medium, look::themeOf(this).secondaryText);
    }

private:
    QString m_symbol;
};

} // namespace

TavrineEditorLandingView::TavrineEditorLandingView(EditorLandingModel::Ports ports, EditorLandingModel::History history,
                                                   EditorLandingModel::Actions actions, QWidget *parent)
    : QWidget(parent), m_model(ports, std::move(history), std::move(actions)) {
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(inDesktopWords(QStringLiteral("Tavrine Editor")));
    build();
    connect(&m_model, &EditorLandingModel::recentImagesChanged, this, &TavrineEditorLandingView::showRecent);
    connect(&m_model, &EditorLandingModel::canPasteChanged, this, [this] { m_paste->setVisible(m_model.canPaste()); });
    showRecent();
}

TavrineEditorLandingView::~TavrineEditorLandingView() = default;

void TavrineEditorLandingView::build() {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->setSizeConstraint(QLayout::SetNoConstraint); // it may be lower than all that it can show
    column->addWidget(makeHeader());
    m_drop = new QVBoxLayout;
    m_drop->addWidget(makeDropArea());
    column->addLayout(m_drop, 1);
    m_recentPlace = new QVBoxLayout;
    m_recentPlace->addWidget(makeRecent());
    column->addLayout(m_recentPlace);
    fitHeight();
}

void TavrineEditorLandingView::fitHeight() {
    const int gap = height() < lowHeight ? look::space::tiny : look::space::huge;
    m_drop->setContentsMargins(sideMargin, gap, sideMargin, gap);
    // The strip has room for a focus ring round its tiles, and the symbol of its title as much round itself.
    const int side = sideMargin - RecentStripView::edge;
    m_recentPlace->setContentsMargins(side, 0, side, gap);
    // On a screen too low for both the way to a picture stays, and those of the history are in the clipboard's panel.
    const int others = headerHeight + m_drop->minimumSize().height() + gap;
    m_recent->setVisible(height() >= others + m_recent->minimumSizeHint().height());
}

QSize TavrineEditorLandingView::minimumSizeHint() const {
    QSize least = QWidget::minimumSizeHint();
    if (!m_recent->isHidden())
        least.rheight() -= m_recent->minimumSizeHint().height();
    return least;
}

void TavrineEditorLandingView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fitHeight();
}

QWidget *TavrineEditorLandingView::makeHeader() {
    auto *header = new QWidget(this);
    header->setFixedHeight(headerHeight);
    auto *title = new look::Label(words("Tavrine Editor"), look::TextRole::heading, look::Label::Tone::primary, header);
    auto *close = new look::Button(words("xmark"), words("Close Editor"), header);
    connect(close, &QAbstractButton::clicked, &m_model, &EditorLandingModel::close);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(sideMargin, 0, look::space::large, 0);
    row->addWidget(title, 1);
    row->addWidget(close);
    return header;
}

QWidget *TavrineEditorLandingView::makeDropArea() {
    auto *area = new DropArea(m_model, this);
    auto *choose = new look::Button(words("Choose Image File…"), look::ButtonStyle::prominent, area);
    choose->setButtonSize(look::ButtonSize::large);
    choose->setSymbol(words("folder.badge.plus"));
    choose->setToolTip(words("Ctrl+O"));
    m_paste = new look::Button(words("Paste from Clipboard"), look::ButtonStyle::plain, area);
    m_paste->setButtonSize(look::ButtonSize::large);
    m_paste->setSymbol(words("doc.on.clipboard"));
    m_paste->setToolTip(words("Ctrl+V"));
    m_paste->setVisible(m_model.canPaste());
    connect(choose, &QAbstractButton::clicked, &m_model, &EditorLandingModel::chooseImageFile);
    connect(m_paste, &QAbstractButton::clicked, &m_model, &EditorLandingModel::paste);
    auto *row = new QHBoxLayout(area);
    row->setSpacing(look::space::medium);
    row->setAlignment(Qt::AlignTop);
    row->addStretch(1);
    row->addWidget(choose);
    row->addWidget(m_paste);
    row->addStretch(1);
    return area;
}

QWidget *TavrineEditorLandingView::makeRecent() {
    m_recent = new QWidget(this);
    auto *symbol = new HeadingSymbol(words("clock.arrow.circlepath"), m_recent);
    auto *title = new look::Label(words("Recent Screenshots & Images"), look::TextRole::heading,
                                  look::Label::Tone::primary, m_recent);
    m_strip = new RecentStripView(RecentImageTile::tileHeight, m_recent);
    m_noneYet = new look::Label(words("Pictures that you copy or capture appear here."), look::TextRole::body,
                                look::Label::Tone::secondary, m_recent);

    m_scrollButtons = new QWidget(m_recent);
    auto *start = new look::Button(words("chevron.left"), words("Scroll to start"), m_scrollButtons);
    auto *end = new look::Button(words("chevron.right"), words("Scroll to end"), m_scrollButtons);
    connect(start, &QAbstractButton::clicked, m_strip, &RecentStripView::scrollToStart);
    connect(end, &QAbstractButton::clicked, m_strip, &RecentStripView::scrollToEnd);
    connect(m_strip, &RecentStripView::scrolled, this, [this, start, end] {
        start->setEnabled(m_strip->offset() > 0);
        end->setEnabled(m_strip->offset() < m_strip->maximumOffset());
        m_scrollButtons->setVisible(m_strip->maximumOffset() > 0);
    });
    auto *buttons = new QHBoxLayout(m_scrollButtons);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(look::space::tiny);
    buttons->addWidget(start);
    buttons->addWidget(end);

    auto *header = new QHBoxLayout;
    header->setSpacing(look::space::tiny);
    header->addWidget(symbol);
    header->addWidget(title, 1);
    header->addWidget(m_scrollButtons);
    auto *column = new QVBoxLayout(m_recent);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(look::space::small);
    column->addLayout(header);
    column->addWidget(m_strip);
    auto *none = new QHBoxLayout;
    none->setContentsMargins(RecentStripView::edge, 0, 0, 0);
    none->addWidget(m_noneYet);
    column->addLayout(none);
    return m_recent;
}

void TavrineEditorLandingView::showRecent() {
    std::vector<QWidget *> tiles;
    for (const RecentImage &image : m_model.recentImages())
        tiles.push_back(new RecentImageTile(m_model, image));
    const bool isEmpty = tiles.empty();
    m_strip->setTiles(std::move(tiles));
    m_strip->setVisible(!isEmpty);
    m_noneYet->setVisible(isEmpty);
    fitHeight();
}

void TavrineEditorLandingView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const look::Theme &theme = look::themeOf(this);
    painter.fillRect(rect(), theme.surface);
    look::paintSeparator(painter, QRectF(0, 0, width(), headerHeight), theme);
}

void TavrineEditorLandingView::showEvent(QShowEvent *event) {
    m_model.appear();
    QWidget::showEvent(event);
}

void TavrineEditorLandingView::hideEvent(QHideEvent *event) {
    m_model.disappear();
    QWidget::hideEvent(event);
}

void TavrineEditorLandingView::keyPressEvent(QKeyEvent *event) {
    const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    if (isCommand && event->key() == Qt::Key_V)
        m_model.paste(); // the view may be gone, here and below
    else if (isCommand && event->key() == Qt::Key_O)
        m_model.chooseImageFile();
    else if (isCommand && event->key() == Qt::Key_W)
        m_model.close();
    else if (event->key() == Qt::Key_Escape)
        m_model.close();
    else
        QWidget::keyPressEvent(event);
}

void TavrineEditorLandingView::dragEnterEvent(QDragEnterEvent *event) {
    if (m_model.dragEntered(*event->mimeData())) {
        event->setDropAction(Qt::CopyAction); // whatever the other program offers first, nothing is taken from it
        event->accept();
    }
}

void TavrineEditorLandingView::dragLeaveEvent(QDragLeaveEvent *) {
    m_model.dragExited();
}

void TavrineEditorLandingView::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    m_model.drop(*event->mimeData()); // the view may be gone
}

} // namespace tavrine
