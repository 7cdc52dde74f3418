#include "look/ModalAlerts.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/FittingWindow.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/PanelSurface.h"
#include "look/Text.h"
#include "look/TypedText.h"
#include "look/WrappedText.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr int alertMargin = 20;
constexpr int narrowestButton = 84;
constexpr qreal widestWords = 440; // some seventy letters, beyond which the eye loses the next line

/// The ground of an area for text; the editor stands within, clear.
class TextField final : public QWidget {
public:
    explicit TextField(const QSize &size) { setFixedSize(size); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        fillRounded(painter, rect(), radius::control, theme.field);
        strokeHairline(painter, rect(), radius::control, theme.outline);
        if (focusWidget() && focusWidget()->hasFocus())
            paintFocusRing(painter, QRectF(rect()).adjusted(3, 3, -3, -3), radius::control - 3, theme);
    }
};

/// As wide as the longest line of them, as far as that is good to read and the screen has room.
int widthOfWords(const Alert &alert, int room) {
    qreal longest = lineWidth(inDesktopWords(alert.message), TextRole::heading);
    for (const QString &line : inDesktopWords(alert.information).split(u'\n'))
        longest = std::max(longest, lineWidth(line, TextRole::body));
    return std::min(room, int(std::ceil(std::min(longest, widestWords))) + 1);
}

WrappedText *makeWords(const QString &text, TextRole role, WrappedText::Tone tone, int width) {
    auto *words = new WrappedText({}, text, tone);
    words->setRole(role);
    words->setFixedWidth(width);
    return words;
}

/// The window that asks: the one with the keyboard, else one that could have it.
QWidget *askingWindow() {
    if (QWidget *active = QApplication::activeWindow())
        return active;
    const QWidgetList all = QApplication::topLevelWidgets();
    const auto found = std::find_if(all.begin(), all.end(), [](const QWidget *widget) {
        return widget->isVisible() && widget->windowType() == Qt::Window &&
               !widget->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus);
    });
    return found == all.end() ? nullptr : *found;
}

/// Asks before the window that the question came from, and gives it the keyboard back. True for the first button.
bool ask(AlertWindow &window) {
    const QPointer<QWidget> before = askingWindow();
    if (before) {
        // Without a parent the toolkit names none of our windows, and a manager puts the question where it likes.
        window.create();
        window.windowHandle()->setTransientParent(before->windowHandle());
    }
    const bool isFirst = window.exec() == QDialog::Accepted;
    if (before && before->isVisible())
        before->activateWindow();
    return isFirst;
}

} // namespace

AlertWindow::AlertWindow(const Alert &alert, const QSize &textArea, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setAttribute(Qt::WA_TranslucentBackground, Look::composites());
    setModal(true);
    fitToScreen(*this);
    setWindowTitle(inDesktopWords(alert.message));
    setAccessibleDescription(inDesktopWords(alert.information));

    auto *window = new QVBoxLayout(this);
    window->setContentsMargins(0, 0, 0, 0);
    window->setSizeConstraint(QLayout::SetFixedSize);
    auto *surface = new PanelSurface;
    window->addWidget(surface);
    auto *column = new QVBoxLayout(surface);
    column->setContentsMargins(alertMargin, alertMargin, alertMargin, alertMargin);
    column->setSpacing(0);
    const int width = widthOfWords(alert, screen()->availableGeometry().width() - 2 * alertMargin);
    column->addWidget(makeWords(alert.message, TextRole::heading, WrappedText::Tone::plain, width), 0, Qt::AlignLeft);
    column->addSpacing(space::tiny);
    column->addWidget(makeWords(alert.information, TextRole::body, WrappedText::Tone::secondary, width), 0,
                      Qt::AlignLeft);
    column->addSpacing(space::large);

    if (!textArea.isEmpty()) {
        m_field = new TextField(textArea);
        auto *inner = new QVBoxLayout(m_field);
        inner->setContentsMargins(space::tiny, space::tiny, space::tiny, space::tiny);
        m_text = new QPlainTextEdit;
        m_text->setFrameShape(QFrame::NoFrame);
        m_text->setTabChangesFocus(true);
        m_text->setFont(fontFor(TextRole::body));
        m_text->setAccessibleName(inDesktopWords(alert.message));
        m_text->installEventFilter(this);
        inner->addWidget(m_text);
        column->addWidget(m_field);
        column->addSpacing(space::large);
        recolour();
        if (Look *look = Look::current())
            connect(look, &Look::changed, this, &AlertWindow::recolour);
    }

    auto *row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addStretch();
    for (qsizetype i = alert.buttons.size() - 1; i >= 0; --i) {
        const bool isFirst = i == 0;
        auto *button = new Button(alert.buttons.at(i), isFirst ? ButtonStyle::prominent : ButtonStyle::plain);
        button->setMinimumWidth(narrowestButton);
        connect(button, &QAbstractButton::clicked, this, [this, isFirst] { isFirst ? accept() : reject(); });
        row->addWidget(button);
    }
    column->addLayout(row);
}

void AlertWindow::recolour() {
    const Theme &theme = themeOf(this);
    QPalette palette = paletteOf(theme);
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Window, Qt::transparent);
    m_text->setPalette(palette);
}

void AlertWindow::keyPressEvent(QKeyEvent *event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !m_text)
        accept();
    else
        QDialog::keyPressEvent(event); // Escape
}

bool AlertWindow::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        m_field->update();
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (isReturn && (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))) {
            accept();
            return true;
        }
    }
    return QDialog::eventFilter(object, event);
}

void AlertWindow::showEvent(QShowEvent *event) {
    adjustSize();
    const QWindow *asking = windowHandle()->transientParent();
    const QRect around = asking ? asking->frameGeometry() : screen()->availableGeometry();
    QRect place(QPoint(), size());
    place.moveCenter(around.center());
    move(place.topLeft());
    QDialog::showEvent(event);
    raise();
    activateWindow(); // without a window manager nobody else gives it the keyboard
    if (m_text)
        m_text->setFocus(Qt::OtherFocusReason);
}

bool ModalAlerts::runModal(const Alert &alert) {
    AlertWindow window(alert, {});
    return ask(window);
}

std::optional<QString> ModalAlerts::runModalForText(const Alert &alert, int width, int height) {
    AlertWindow window(alert, {width, height});
    if (!ask(window))
        return std::nullopt;
    return asTyped(window.textEdit()->document()->toRawText());
}

} // namespace tavrine::look
