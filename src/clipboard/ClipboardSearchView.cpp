#include "clipboard/ClipboardSearchView.h"

#include "clipboard/ClipboardPanelTexts.h"
#include "look/Button.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/VirtualList.h"

#include <QPainter>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <array>

namespace tavrine {
namespace {

constexpr int headerHeight = 30;
constexpr int dividedHeaderHeight = 40; // with the divider above it
constexpr int dividerPlace = 6;
constexpr qreal thumbnailSide = 36;      // of the look's rows
constexpr qsizetype longestSpoken = 200; // a screen reader that reads out a whole book helps nobody
constexpr size_t actionCount = 3;
constexpr int edge = 1; // the panel's hairline, which no other line may cross

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// A hint's last word is what the key does; the words before it stand on the key.
look::KeyHint keyHint(const clipboardSearchTexts::Hint &hint) {
    const QString words = text(hint.text);
    const qsizetype blank = words.lastIndexOf(u' ');
    look::KeyHint made{words.left(std::max<qsizetype>(0, blank)), hint.symbol ? text(hint.symbol) : QString(),
                       words.mid(blank + 1)};
    if (made.key.isEmpty() && made.symbol.isEmpty())
        made.symbol = QStringLiteral("return"); // the key that pastes
    return made;
}

look::HintBar *makeFooter() {
    std::array<look::KeyHint, clipboardSearchTexts::footer.size()> hints;
    QStringList words;
    for (size_t i = 0; i < hints.size(); ++i) {
        hints.at(i) = keyHint(clipboardSearchTexts::footer.at(i));
        words.append(text(clipboardSearchTexts::footer.at(i).text));
    }
    auto *footer = new look::HintBar({hints.at(0), hints.at(1)}, {hints.at(2), hints.at(3)});
    footer->setAccessibleName(words.join(QStringLiteral(", ")));
    return footer;
}

} // namespace

ClipboardSearchView::ClipboardSearchView(const ClipboardSearchModel::Ports &ports, std::function<void()> onDismiss,
                                         std::function<void(const ClipboardItem &)> onPaste, QWidget *parent)
    : PanelSurface(clipboardSearchTexts::cornerRadius, parent), m_model(ports), m_thumbnails(ports.manager),
      m_keys(new look::PanelKeys(this, [this](const QString &title, int keyCode, bool isCommandHeld) {
          return m_model.handleKeyDown(title, keyCode, isCommandHeld);
      })) {
    m_model.setOnDismiss(std::move(onDismiss));
    m_model.setOnPaste(std::move(onPaste));
    build();
    setUpList();
    followModel();
    visibleItemsChanged();
    categoryChanged();
}

ClipboardSearchView::~ClipboardSearchView() = default;

QSize ClipboardSearchView::sizeHint() const {
    return {clipboardSearchTexts::width, clipboardSearchTexts::height};
}

void ClipboardSearchView::build() {
    m_search = new look::SearchField(text(clipboardSearchTexts::placeholder));
    m_add = new look::Button(text(clipboardSearchTexts::addSymbol), text(clipboardSearchTexts::addToolTip));
    m_add->setButtonSize(look::ButtonSize::large);
    m_search->addTrailing(m_add);
    QStringList categories;
    for (const auto &category : clipboardSearchCategories)
        categories.append(QString(category.rawValue));
    m_categories = new look::ChipStrip(categories);
    m_list = new look::VirtualList;
    m_list->setAccessibleName(text(ClipboardSearchModel::windowTitle));
    m_empty = new look::EmptyState(QString(), QString());

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_search);
    auto *strip = new QHBoxLayout;
    strip->setContentsMargins(look::space::medium, look::space::small, look::space::medium, look::space::small);
    strip->addWidget(m_categories);
    column->addLayout(strip);
    column->addWidget(m_list, 1);
    column->addWidget(m_empty, 1);
    auto *footer = new QHBoxLayout;
    footer->setContentsMargins(edge, 0, edge, 0);
    footer->addWidget(makeFooter());
    column->addLayout(footer);
    setFocusProxy(m_search);

