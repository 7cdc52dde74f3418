#include "utilities/emoji/EmojiPickerView.h"

#include "base/DesktopWords.h"
#include "look/ChipStrip.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/Symbols.h"
#include "look/VirtualList.h"
#include "utilities/emoji/EmojiPickerTexts.h"

#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr int glyphSide = 38;
constexpr int cellHeight = 54;
constexpr int headerHeight = 32;
constexpr int sidePadding = look::space::large;
constexpr qreal cellInset = 3; // between neighbouring grounds
constexpr qreal pinSide = 11;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QRectF cellRect(const QRectF &line, size_t column) {
    const qreal width = line.width() / qreal(emojiGrid::columns);
    const qreal left = std::round(line.left() + width * qreal(column));
    return {left, line.top(), std::round(line.left() + width * qreal(column + 1)) - left, line.height()};
}

/// What is true of the keys at present. Words first: a hint parts them from its keys.
std::vector<look::KeyHint> trailingHints(bool hasText) {
    const char *category = hasText ? emojiPickerTexts::categoryBesideText : emojiPickerTexts::category;
    return {look::keyHint(inDesktopWords(text(category))),
            {.key = {}, .symbol = {}, .label = inDesktopWords(text(emojiPickerTexts::details))}};
}

look::HintBar *makeFooter() {
    return new look::HintBar({look::keyHint(text(emojiPickerTexts::navigate), text(emojiPickerTexts::navigateSymbol)),
                              look::keyHint(text(emojiPickerTexts::copy), text(emojiPickerTexts::copySymbol))},
                             trailingHints(false));
}

} // namespace

EmojiPickerView::EmojiPickerView(const EmojiPickerModel::Ports &ports, std::function<void()> onDismiss,
                                 std::function<void(const EmojiItem &)> onCopy, QWidget *parent)
    : look::ListPanel(
          new look::SearchField(text(emojiPickerTexts::placeholder)),
          [this](const QString &title, int keyCode, bool isCommandHeld) {
              return m_model.handleKeyDown(title, keyCode, isCommandHeld);
          },
          look::radius::panel, parent),
      m_model(ports), m_glyphs(glyphSide) {
    m_model.setOnDismiss(std::move(onDismiss));
    m_model.setOnCopy(std::move(onCopy));
    build();
    setUpList();
    followModel();
    sectionsChanged();
    showSelection();
}

EmojiPickerView::~EmojiPickerView() = default;

QSize EmojiPickerView::sizeHint() const {
    return {emojiPickerTexts::width, emojiPickerTexts::height};
}

void EmojiPickerView::build() {
    QStringList names;
    for (const EmojiCategoryRow &row : emojiCategories)
        names.append(row.rawValue);
    m_categories = new look::ChipStrip(names);
    list().setAccessibleName(inDesktopWords(text(EmojiPickerModel::windowTitle)));
    empty().set(text(emojiPickerTexts::emptySymbol), text(emojiPickerTexts::empty));

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
    column->addWidget(m_footer = makeFooter());

    connect(&search(), &look::SearchField::textChanged, &m_model, &EmojiPickerModel::setQuery);
    connect(m_categories, &look::ChipStrip::chosen, &m_model,
            [this](int index) { m_model.setSelectedCategory(emojiCategories.at(size_t(index)).category); });
}

void EmojiPickerView::setUpList() {
    list().setPadding({sidePadding, 0, sidePadding, look::space::small});
    look::VirtualList::Source source;
    source.count = [this] { return int(m_lines.size()); };
    source.height = [this](int row) { return m_lines[size_t(row)].count > 0 ? cellHeight : headerHeight; };
    source.isActive = [this](int row) { return m_lines[size_t(row)].count > 0; };
    source.paint = [this](QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
        paintLine(painter, row, rect, state);
    };
    source.accessibleText = [this](int row) { return accessibleText(row); };
    source.toolTip = [this](int row, const QRectF &rect, QPointF place) -> std::pair<QString, QRectF> {
        QRectF cell;
        const EmojiItem *item = itemAt(row, rect, place, &cell);
        return {item ? item->name : QString(), cell};
    };
    list().setSource(std::move(source));
    connect(&list(), &look::VirtualList::clicked, this, [this](int row, QPointF place) {
        if (const EmojiItem *item = itemAt(row, list().rowRect(row), place))
            m_model.choose(item->emoji);
    });
}

void EmojiPickerView::followModel() {
    connect(&m_model, &EmojiPickerModel::queryChanged, this, [this] {
        search().setText(m_model.query());
        m_footer->setTrailing(trailingHints(!m_model.query().isEmpty()));
    });
    connect(&m_model, &EmojiPickerModel::selectedCategoryChanged, this, &EmojiPickerView::categoryChanged);
    connect(&m_model, &EmojiPickerModel::sectionsChanged, this, &EmojiPickerView::sectionsChanged);
    connect(&m_model, &EmojiPickerModel::selectedIDChanged, this, &EmojiPickerView::showSelection);
    connect(&m_model, &EmojiPickerModel::searchFieldFocusWanted, &search(), &look::SearchField::focus);
}

void EmojiPickerView::categoryChanged() {
    for (size_t i = 0; i < emojiCategories.size(); ++i) {
        if (emojiCategories.at(i).category == m_model.selectedCategory())
            m_categories->setCurrent(int(i));
    }
}

