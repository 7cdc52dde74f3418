#include "look/ChoiceButton.h"

#include "base/DesktopWords.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QAccessibleActionInterface>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine::look {
namespace {

constexpr int arrowRoom = 24;

} // namespace

ChoiceButton::ChoiceButton(const QStringList &texts, QWidget *parent) : Control(parent) {
    for (const QString &text : texts)
        m_texts.append(inDesktopWords(text));
    connect(this, &QAbstractButton::clicked, this, &ChoiceButton::open);
    setCurrent(0);
}

void ChoiceButton::setCurrent(int index) {
    m_current = std::clamp(index, 0, int(m_texts.size()) - 1);
    setText(m_texts.at(m_current));
    setAccessibleDescription(m_texts.at(m_current));
    update();
}

QSize ChoiceButton::sizeHint() const {
    qreal wide = 0;
    for (const QString &text : m_texts)
        wide = std::max(wide, lineWidth(text, TextRole::body));
    return {int(std::ceil(wide)) + space::medium + arrowRoom, height::control};
}

void ChoiceButton::paint(QPainter &painter) {
    fillRounded(painter, rect(), radius::control, ground(theme().control));
    const QRectF words = QRectF(rect()).adjusted(space::medium, 0, -arrowRoom, 0);
    paintLine(painter, words, text(), TextRole::body, theme().text);
    paintSymbol(painter, QRectF(width() - arrowRoom, 0, arrowRoom - 4, height()),
                QStringLiteral("chevron.up.chevron.down"), symbolsize::small, theme().secondaryText);
}

QStringList ChoiceButton::actionNames() const {
    return {QAccessibleActionInterface::pressAction(), QAccessibleActionInterface::increaseAction(),
            QAccessibleActionInterface::decreaseAction()};
}

void ChoiceButton::act(const QString &name) {
    if (name == QAccessibleActionInterface::pressAction())
        click();
    else
        choose(m_current + (name == QAccessibleActionInterface::increaseAction() ? 1 : -1));
}

void ChoiceButton::choose(int index) {
    if (index < 0 || index >= m_texts.size() || index == m_current)
        return;
    setCurrent(index);
    Q_EMIT chosen(index);
}

void ChoiceButton::open() {
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    dress(*menu, this);
    for (int i = 0; i < m_texts.size(); ++i) {
        QString words = m_texts.at(i);
        words.replace(u'&', QStringLiteral("&&"));
        QAction *action = menu->addAction(words);
        action->setCheckable(true);
        action->setChecked(i == m_current);
        connect(action, &QAction::triggered, this, [this, i] { choose(i); });
        if (i == m_current)
            menu->setActiveAction(action);
    }
    menu->popup(mapToGlobal(QPoint(0, height() + space::hair)));
}

void ChoiceButton::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
        choose(m_current + (event->key() == Qt::Key_Up ? -1 : 1));
    else
        Control::keyPressEvent(event);
}

/// A page that scrolls under the pointer changes nothing on it.
void ChoiceButton::wheelEvent(QWheelEvent *event) {
    event->ignore();
}

} // namespace tavrine::look
