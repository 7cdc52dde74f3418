#include "shell/settings/SidebarView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Control.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ScrollArea.h"
#include "look/Symbols.h"
#include "look/Text.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

using namespace look;

constexpr int rowHeight = 32;
constexpr int subRowHeight = 26;
constexpr int symbolLeft = 10;
constexpr int textLeft = 36;
constexpr quint64 typingPauseMs = 1000; // as lists of other programs: a longer pause begins a new word
constexpr auto newBadge = "NEW";
constexpr qreal badgePoints = 8;
constexpr qreal subRowPoints = 12.5;
constexpr qreal dotSide = 4;
constexpr qreal dotGap = 6;

QString titleOf(SidebarItem item) {
    return QLatin1String(isSubRow(item) ? subRowTitle : textOf(item).text);
}

constexpr int finer = 2; // fonts come in whole pixels; at twice the size, painted at half, they come in halves

/// Twice as large as it shows, for `paintWords`.
QFont pointed(TextRole role, qreal points, QFont::Weight weight) {
    QFont font = fontFor(role);
    font.setPixelSize(qRound(points * finer));
    font.setWeight(weight);
    return font;
}

qreal widthOfWords(const QString &words, const QFont &font) {
    return QFontMetricsF(font).horizontalAdvance(words) / finer;
}

void paintWords(QPainter &painter, const QRectF &place, Qt::Alignment alignment, const QString &words,
                const QFont &font, const QColor &colour) {
    painter.save();
    painter.translate(place.topLeft());
    painter.scale(1.0 / finer, 1.0 / finer);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(QRectF(QPointF(), place.size() * finer), int(alignment) | Qt::TextDontClip, words);
    painter.restore();
}

} // namespace

class SidebarView::Row final : public Control {
public:
    Row(SidebarItem item, SidebarView &view) : Control(&view), m_item(item), m_view(view) {
        setText(inDesktopWords(titleOf(item)));
        setAccessibleName(inDesktopWords(QLatin1String(textOf(item).text)));
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::ClickFocus);
        setFixedHeight(isSubRow(item) ? subRowHeight : rowHeight);
    }

    [[nodiscard]] SidebarItem item() const { return m_item; }
    void setSelected(bool isSelected, bool isTabStop) {
        setAutoExclusive(false); // so that none can be selected
        setChecked(isSelected);
        setAutoExclusive(true);
        setFocusPolicy(isTabStop ? Qt::StrongFocus : Qt::ClickFocus);
    }

protected:
    void paint(QPainter &painter) override {
        const QRectF body = rect();
        const QColor ground = isChecked() ? theme().selection : this->ground(Qt::transparent);
        fillRounded(painter, body, radius::control, ground);
        if (m_view.kind() == Kind::narrow)
            paintSymbolOf(painter, QRectF((width() - symbolsize::medium) / 2, 0, symbolsize::medium, height()));
        else if (isSubRow(m_item))
            paintSubRow(painter, body);
        else
            paintRowOf(painter, body);
    }
    void keyPressEvent(QKeyEvent *event) override {
        if (!m_view.takeKey(*event))
            Control::keyPressEvent(event);
    }

private:
    void paintRowOf(QPainter &painter, const QRectF &body) {
        paintSymbolOf(painter, QRectF(symbolLeft, body.top(), symbolsize::medium, body.height()));
        paintLine(painter, body.adjusted(textLeft, 0, -space::small, 0), text(),
                  isChecked() ? TextRole::bodyStrong : TextRole::body, theme().text);
    }
    void paintSymbolOf(QPainter &painter, const QRectF &place) {
        paintSymbol(painter, place, QLatin1String(textOf(m_item).symbol), symbolsize::medium,
                    isChecked() ? theme().accentText : theme().secondaryText);
    }
    /// A dot, the title and the badge, six points apart.
    void paintSubRow(QPainter &painter, const QRectF &body) {
        qreal left = textLeft;
        fillRounded(painter, QRectF(left, body.center().y() - dotSide / 2, dotSide, dotSide), dotSide / 2,
                    theme().secondaryText);
        left += dotSide + dotGap;
        const QString title = text();
        const QFont font = pointed(TextRole::body, subRowPoints,
                                   fontFor(isChecked() ? TextRole::bodyStrong : TextRole::body).weight());
        paintWords(painter, body.adjusted(left, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, title, font, theme().text);
        left += widthOfWords(title, font) + dotGap;
        const QFont small = pointed(TextRole::captionStrong, badgePoints, QFont::Bold);
        const QString badge = inDesktopWords(QLatin1String(newBadge));
        const QRectF plate(left, body.center().y() - 6, widthOfWords(badge, small) + 2 * space::tiny, 12);
        fillRounded(painter, plate, radius::badge, theme().accent);
        paintWords(painter, plate, Qt::AlignCenter, badge, small, theme().onAccent);
    }

    SidebarItem m_item;
    SidebarView &m_view;
};

