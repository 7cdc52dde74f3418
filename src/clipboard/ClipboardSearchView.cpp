#include "clipboard/ClipboardSearchView.h"

#include "base/DesktopWords.h"
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

#include <array>

namespace tavrine {
namespace {

constexpr int headerHeight = 30;
constexpr int dividedHeaderHeight = 40; // with the divider above it
constexpr int dividerPlace = 6;
constexpr qreal thumbnailSide = 36; // of the look's rows
constexpr size_t actionCount = 3;
constexpr int edge = 1; // the panel's hairline, which no other line may cross

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

look::HintBar *makeFooter() {
    std::array<look::KeyHint, clipboardSearchTexts::footer.size()> hints;
    for (size_t i = 0; i < hints.size(); ++i) {
        const auto &hint = clipboardSearchTexts::footer.at(i);
        hints.at(i) = look::keyHint(text(hint.text), hint.symbol ? text(hint.symbol) : QString());
    }
    hints.at(1).symbol = QStringLiteral("return"); // the key that pastes
    return new look::HintBar({hints.at(0), hints.at(1)}, {hints.at(2), hints.at(3)});
}

} // namespace

ClipboardSearchView::ClipboardSearchView(const ClipboardSearchModel::Ports &ports, std::function<void()> onDismiss,
                                         std::function<void(const ClipboardItem &)> onPaste, QWidget *parent)
    : ClipboardListView(
          ports.manager, new look::SearchField(text(clipboardSearchTexts::placeholder)),
          [this](const QString &title, int keyCode, bool isCommandHeld) {
              return m_model.handleKeyDown(title, keyCode, isCommandHeld);
          },
          actionCount, clipboardSearchTexts::cornerRadius, parent),
      m_model(ports) {
    m_model.setOnDismiss(std::move(onDismiss));
    m_model.setOnPaste(std::move(onPaste));
    build();
    followModel();
    categoryChanged();
    follow(m_model);
}

ClipboardSearchView::~ClipboardSearchView() = default;

QSize ClipboardSearchView::sizeHint() const {
    return {clipboardSearchTexts::width, clipboardSearchTexts::height};
}

void ClipboardSearchView::build() {
    m_add = new look::Button(text(clipboardSearchTexts::addSymbol), text(clipboardSearchTexts::addToolTip));
    m_add->setButtonSize(look::ButtonSize::large);
    search().addTrailing(m_add);
    QStringList categories;
    for (const auto &category : clipboardSearchCategories)
        categories.append(QString(category.rawValue));
    m_categories = new look::ChipStrip(categories);
    list().setAccessibleName(inDesktopWords(text(ClipboardSearchModel::windowTitle)));
    list().setPadding({look::space::small, look::space::hair, look::space::small, look::space::small});

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(&search());
    auto *strip = new QHBoxLayout;
    strip->setContentsMargins(look::space::medium, look::space::small, look::space::medium, look::space::small);
    strip->addWidget(m_categories);
    column->addLayout(strip);
    column->addWidget(&list(), 1);
    column->addWidget(&empty(), 1);
    auto *footer = new QHBoxLayout;
    footer->setContentsMargins(edge, 0, edge, 0);
    footer->addWidget(makeFooter());
    column->addLayout(footer);

    connect(&search(), &look::SearchField::textChanged, &m_model, &ClipboardSearchModel::setQuery);
    connect(m_add, &QAbstractButton::clicked, &m_model, &ClipboardSearchModel::addToMySaved);
    connect(m_categories, &look::ChipStrip::chosen, this, [this](int index) {
        m_model.setSelectedCategory(clipboardSearchCategories.at(static_cast<size_t>(index)).category);
    });
}

void ClipboardSearchView::followModel() {
    connect(&m_model, &ClipboardSearchModel::queryChanged, this, [this] {
        beginAtTop();
        search().setText(m_model.query());
    });
    connect(&m_model, &ClipboardSearchModel::selectedCategoryChanged, this, &ClipboardSearchView::categoryChanged);
    connect(&m_model, &ClipboardSearchModel::searchFieldFocusWanted, &search(), &look::SearchField::focus);
}

void ClipboardSearchView::categoryChanged() {
    beginAtTop();
    for (size_t i = 0; i < clipboardSearchCategories.size(); ++i) {
        if (clipboardSearchCategories.at(i).category == m_model.selectedCategory())
            m_categories->setCurrent(static_cast<int>(i));
    }
    m_add->setVisible(m_model.showsAddButton());
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

int ClipboardSearchView::rowOfItem(size_t index) const {
    const auto &sections = m_model.sections();
    for (size_t section = 0; section < sections.size(); ++section) {
        if (index < sections[section].first + sections[section].count)
            return static_cast<int>(index + section + 1);
    }
    return -1;
}

void ClipboardSearchView::paintOther(QPainter &painter, int row, const QRectF &rect) {
    const look::Theme &theme = look::themeOf(this);
    const size_t section = entry(row).section;
    const qreal divider = section == 0 ? 0 : dividedHeaderHeight - headerHeight;
    if (divider > 0)
        look::paintSeparator(
            painter,
            QRectF(rect.left() + look::space::medium, rect.top(), rect.width() - 2 * look::space::medium, dividerPlace),
            theme);
    look::paintSectionHeader(painter, rect.adjusted(0, divider, 0, 0),
                             inDesktopWords(m_model.sections()[section].header), theme);
}

void ClipboardSearchView::paintItem(QPainter &painter, const ClipboardItem &item, const QRectF &rect,
                                    const look::RowState &state) {
    const ClipboardSearchRow read = m_model.row(item);
    look::RowContent content;
    content.symbol = read.icon;
    content.thumbnail = thumbnails().thumbnail(item, thumbnailSide, devicePixelRatioF());
    content.title = read.title;
    content.subtitle = read.subtitle;
    content.actions = {text(clipboardSearchTexts::pinSymbol), read.savedSymbol,
                       text(clipboardSearchTexts::deleteSymbol)};
    look::paintRow(painter, rect, content, state, look::themeOf(this));
}

QStringList ClipboardSearchView::spokenWords(int row) const {
    const Entry shown = entry(row);
    if (!shown.item)
        return shown.section < m_model.sections().size()
                   ? QStringList{inDesktopWords(m_model.sections()[shown.section].header)}
                   : QStringList();
    const ClipboardSearchRow read = m_model.row(*shown.item);
    return {read.title, read.subtitle};
}

QStringList ClipboardSearchView::actionNames(const ClipboardItem &item) const {
    const ClipboardSearchRow read = m_model.row(item);
    return {read.pinToolTip, read.savedToolTip, inDesktopWords(text(clipboardSearchTexts::deleteToolTip))};
}

void ClipboardSearchView::act(const QUuid &id, size_t action) {
    if (action == 0)
        m_model.togglePin(id);
    else if (action == 1)
        m_model.toggleSaved(id);
    else
        m_model.deleteItem(id);
}

} // namespace tavrine