    connect(m_search, &look::SearchField::textChanged, &m_model, &ClipboardSearchModel::setQuery);
    connect(m_add, &QAbstractButton::clicked, &m_model, &ClipboardSearchModel::addToMySaved);
    connect(m_categories, &look::ChipStrip::chosen, this, [this](int index) {
        m_model.setSelectedCategory(clipboardSearchCategories.at(static_cast<size_t>(index)).category);
    });
}

void ClipboardSearchView::setUpList() {
    m_list->setPadding({look::space::small, look::space::hair, look::space::small, look::space::small});
    look::VirtualList::Source source;
    source.count = [this] { return rowCount(); };
    source.height = [this](int row) { return rowHeight(row); };
    source.isActive = [this](int row) { return entry(row).item != nullptr; };
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
    connect(m_list, &look::VirtualList::clicked, this, &ClipboardSearchView::clicked);
    connect(m_list, &look::VirtualList::scrolled, this, [this] { update(0, m_list->y() - 1, width(), 1); });
}

void ClipboardSearchView::followModel() {
    connect(&m_model, &ClipboardSearchModel::queryChanged, this, &ClipboardSearchView::queryChanged);
    connect(&m_model, &ClipboardSearchModel::selectedCategoryChanged, this, &ClipboardSearchView::categoryChanged);
    connect(&m_model, &ClipboardSearchModel::visibleItemsChanged, this, &ClipboardSearchView::visibleItemsChanged);
    connect(&m_model, &ClipboardSearchModel::selectedIDChanged, this, [this] { showSelection(true); });
    connect(&m_model, &ClipboardSearchModel::searchFieldFocusWanted, m_search, &look::SearchField::focus);
}

void ClipboardSearchView::queryChanged() {
    m_beginsAtTop = true;
    m_search->setText(m_model.query());
}

void ClipboardSearchView::categoryChanged() {
    m_beginsAtTop = true;
    for (size_t i = 0; i < clipboardSearchCategories.size(); ++i) {
        if (clipboardSearchCategories.at(i).category == m_model.selectedCategory())
            m_categories->setCurrent(static_cast<int>(i));
    }
    m_add->setVisible(m_model.showsAddButton());
}

void ClipboardSearchView::visibleItemsChanged() {
    m_thumbnails.retry();
    m_list->reload();
    m_list->setSelectedRow(rowOfSelection());
    if (std::exchange(m_beginsAtTop, false))
        m_list->scrollTo(0, false);
    const bool isEmpty = m_model.visibleItems().empty();
    if (isEmpty)
        m_empty->set(m_model.emptyState().symbol, m_model.emptyState().text);
    m_list->setVisible(!isEmpty);
    m_empty->setVisible(isEmpty);
}

void ClipboardSearchView::showSelection(bool isAnimated) {
    const int row = rowOfSelection();
    m_list->setSelectedRow(row);
    m_list->centreRow(row, isAnimated);
}

int ClipboardSearchView::rowCount() const {
    return static_cast<int>(m_model.visibleItems().size() + m_model.sections().size());
}

// Each section takes one row more than its items, for its header.
ClipboardSearchView::Entry ClipboardSearchView::entry(int row) const {
    const auto &sections = m_model.sections();
    for (size_t section = sections.size(); section-- > 0;) {
        const size_t header = sections[section].first + section;
        if (static_cast<size_t>(row) < header)
            continue;
        const size_t behind = static_cast<size_t>(row) - header;
        const bool isItem = behind > 0 && behind <= sections[section].count;
        return {isItem ? &m_model.visibleItems()[sections[section].first + behind - 1] : nullptr, section};
    }
    return {};
}

int ClipboardSearchView::rowHeight(int row) const {
    const Entry shown = entry(row);
    if (shown.item)
        return clipboardSearchTexts::rowHeight;
    return shown.section == 0 ? headerHeight : dividedHeaderHeight;
}

int ClipboardSearchView::rowOfSelection() const {
    const auto &items = m_model.visibleItems();
    const auto &sections = m_model.sections();
    for (size_t section = 0; section < sections.size(); ++section) {
        for (size_t i = sections[section].first; i < sections[section].first + sections[section].count; ++i) {
            if (items[i].id == m_model.selectedID())
                return static_cast<int>(i + section + 1);
        }
    }
    return -1;
}

