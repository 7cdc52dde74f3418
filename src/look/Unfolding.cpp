#include "look/Unfolding.h"

#include <QGraphicsOpacityEffect>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrine::look {

Unfolding::Unfolding(QWidget *inside, Qt::Orientation direction) : m_inside(inside), m_direction(direction) {
    inside->setParent(this);
    setSizePolicy(inside->sizePolicy());
    hide();
}

void Unfolding::setShown(bool isShown) {
    if (begin(isShown))
        m_motion.start(
            length, defaultTiming, [this](double part) { step(part); }, [this] { end(); });
}

void Unfolding::setShown(bool isShown, const Spring &spring) {
    if (begin(isShown))
        m_motion.start(
            spring, [this](double part) { step(part); }, [this] { end(); });
}

void Unfolding::setShownAtOnce(bool isShown) {
    m_isShown = isShown;
    m_motion.stop();
    m_from = isShown ? 1 : 0;
    step(1);
    end();
}

bool Unfolding::begin(bool isShown) {
    if (isShown == m_isShown)
        return false;
    if (parentWidget() && !parentWidget()->isVisible()) {
        setShownAtOnce(isShown);
        return false;
    }
    m_isShown = isShown;
    m_from = m_part;
    setAttribute(Qt::WA_TransparentForMouseEvents, !isShown);
    m_fade = new QGraphicsOpacityEffect(m_inside);
    m_inside->setGraphicsEffect(m_fade); // in place of one that is on its way
    step(0);
    show();
    return true;
}

void Unfolding::step(double part) {
    m_part = m_from + ((m_isShown ? 1 : 0) - m_from) * part;
    if (m_fade)
        m_fade->setOpacity(std::clamp(m_part, 0.0, 1.0));
    place();
    updateGeometry();
    Q_EMIT moved();
}

void Unfolding::end() {
    m_fade = nullptr;
    m_inside->setGraphicsEffect(nullptr);
    place();
    setAttribute(Qt::WA_TransparentForMouseEvents, false);
    setVisible(m_isShown);
}

int Unfolding::wholeHeight(int width) const {
    const int wanted = m_inside->hasHeightForWidth() ? m_inside->heightForWidth(width) : m_inside->sizeHint().height();
    return std::clamp(wanted, m_inside->minimumHeight(), m_inside->maximumHeight());
}

QSize Unfolding::sizeHint() const {
    const QSize whole = m_inside->sizeHint();
    if (m_direction == Qt::Horizontal)
        return {int(std::lround(whole.width() * m_part)), whole.height()};
    return {whole.width(), heightForWidth(whole.width())};
}

QSize Unfolding::minimumSizeHint() const {
    const QSize whole = m_inside->minimumSizeHint();
    if (m_direction == Qt::Horizontal)
        return {int(std::lround(whole.width() * m_part)), whole.height()};
    const int least = std::clamp(whole.height(), m_inside->minimumHeight(), m_inside->maximumHeight());
    return {whole.width(), int(std::lround(least * m_part))};
}

bool Unfolding::hasHeightForWidth() const {
    return m_direction == Qt::Vertical;
}

int Unfolding::heightForWidth(int width) const {
    return int(std::lround(wholeHeight(width) * m_part));
}

/// It hangs from the edge that moves. What has less room than it wants is squeezed only when it has come to rest.
void Unfolding::place() {
    QRect whole = rect();
    if (m_fade && m_direction == Qt::Horizontal)
        whole.setWidth(m_inside->sizeHint().width());
    else if (m_fade)
        whole.setTop(height() - wholeHeight(width()));
    m_inside->setGeometry(whole);
}

/// It has no layout that would hand on what its widget asks for.
bool Unfolding::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
        place();
        Q_EMIT moved();
    }
    return QWidget::event(event);
}

void Unfolding::resizeEvent(QResizeEvent *event) {
    place();
    QWidget::resizeEvent(event);
}

} // namespace tavrine::look
