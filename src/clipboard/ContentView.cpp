#include "clipboard/ContentView.h"

#include "base/DesktopWords.h"
#include "clipboard/ClipboardPanelTexts.h"
#include "look/Button.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/Symbols.h"
#include "look/VirtualList.h"

#include <QPainter>
#include <QVBoxLayout>

#include <cmath>

namespace tavrine {
namespace {

constexpr int plainHeight = 44;
constexpr int labelledHeight = 56;
constexpr int pictureHeight = classicPanelTexts::thumbnailSize + 2 * look::space::small;
constexpr qreal playBadgeSide = 24;
constexpr qreal labelSymbol = 12;
constexpr size_t actionCount = 2;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

void paintLabels(QPainter &painter, QRectF rect, const QList<ClassicPanelRow::Label> &labels,
                 const look::Theme &theme) {
    for (const ClassicPanelRow::Label &label : labels) {
        look::paintSymbol(painter, QRectF(rect.left(), rect.top(), labelSymbol, rect.height()), label.symbol,
                          labelSymbol, theme.accentText);
        rect.setLeft(rect.left() + labelSymbol + look::space::tiny);
        if (rect.width() <= 0)
            return;
        const qreal wide = look::paintLine(painter, rect, label.text, look::TextRole::caption, theme.secondaryText);
        rect.setLeft(rect.left() + std::ceil(wide) + look::space::medium);
    }
}

} // namespace

ContentView::ContentView(ClipboardManager &manager, NotificationCenter &center,
                         std::function<void()> orderOutAllWindows, std::function<void(const ClipboardItem &)> onPaste,
                         QWidget *parent)
    : ClipboardListView(
          manager, new look::SearchField(text(classicPanelTexts::placeholder), look::SearchField::Style::framed),
          [this](const QString &title, int keyCode, bool) { return m_model.handleKeyDown(title, keyCode); },
          actionCount, look::radius::panel, parent),
      m_model(manager, center, std::move(orderOutAllWindows)) {
    m_model.setOnPaste(std::move(onPaste));
    build();
    connect(&m_model, &ClassicPanelModel::searchTextChanged, this, [this] {
        beginAtTop();
        search().setText(m_model.searchText());
    });
    connect(&m_model, &ClassicPanelModel::isPanelOpenChanged, this, &ContentView::openChanged);
    follow(m_model);
}

ContentView::~ContentView() = default;

QSize ContentView::sizeHint() const {
    return {classicPanelTexts::width, classicPanelTexts::height};
}

QLayout *ContentView::makeHeader() {
    auto *title = new look::Label(text(classicPanelTexts::title), look::TextRole::heading);
    auto *settings =
        new look::Button(text(classicPanelTexts::settingsSymbol), text(classicPanelTexts::settingsToolTip));
    auto *close = new look::Button(text(classicPanelTexts::closeSymbol), text(classicPanelTexts::closeToolTip));
    connect(settings, &QAbstractButton::clicked, &m_model, &ClassicPanelModel::requestSettings);
    connect(close, &QAbstractButton::clicked, &m_model, &ClassicPanelModel::orderOutAllWindows);
    auto *header = new QHBoxLayout;
    header->setContentsMargins(look::space::large, look::space::medium, look::space::medium, look::space::small);
    header->setSpacing(look::space::hair);
    header->addWidget(title, 1);
    header->addWidget(settings);
    header->addWidget(close);
    return header;
}

void ContentView::build() {
    list().setAccessibleName(inDesktopWords(text(classicPanelTexts::title)));
    list().setPadding({look::space::small, 0, look::space::small, look::space::small});
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, look::space::hair);
    column->setSpacing(0);
    column->addLayout(makeHeader());
    auto *searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(look::space::medium, 0, look::space::medium, look::space::small);
    searchRow->addWidget(&search());
    column->addLayout(searchRow);
    column->addWidget(&list(), 1);
    column->addWidget(&empty(), 1);
    connect(&search(), &look::SearchField::textChanged, &m_model, &ClassicPanelModel::setSearchText);
}

// However the list was left, it opens at its top, and at once.
void ContentView::openChanged() {
    if (!m_model.isPanelOpen())
        return;
    list().scrollTo(0, false);
    search().focus();
}

