#include "clipboard/ContentView.h"

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
#include <QWheelEvent>

#include <cmath>

namespace tavrine {
namespace {

constexpr int plainHeight = 44;
constexpr int labelledHeight = 56;
constexpr int pictureHeight = classicPanelTexts::thumbnailSize + 2 * look::space::small;
constexpr qreal playBadgeSide = 24;
constexpr qreal labelSymbol = 12;
constexpr size_t actionCount = 2;
constexpr qsizetype longestSpoken = 200; // a screen reader that reads out a whole book helps nobody

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

int actionAt(const QRectF &row, QPointF place) {
    const auto rects = look::rowActionRects(row, actionCount);
    for (size_t i = 0; i < rects.size(); ++i) {
        if (rects[i].contains(place))
            return static_cast<int>(i);
    }
    return -1;
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
    : PanelSurface(look::radius::panel, parent), m_model(manager, center, std::move(orderOutAllWindows)),
      m_thumbnails(manager), m_keys(new look::PanelKeys(this, [this](const QString &title, int keyCode, bool) {
          return m_model.handleKeyDown(title, keyCode);
      })) {
    m_model.setOnPaste(std::move(onPaste));
    build();
    setUpList();
    connect(&m_model, &ClassicPanelModel::searchTextChanged, this, [this] {
        m_search->setText(m_model.searchText());
        m_list->scrollTo(0, false);
    });
    connect(&m_model, &ClassicPanelModel::shownItemsChanged, this, &ContentView::shownItemsChanged);
    connect(&m_model, &ClassicPanelModel::selectedItemIDChanged, this, [this] {
        m_list->setSelectedRow(rowOfSelection());
        m_list->centreRow(m_list->selectedRow(), true);
    });
    connect(&m_model, &ClassicPanelModel::isPanelOpenChanged, this, [this] {
        m_keys->setOn(m_model.isPanelOpen());
        if (m_model.isPanelOpen())
            m_search->focus();
    });
    shownItemsChanged();
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
    m_search = new look::SearchField(text(classicPanelTexts::placeholder), look::SearchField::Style::framed);
    m_list = new look::VirtualList;
    m_list->setAccessibleName(text(classicPanelTexts::title));
    m_empty = new look::EmptyState(QString(), QString());
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, look::space::hair);
    column->setSpacing(0);
    column->addLayout(makeHeader());
    auto *search = new QHBoxLayout;
    search->setContentsMargins(look::space::medium, 0, look::space::medium, look::space::small);
    search->addWidget(m_search);
    column->addLayout(search);
    column->addWidget(m_list, 1);
    column->addWidget(m_empty, 1);
    setFocusProxy(m_search);
    connect(m_search, &look::SearchField::textChanged, &m_model, &ClassicPanelModel::setSearchText);
}

void ContentView::setUpList() {
    m_list->setPadding({look::space::small, 0, look::space::small, look::space::small});
    look::VirtualList::Source source;
    source.count = [this] { return static_cast<int>(m_model.shownItems().size()); };
    source.height = [this](int row) { return rowHeight(row); };
    source.paint = [this](QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
        paintListRow(painter, row, rect, state);
    };
    source.accessibleText = [this](int row) { return accessibleText(row); };
    source.actionNames = [this](int row) { return actionNames(row); };
    source.act = [this](int row, int action) { act(row, action); };
    source.toolTip = [this](int row, const QRectF &rect, QPointF place) -> std::pair<QString, QRectF> {
        const int action = actionAt(rect, place);
        if (action < 0)
            return {};
        return {actionNames(row).value(action), look::rowActionRects(rect, actionCount)[static_cast<size_t>(action)]};
    };
    m_list->setSource(std::move(source));
    connect(m_list, &look::VirtualList::clicked, this, &ContentView::clicked);
    connect(m_list, &look::VirtualList::scrolled, this, [this] { update(0, m_list->y() - 1, width(), 1); });
}

void ContentView::shownItemsChanged() {
    m_thumbnails.retry();
    m_list->reload();
    m_list->setSelectedRow(rowOfSelection());
    const bool isEmpty = m_model.shownItems().empty();
    if (isEmpty)
        m_empty->set(m_model.emptyState().symbol, m_model.emptyState().text);
    m_list->setVisible(!isEmpty);
    m_empty->setVisible(isEmpty);
}

const ClipboardItem *ContentView::item(int row) const {
    const auto &items = m_model.shownItems();
    return row >= 0 && static_cast<size_t>(row) < items.size() ? &items[static_cast<size_t>(row)] : nullptr;
}

int ContentView::rowHeight(int row) const {
    const ClipboardItem *shown = item(row);
    if (!shown)
        return plainHeight;
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    if (!read.fallbackSymbol.isEmpty())
        return pictureHeight;
    return read.labels.isEmpty() ? plainHeight : labelledHeight;
}

int ContentView::rowOfSelection() const {
    const auto &items = m_model.shownItems();
    for (size_t row = 0; row < items.size(); ++row) {
        if (items[row].id == m_model.selectedItemID())
            return static_cast<int>(row);
    }
    return -1;
}

void ContentView::paintListRow(QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
    const ClipboardItem *shown = item(row);
    if (!shown)
        return;
    const look::Theme &theme = look::themeOf(this);
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    // The ground and the buttons are those of every row; what stands on it is this list's own.
    look::RowContent ground;
    ground.actions = {text(classicPanelTexts::pinSymbol),
                      text(shown->isSaved ? classicPanelTexts::unsaveSymbol : classicPanelTexts::savedSymbol)};
    look::paintRow(painter, rect, ground, state, theme);

    qreal left = rect.left() + look::space::medium;
    if (!read.fallbackSymbol.isEmpty()) {
        const qreal side = classicPanelTexts::thumbnailSize;
        const QRectF picture(rect.left() + look::space::small, rect.top() + look::space::small, side, side);
        paintPicture(painter, picture, *shown, read, state.isSelected);
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
    const QPixmap picture = m_thumbnails.thumbnail(item, rect.width(), devicePixelRatioF());
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

QString ContentView::accessibleText(int row) const {
    const ClipboardItem *shown = item(row);
    if (!shown)
        return {};
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    QStringList words{read.title.left(longestSpoken)};
    for (const ClassicPanelRow::Label &label : read.labels)
        words.append(label.text);
    return words.join(QStringLiteral(", "));
}

QStringList ContentView::actionNames(int row) const {
    const ClipboardItem *shown = item(row);
    if (!shown)
        return {};
    const ClassicPanelRow read = ClassicPanelModel::row(*shown);
    return {read.pinToolTip, read.savedToolTip};
}

void ContentView::act(int row, int action) {
    const ClipboardItem *shown = item(row);
    if (!shown)
        return;
    const QUuid id = shown->id; // the list is another one after the action
    if (action == 0)
        m_model.togglePin(id);
    else
        m_model.toggleSaved(id);
}

void ContentView::clicked(int row, QPointF place) {
    const int action = actionAt(m_list->rowRect(row), place);
    if (action >= 0) {
        act(row, action);
    } else if (const ClipboardItem *shown = item(row)) {
        const QUuid id = shown->id;
        m_model.use(id);
    }
}

// A hairline parts the header from rows that went on under it.
void ContentView::paintEvent(QPaintEvent *event) {
    PanelSurface::paintEvent(event);
    if (!m_list->isVisible() || m_list->offset() <= 0)
        return;
    QPainter painter(this);
    look::paintSeparator(painter, QRectF(1, 0, width() - 2, m_list->y()), look::themeOf(this));
}

void ContentView::hideEvent(QHideEvent *event) {
    if (m_model.isPanelOpen())
        m_model.close();
    PanelSurface::hideEvent(event);
}

void ContentView::wheelEvent(QWheelEvent *event) {
    m_list->scrollBy(event);
}

} // namespace tavrine