void EmojiPickerView::sectionsChanged() {
    const auto &sections = m_model.sections();
    m_lines.clear();
    for (size_t section = 0; section < sections.size(); ++section) {
        m_lines.push_back({.section = section});
        const size_t count = sections[section].items.size();
        for (size_t first = 0; first < count; first += emojiGrid::columns)
            m_lines.push_back(
                {.section = section, .first = first, .count = std::min(emojiGrid::columns, count - first)});
    }
    list().reload();
    showList(m_model.isEmpty());
    showSelection(); // the same emoji may stand elsewhere now
}

void EmojiPickerView::showSelection() {
    m_selection = m_model.selectedID() ? emojiGrid::find(m_model.sections(), *m_model.selectedID()) : std::nullopt;
    list().update();
    int row = -1;
    if (m_selection) {
        const auto line = std::ranges::find_if(m_lines, [this](const Line &candidate) {
            return candidate.section == m_selection->section && m_selection->item >= candidate.first &&
                   m_selection->item < candidate.first + candidate.count;
        });
        row = int(line - m_lines.begin());
    }
    list().setSelectedRow(row);
    // The first line shows its header as well.
    if (row == 1)
        list().scrollTo(0, true);
    else
        list().centreRow(row, true);
}

const EmojiItem *EmojiPickerView::itemAt(int row, const QRectF &rect, QPointF place, QRectF *cell) const {
    if (row < 0 || size_t(row) >= m_lines.size())
        return nullptr;
    const Line &line = m_lines[size_t(row)];
    for (size_t column = 0; column < line.count; ++column) {
        const QRectF area = cellRect(rect, column);
        if (!area.contains(place))
            continue;
        if (cell)
            *cell = area;
        return m_model.sections()[line.section].items[line.first + column];
    }
    return nullptr;
}

void EmojiPickerView::paintLine(QPainter &painter, int row, const QRectF &rect, const look::RowState &state) {
    const look::Theme &theme = look::themeOf(this);
    const Line &line = m_lines[size_t(row)];
    const EmojiSection &section = m_model.sections()[line.section];
    if (line.count == 0) {
        look::paintSectionHeader(painter, rect, inDesktopWords(section.title), theme);
        return;
    }
    for (size_t column = 0; column < line.count; ++column) {
        const QRectF cell = cellRect(rect, column);
        const bool isSelected = m_selection == emojiGrid::Position{line.section, line.first + column};
        const bool isHovered = state.pointer && cell.contains(*state.pointer);
        paintCell(painter, cell, *section.items[line.first + column], isSelected, isHovered,
                  state.isPressed && isHovered, theme);
    }
}

void EmojiPickerView::paintCell(QPainter &painter, const QRectF &cell, const EmojiItem &item, bool isSelected,
                                bool isHovered, bool isPressed, const look::Theme &theme) {
    const QRectF ground = cell.adjusted(cellInset, cellInset, -cellInset, -cellInset);
    if (isPressed)
        look::fillRounded(painter, ground, look::radius::row, theme.pressed);
    else if (isSelected)
        look::fillRounded(painter, ground, look::radius::row, theme.selection);
    else if (isHovered)
        look::fillRounded(painter, ground, look::radius::row, theme.hover);
    if (isSelected)
        look::paintFocusRing(painter, ground.adjusted(2, 2, -2, -2), look::radius::row - 2, theme);

    const qreal scale = painter.device()->devicePixelRatioF();
    const QPixmap glyph = m_glyphs.picture(item.emoji, theme.text, scale);
    if (glyph.isNull()) { // no font has it: its name is better than an empty box
        look::paintLine(painter, ground.adjusted(4, 0, -4, 0), item.name, look::TextRole::mini, theme.secondaryText,
                        Qt::AlignHCenter);
    } else {
        const QSizeF size = glyph.deviceIndependentSize();
        const QPointF middle = cell.center() - QPointF(size.width() / 2, size.height() / 2);
        painter.drawPixmap(QPointF(std::round(middle.x() * scale) / scale, std::round(middle.y() * scale) / scale),
                           glyph);
    }
    if (m_model.store().pinnedEmojis().contains(item.emoji))
        look::paintSymbol(painter, QRectF(ground.right() - pinSide - 4, ground.top() + 4, pinSide, pinSide),
                          QStringLiteral("pin.fill"), pinSide, theme.accentText);
}

QString EmojiPickerView::accessibleText(int row) const {
    const Line &line = m_lines[size_t(row)];
    const EmojiSection &section = m_model.sections()[line.section];
    if (line.count == 0)
        return inDesktopWords(section.title);
    // The selected one alone is what the keyboard is on; a line that was reached otherwise is read out whole.
    if (m_selection && m_selection->section == line.section && m_selection->item >= line.first &&
        m_selection->item < line.first + line.count)
        return section.items[m_selection->item]->name;
    QStringList names;
    for (size_t i = line.first; i < line.first + line.count; ++i)
        names.append(section.items[i]->name);
    return names.join(QStringLiteral(", "));
}

// In the column of the selection. An emoji that stands further up as well, among the pins or the recents, is taken for
// that one, so another of the line must do.
void EmojiPickerView::selectRow(int row, int direction) {
    const size_t column = m_selection ? m_selection->item % emojiGrid::columns : 0;
    for (; row >= 0 && size_t(row) < m_lines.size(); row += direction) {
        const Line &line = m_lines[size_t(row)];
        for (size_t i = 0; i < line.count; ++i) {
            const size_t item = line.first + (std::min(column, line.count - 1) + i) % line.count;
            const QString &emoji = m_model.sections()[line.section].items[item]->emoji;
            if (emojiGrid::find(m_model.sections(), emoji) == emojiGrid::Position{line.section, item})
                return m_model.setSelectedID(emoji);
        }
    }
}

} // namespace tavrine