SidebarView::SidebarView(QWidget *parent) : QWidget(parent) {
    setFixedWidth(widthOf(m_kind));
    setRole(*this, QAccessible::Grouping);
    setAccessibleName(inDesktopWords(QStringLiteral("Pages")));
    auto *list = new QWidget;
    auto *column = new QVBoxLayout(list);
    column->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    column->setSpacing(space::hair);
    for (const SidebarGroup &group : sidebarGroups) {
        if (*group.heading) {
            column->addSpacing(space::medium);
            auto *heading =
                new Label(QLatin1String(group.heading), TextRole::captionStrong, Label::Tone::secondary, this);
            heading->setContentsMargins(symbolLeft, 0, 0, 0);
            column->addWidget(heading);
            m_headings.push_back(heading);
            column->addSpacing(space::hair);
        }
        for (const SidebarItem item : group.items) {
            auto *row = new Row(item, *this);
            m_rows.push_back(row);
            column->addWidget(row);
            connect(row, &QAbstractButton::clicked, this, [this, at = m_rows.size() - 1] { choose(at); });
        }
    }
    column->addStretch();
    m_pane = new ScrollPane(list, this);
    setSelection(std::nullopt);
}

SidebarView::~SidebarView() = default;

std::vector<SidebarItem> SidebarView::order() {
    std::vector<SidebarItem> items;
    for (const SidebarGroup &group : sidebarGroups)
        items.insert(items.end(), group.items.begin(), group.items.end());
    return items;
}

void SidebarView::setKind(Kind kind) {
    if (std::exchange(m_kind, kind) == kind)
        return;
    setFixedWidth(widthOf(kind));
    for (Label *heading : m_headings)
        heading->setVisible(kind == Kind::wide);
    for (Row *row : m_rows) {
        row->setToolTip(kind == Kind::wide ? QString() : row->text());
        row->update();
    }
}

void SidebarView::setSelection(std::optional<SidebarItem> item) {
    m_selection = item;
    for (Row *row : m_rows)
        row->setSelected(row->item() == item, item ? row->item() == item : row == m_rows.front());
}

std::size_t SidebarView::index() const {
    const auto found = std::ranges::find_if(m_rows, [this](const Row *row) { return row->item() == m_selection; });
    return found == m_rows.end() ? 0 : static_cast<std::size_t>(found - m_rows.begin());
}

void SidebarView::choose(std::size_t index) {
    Row *row = m_rows[index];
    const bool isOther = m_selection != row->item();
    setSelection(row->item()); // a click on the selected row would take its mark
    row->setFocus(Qt::TabFocusReason);
    m_pane->reveal(*row); // in a low window the keys go beyond what shows
    if (isOther)
        Q_EMIT selected(row->item());
}

bool SidebarView::takeKey(const QKeyEvent &event) {
    const std::size_t at = index();
    switch (event.key()) {
    case Qt::Key_Up:
        choose(at == 0 ? 0 : at - 1);
        return true;
    case Qt::Key_Down:
        choose(std::min(at + 1, m_rows.size() - 1));
        return true;
    case Qt::Key_Home:
        choose(0);
        return true;
    case Qt::Key_End:
        choose(m_rows.size() - 1);
        return true;
    default:
        return typeAhead(event);
    }
}

/// A first letter that is typed again goes on to the next page with it.
bool SidebarView::typeAhead(const QKeyEvent &event) {
    const bool hasChord = event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    if (hasChord || event.text().isEmpty() || !event.text().front().isPrint())
        return false;
    const bool isNewWord = event.timestamp() - m_typedAt > typingPauseMs;
    if (isNewWord && event.text() == QLatin1String(" "))
        return false; // presses the row
    m_typed = isNewWord ? event.text() : m_typed + event.text();
    m_typedAt = event.timestamp();
    const bool isOneLetter = m_typed.count(m_typed.front(), Qt::CaseInsensitive) == m_typed.size();
    const QString wanted = isOneLetter ? m_typed.left(1) : m_typed;
    const std::size_t from = index() + (isOneLetter ? 1 : 0);
    for (std::size_t step = 0; step < m_rows.size(); ++step) {
        const std::size_t at = (from + step) % m_rows.size();
        if (m_rows[at]->text().startsWith(wanted, Qt::CaseInsensitive)) {
            choose(at);
            break;
        }
    }
    return true;
}

void SidebarView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    painter.fillRect(rect(), over(theme.surface, theme.control));
    painter.fillRect(QRectF(QWidget::width() - 1, 0, 1, height()), theme.separator);
}

void SidebarView::resizeEvent(QResizeEvent *event) {
    m_pane->setGeometry(rect().adjusted(0, 0, -1, 0));
    QWidget::resizeEvent(event);
}

} // namespace tavrine
