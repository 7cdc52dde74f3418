#include "look/SearchField.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>

namespace tavrine::look {
namespace {

constexpr int framedHeight = 32;

} // namespace

SearchField::SearchField(const QString &placeholder, Style style, QWidget *parent)
    : QWidget(parent), m_style(style), m_edit(new QLineEdit(this)),
      m_clear(new Button(QStringLiteral("xmark.circle.fill"), QStringLiteral("Clear"), this)) {
    m_edit->setPlaceholderText(inDesktopWords(placeholder));
    m_edit->setAccessibleName(inDesktopWords(placeholder));
    m_edit->setFrame(false);
    m_edit->setAttribute(Qt::WA_MacShowFocusRect, false);
    m_edit->setContextMenuPolicy(Qt::DefaultContextMenu);
    m_edit->setFont(fontFor(style == Style::hero ? TextRole::search : TextRole::body));
    m_edit->installEventFilter(this);
    m_clear->setButtonSize(ButtonSize::small);
    m_clear->setFocusPolicy(Qt::NoFocus);
    m_clear->hide();
    setFocusProxy(m_edit);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_edit, &QLineEdit::textChanged, this, [this](const QString &now) {
        m_clear->setVisible(!now.isEmpty());
        place();
        Q_EMIT textChanged(now);
    });
    connect(m_clear, &QAbstractButton::clicked, this, [this] {
        m_edit->clear();
        focus();
    });
    if (Look *look = Look::current())
        connect(look, &Look::changed, this, &SearchField::recolour);
    recolour();
}

QString SearchField::text() const {
    return m_edit->text();
}
// The line edit would begin anew even with the same text: the caret at its end, nothing to undo, no letter under
// composition.
void SearchField::setText(const QString &text) {
    if (text != m_edit->text())
        m_edit->setText(text);
}
void SearchField::focus() {
    m_edit->setFocus(Qt::OtherFocusReason);
}

void SearchField::addTrailing(QWidget *widget) {
    widget->setParent(this);
    m_trailing = widget;
    m_trailing->installEventFilter(this);
    place();
}

QSize SearchField::sizeHint() const {
    return {320, m_style == Style::hero ? height::searchField : framedHeight};
}

void SearchField::recolour() {
    const Theme &theme = themeOf(this);
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Window, Qt::transparent);
    palette.setColor(QPalette::Text, theme.text);
    palette.setColor(QPalette::PlaceholderText, theme.placeholder);
    palette.setColor(QPalette::Highlight, theme.accent);
    palette.setColor(QPalette::HighlightedText, theme.onAccent);
    if (palette != m_edit->palette())
        m_edit->setPalette(palette);
    m_clear->setSymbolColour(theme.tertiaryText);
}

void SearchField::place() {
    const bool isHero = m_style == Style::hero;
    const int left = isHero ? space::large + 20 + space::medium : 10 + 16 + 6;
    int right = width() - (isHero ? space::medium : 4);
    if (m_trailing && !m_trailing->isHidden()) {
        const QSize size = m_trailing->sizeHint();
        m_trailing->setGeometry(QRect(QPoint(right - size.width(), (height() - size.height()) / 2), size));
        right -= size.width() + space::hair;
    }
    const QSize size = m_clear->sizeHint();
    m_clear->setGeometry(QRect(QPoint(right - size.width(), (height() - size.height()) / 2), size));
    if (!m_clear->isHidden())
        right -= size.width() + space::hair;
    const int tall = m_edit->sizeHint().height();
    m_edit->setGeometry(left, (height() - tall) / 2, right - left, tall);
}

void SearchField::resizeEvent(QResizeEvent *event) {
    place();
    QWidget::resizeEvent(event);
}

void SearchField::mousePressEvent(QMouseEvent *) {
    focus();
}

bool SearchField::event(QEvent *event) {
    if (event->type() == QEvent::Polish || event->type() == QEvent::ParentChange)
        recolour();
    return QWidget::event(event);
}

// The toolkit's own actions, in a menu of this house.
void SearchField::showMenu(const QPoint &place) {
    QMenu *menu = m_edit->createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    dress(*menu, this);
    menu->popup(place);
}

bool SearchField::eventFilter(QObject *object, QEvent *event) {
    if (object == m_edit && event->type() == QEvent::ContextMenu) {
        showMenu(static_cast<QContextMenuEvent *>(event)->globalPos());
        return true;
    }
    if (object == m_edit && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        update();
    if (object == m_trailing && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent))
        place();
    return QWidget::eventFilter(object, event);
}

void SearchField::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    if (m_style == Style::hero) {
        paintSymbol(painter, QRectF(space::large, 0, 20, height()), QStringLiteral("magnifyingglass"),
                    symbolsize::large, theme.secondaryText);
        return;
    }
    const QRectF body = rect();
    fillRounded(painter, body, radius::control, theme.field);
    strokeHairline(painter, body, radius::control, theme.outline);
    if (m_edit->hasFocus()) // inside: a field has its frame to paint it on
        paintFocusRing(painter, body.adjusted(3, 3, -3, -3), radius::control - 3, theme);
    paintSymbol(painter, QRectF(body.left() + 10, 0, 16, height()), QStringLiteral("magnifyingglass"),
                symbolsize::medium, theme.secondaryText);
}

} // namespace tavrine::look