int ContentView::rowCount() const {
    return static_cast<int>(m_model.visibleItems().size());
}

const ClipboardItem *ContentView::itemAt(int row) const {
    const auto &items = m_model.visibleItems();
    return row >= 0 && static_cast<size_t>(row) < items.size() ? &items[static_cast<size_t>(row)] : nullptr;
}

int ContentView::rowHeight(int row) const {
    const ClipboardItem *shown = itemAt(row);
    if (!shown)
        return plainHeight;
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    if (!read.fallbackSymbol.isEmpty())
        return pictureHeight;
    return read.labels.isEmpty() ? plainHeight : labelledHeight;
}

void ContentView::paintItem(QPainter &painter, const ClipboardItem &item, const QRectF &rect,
                            const look::RowState &state) {
    const look::Theme &theme = look::themeOf(this);
    const ClassicPanelRow read = ClassicPanelModel::row(item);
    // The ground and the buttons are those of every row; what stands on it is this list's own.
    look::RowContent ground;
    ground.actions = {text(classicPanelTexts::pinSymbol),
                      text(item.isSaved ? classicPanelTexts::unsaveSymbol : classicPanelTexts::savedSymbol)};
    look::paintRow(painter, rect, ground, state, theme);

    qreal left = rect.left() + look::space::medium;
    if (!read.fallbackSymbol.isEmpty()) {
        const qreal side = classicPanelTexts::thumbnailSize;
        const QRectF picture(left, rect.top() + look::space::small, side, side);
        paintPicture(painter, picture, item, read, state.isSelected);
        left = picture.right() + look::space::medium;
    }
    const bool showsActions = state.isSelected || state.isHovered;
    const qreal right = showsActions ? look::rowActionRects(rect, actionCount).front().left() - look::space::small
                                     : rect.right() - look::space::medium;
    const qreal middle = std::round(rect.center().y());
    if (read.labels.isEmpty()) {
        look::paintLine(painter, QRectF(left, rect.top(), right - left, rect.height()), read.title,
                        look::TextRole::body, theme.text);
        return;
    }
    look::paintLine(painter, QRectF(left, middle - 18, right - left, 18), read.title, look::TextRole::body, theme.text);
    paintLabels(painter, QRectF(left, middle + 1, right - left, 16), read.labels, theme);
}

void ContentView::paintPicture(QPainter &painter, const QRectF &rect, const ClipboardItem &item,
                               const ClassicPanelRow &read, bool isSelected) {
    const look::Theme &theme = look::themeOf(this);
    const QPixmap picture = thumbnails().thumbnail(item, rect.width(), devicePixelRatioF());
    if (picture.isNull()) {
        look::paintSymbolPlate(painter, rect, read.fallbackSymbol, isSelected ? theme.accent : theme.control,
                               isSelected ? theme.onAccent : theme.secondaryText);
    } else {
        look::paintThumbnail(painter, rect, picture, theme);
    }
    if (read.showsPlayBadge && !picture.isNull()) {
        QRectF badge(0, 0, playBadgeSide, playBadgeSide);
        badge.moveCenter(rect.center());
        look::fillRounded(painter, badge, playBadgeSide / 2, QColor(0, 0, 0, 150));
        look::paintSymbol(painter, badge, text(classicPanelTexts::playBadge), look::symbolsize::small, Qt::white);
    }
}

QStringList ContentView::spokenWords(int row) const {
    const ClipboardItem *shown = itemAt(row);
    if (!shown)
        return {};
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    QStringList words{read.title};
    for (const ClassicPanelRow::Label &label : read.labels)
        words.append(label.text);
    return words;
}

QStringList ContentView::actionNames(const ClipboardItem &item) const {
    const ClassicPanelRow read = ClassicPanelModel::row(item);
    return {read.pinToolTip, read.savedToolTip};
}

void ContentView::act(const QUuid &id, size_t action) {
    if (action == 0)
        m_model.togglePin(id);
    else
        m_model.toggleSaved(id);
}

void ContentView::hideEvent(QHideEvent *event) {
    if (m_model.isPanelOpen())
        m_model.close();
    ListPanel::hideEvent(event);
}

} // namespace tavrine