void ClipboardSearchView::paintListRow(QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
    const look::Theme &theme = look::themeOf(this);
    const Entry shown = entry(row);
    if (!shown.item) {
        const qreal divider = shown.section == 0 ? 0 : dividedHeaderHeight - headerHeight;
        if (divider > 0)
            look::paintSeparator(painter,
                                 QRectF(rect.left() + look::space::medium, rect.top(),
                                        rect.width() - 2 * look::space::medium, dividerPlace),
                                 theme);
        look::paintSectionHeader(painter, rect.adjusted(0, divider, 0, 0), m_model.sections()[shown.section].header,
                                 theme);
        return;
    }
    const ClipboardSearchRow read = m_model.row(*shown.item);
    look::RowContent content;
    content.symbol = read.icon;
    content.thumbnail = m_thumbnails.thumbnail(*shown.item, thumbnailSide, devicePixelRatioF());
    content.title = read.title;
    content.subtitle = read.subtitle;
    content.actions = {text(clipboardSearchTexts::pinSymbol), read.savedSymbol,
                       text(clipboardSearchTexts::deleteSymbol)};
    look::paintRow(painter, rect, content, state, theme);
}

QString ClipboardSearchView::accessibleText(int row) const {
    const Entry shown = entry(row);
    if (!shown.item)
        return shown.section < m_model.sections().size() ? m_model.sections()[shown.section].header : QString();
    const ClipboardSearchRow read = m_model.row(*shown.item);
    return read.title.left(longestSpoken) + QStringLiteral(", ") + read.subtitle;
}

QStringList ClipboardSearchView::actionNames(int row) const {
    const Entry shown = entry(row);
    if (!shown.item)
        return {};
    const ClipboardSearchRow read = m_model.row(*shown.item);
    return {read.pinToolTip, read.savedToolTip, text(clipboardSearchTexts::deleteToolTip)};
}

int ClipboardSearchView::actionAt(const QRectF &row, QPointF place) {
    const auto rects = look::rowActionRects(row, actionCount);
    for (size_t i = 0; i < rects.size(); ++i) {
        if (rects[i].contains(place))
            return static_cast<int>(i);
    }
    return -1;
}

void ClipboardSearchView::act(int row, int action) {
    const Entry shown = entry(row);
    if (!shown.item)
        return;
    const QUuid id = shown.item->id; // the list is another one after the action
    if (action == 0)
        m_model.togglePin(id);
    else if (action == 1)
        m_model.toggleSaved(id);
    else
        m_model.deleteItem(id);
}

void ClipboardSearchView::clicked(int row, QPointF place) {
    const int action = actionAt(m_list->rowRect(row), place);
    if (action >= 0) {
        act(row, action);
    } else if (const Entry shown = entry(row); shown.item) {
        const QUuid id = shown.item->id;
        m_model.paste(id);
    }
}

// A hairline parts the search field from the rest, and another one the rows that went on under the strip.
void ClipboardSearchView::paintEvent(QPaintEvent *event) {
    PanelSurface::paintEvent(event);
    QPainter painter(this);
    const QRectF lines = QRectF(rect()).adjusted(edge, 0, -edge, 0);
    look::paintSeparator(painter, QRectF(lines.left(), 0, lines.width(), look::height::searchField),
                         look::themeOf(this));
    if (m_list->isVisible() && m_list->offset() > 0)
        look::paintSeparator(painter, QRectF(lines.left(), 0, lines.width(), m_list->y()), look::themeOf(this));
}

void ClipboardSearchView::showEvent(QShowEvent *event) {
    PanelSurface::showEvent(event);
    m_keys->setOn(true);
}

void ClipboardSearchView::hideEvent(QHideEvent *event) {
    m_keys->setOn(false);
    PanelSurface::hideEvent(event);
}

// The wheel scrolls the list wherever in the panel the pointer is.
void ClipboardSearchView::wheelEvent(QWheelEvent *event) {
    m_list->scrollBy(event);
}

} // namespace tavrine
