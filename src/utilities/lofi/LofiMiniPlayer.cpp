#include "utilities/lofi/LofiMiniPlayer.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "utilities/lofi/LofiPlayerModel.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QRadialGradient>

#include <algorithm>

namespace tavrine {
namespace {

constexpr qreal plateSide = 40;
constexpr int buttonSide = 36;
constexpr qreal glowReach = 16;
constexpr double glowStrength = 0.55;
constexpr qreal progressHeight = 3;
constexpr Seconds glowTime{0.35};

QRectF plateOf(const QRectF &card) {
    return {card.left() + look::space::medium, card.center().y() - plateSide / 2, plateSide, plateSide};
}

/// Light of the accent's colour behind the plate.
void paintGlow(QPainter &painter, const QRectF &plate, const QColor &colour, double part) {
    if (part <= 0)
        return;
    QRadialGradient light(plate.center(), plateSide / 2 + glowReach);
    QColor middle = colour;
    middle.setAlphaF(static_cast<float>(glowStrength * part));
    QColor rim = colour;
    rim.setAlphaF(0);
    constexpr double plateEdge = plateSide / 2 / (plateSide / 2 + glowReach);
    light.setColorAt(plateEdge * 0.8, middle);
    light.setColorAt(1, rim);
    painter.setPen(Qt::NoPen);
    painter.setBrush(light);
    painter.drawEllipse(plate.center(), plateSide / 2 + glowReach, plateSide / 2 + glowReach);
}

} // namespace

class LofiMiniPlayer::PlayButton final : public look::Control {
public:
    PlayButton(QWidget *parent, std::function<void()> approached)
        : Control(parent), m_approached(std::move(approached)) {
        resize(buttonSide, buttonSide);
    }

    void setSymbol(const QString &symbol) {
        m_symbol = symbol;
        update();
    }

protected:
    void paint(QPainter &painter) override {
        look::fillRounded(painter, rect(), cornerRadius(), ground(theme().accent));
        look::paintSymbol(painter, rect(), m_symbol, look::symbolsize::medium, theme().onAccent);
    }
    [[nodiscard]] qreal cornerRadius() const override { return buttonSide / 2.0; }
    void enterEvent(QEnterEvent *event) override {
        Control::enterEvent(event);
        m_approached();
    }
    void focusInEvent(QFocusEvent *event) override {
        Control::focusInEvent(event);
        m_approached();
    }

private:
    std::function<void()> m_approached; ///< by the pointer or the keyboard
    QString m_symbol;
};

LofiMiniPlayer::LofiMiniPlayer(std::unique_ptr<LofiPlayerModel> model, QWidget *parent)
    : QWidget(parent), m_model(std::move(model)), m_button(new PlayButton(this, [this] { m_model->expectToggle(); })),
      m_glowPart(m_model->isGlowing() ? 1 : 0) {
    setFixedHeight(cardHeight);
    look::setRole(*this, QAccessible::Grouping);
    setMinimumWidth(cardWidth);
    connect(m_button, &QAbstractButton::clicked, m_model.get(), [this] { m_model->toggle(); });
    connect(m_model.get(), &LofiPlayerModel::changed, this, [this] { refresh(); });
    refresh();
}

LofiMiniPlayer::~LofiMiniPlayer() = default;

void LofiMiniPlayer::refresh() {
    setAccessibleName(m_model->title());
    setAccessibleDescription(inDesktopWords(m_model->statusLine()));
    setToolTip(m_model->title());
    m_button->setSymbol(m_model->icon());
    m_button->setToolTip(m_model->playActionName());
    m_button->setAccessibleDescription(m_model->title() + QStringLiteral(", ") +
                                       inDesktopWords(m_model->statusLine()));
    const double goal = m_model->isGlowing() ? 1 : 0;
    if (goal == m_glowPart) { // a card that comes into sight moves nothing
        m_glow.stop();
        update();
        return;
    }
    m_glow.start(glowTime, look::easeInOut, [this, from = m_glowPart, goal](double value) {
        m_glowPart = from + (goal - from) * value;
        update();
    });
    update();
}

void LofiMiniPlayer::resizeEvent(QResizeEvent *) {
    m_button->move(width() - look::space::medium - buttonSide, (height() - buttonSide) / 2);
}

void LofiMiniPlayer::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    const QRectF card = rect();
    look::paintCard(painter, card, theme);
    const QRectF plate = plateOf(card);
    painter.save();
    painter.setClipRect(card);
    paintGlow(painter, plate, theme.accent, m_glowPart);
    painter.restore();
    look::paintSymbolPlate(painter, plate, QStringLiteral("headphones"),
                           look::mixed(look::over(theme.elevated, theme.control), theme.accent, m_glowPart),
                           look::mixed(theme.text, theme.onAccent, m_glowPart));
    const qreal left = plate.right() + look::space::medium;
    const qreal wide = m_button->x() - look::space::medium - left;
    look::paintLine(painter, QRectF(left, card.center().y() - 19, wide, 18), m_model->title(),
                    look::TextRole::bodyStrong, theme.text);
    look::paintLine(painter, QRectF(left, card.center().y() + 2, wide, 16), inDesktopWords(m_model->statusLine()),
                    look::TextRole::caption, m_model->isGlowing() ? theme.accentText : theme.secondaryText);
    if (m_model->isDownloading()) {
        const QRectF track(left, card.bottom() - progressHeight - 6, wide, progressHeight);
        look::fillRounded(painter, track, progressHeight / 2, theme.control);
        QRectF done = track;
        done.setWidth(std::max(progressHeight, wide * m_model->downloadProgress()));
        look::fillRounded(painter, done, progressHeight / 2, theme.accent);
    }
}

/// "Tap to play" is said of the whole card.
void LofiMiniPlayer::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        m_model->toggle();
}

void LofiMiniPlayer::contextMenuEvent(QContextMenuEvent *event) {
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    look::dress(*menu, this);
    const auto commands = m_model->commands();
    for (const LofiPlayerModel::Command command : commands)
        menu->addAction(inDesktopWords(LofiPlayerModel::titleOf(command)), m_model.get(),
                        [this, command] { m_model->perform(command); });
    menu->popup(event->globalPos());
    event->accept();
}

} // namespace tavrine
