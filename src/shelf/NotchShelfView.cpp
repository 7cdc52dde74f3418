#include "shelf/NotchShelfView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "shelf/NotchGeometry.h"
#include "shelf/NotchShape.h"
#include "shelf/NotchViewModel.h"
#include "shelf/ShelfItemDragSourceView.h"
#include "shelf/ShelfRowView.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrine {
namespace {

constexpr int sidePadding = 20; ///< on each side: the forty points beside the slots
constexpr int headerTop = 10;
constexpr int headerHeight = 28;
constexpr int rowTop = headerTop + headerHeight + 12;
constexpr int rowBottom = 16;
constexpr double pulseTime = 0.8; ///< seconds there, and as many back
constexpr double pulseReach = 0.14;
const QColor ink(255, 255, 255, 235);

/// The view's own spring.
look::Spring smoothSpring() {
    return look::Spring::responding(0.35, 0.8);
}

/// Of a drag that comes over the shelf's window or leaves it.
look::Spring dragSpring() {
    return look::Spring::responding(0.3, 0.7);
}

} // namespace

QString itemCountText(qsizetype count) {
    return count == 1 ? QStringLiteral("1 item") : QStringLiteral("%1 items").arg(count);
}

/// The row with its header.
class NotchShelfView::Pane final : public QWidget {
public:
    Pane(NotchViewModel &viewModel, const ShelfPorts &ports, QWidget *parent)
        : QWidget(parent), m_viewModel(&viewModel), m_count(new Count(viewModel, this)),
          m_row(new ShelfRowView(viewModel, ports, this)),
          m_clear(new look::Button(QStringLiteral("Clear All"), look::ButtonStyle::plain, this)) {
        m_clear->setButtonSize(look::ButtonSize::small);
        connect(m_clear, &QAbstractButton::clicked, this, [this] {
            if (m_viewModel)
                m_viewModel->clearAll();
        });
        setTabOrder(m_row, m_clear);
    }
    [[nodiscard]] ShelfRowView *row() const { return m_row; }
    void refresh() { m_count->refresh(); }

protected:
    void resizeEvent(QResizeEvent *) override {
        const QSize button = m_clear->sizeHint();
        const int left = sidePadding + 4;
        m_clear->setGeometry(width() - left - button.width(), headerTop + (headerHeight - button.height()) / 2,
                             button.width(), button.height());
        m_count->setGeometry(left, headerTop, std::max(0, m_clear->x() - left - look::space::small), headerHeight);
        m_row->setGeometry(sidePadding, rowTop, width() - 2 * sidePadding, height() - rowTop - rowBottom);
    }

private:
    class Count final : public QWidget {
    public:
        Count(NotchViewModel &viewModel, QWidget *parent) : QWidget(parent), m_viewModel(&viewModel) {
            look::setRole(*this, QAccessible::StaticText);
        }
        void refresh() {
            if (m_viewModel)
                m_text = inDesktopWords(itemCountText(m_viewModel->items().size()));
            setAccessibleName(m_text);
            update();
        }

    protected:
        void paintEvent(QPaintEvent *) override {
            QPainter painter(this);
            look::preparePainter(painter);
            look::paintSymbol(painter, QRectF(0, 0, look::symbolsize::medium, height()), QStringLiteral("tray.fill"),
                              look::symbolsize::medium, ink);
            const double left = look::symbolsize::medium + look::space::small;
            look::paintLine(painter, QRectF(left, 0, width() - left, height()), m_text, look::TextRole::bodyStrong,
                            ink);
        }

    private:
        QPointer<NotchViewModel> m_viewModel;
        QString m_text;
    };

    QPointer<NotchViewModel> m_viewModel;
    Count *m_count;
    ShelfRowView *m_row;
    look::Button *m_clear;
};

NotchShelfView::NotchShelfView(NotchViewModel &viewModel, const ShelfPorts &ports, std::function<void()> dismiss,
                               QWidget *parent)
    : QWidget(parent), m_viewModel(&viewModel), m_dismiss(std::move(dismiss)), m_ports(ports) {
    setAccessibleName(inDesktopWords(QStringLiteral("Notch Shelf")));
    if (look::Look *look = look::Look::current())
        connect(look, &look::Look::changed, this, &NotchShelfView::recolour);
    recolour();
    const auto follow = [this] { this->follow(smoothSpring()); };
    for (const auto signal : {&NotchViewModel::isShelfItemDragActiveChanged, &NotchViewModel::isHoveringChanged})
        connect(&viewModel, signal, this, follow);
    connect(&viewModel, &NotchViewModel::itemsChanged, this, follow);
    connect(&viewModel, &NotchViewModel::isDragTargetActiveChanged, this, [this] { this->follow(dragSpring()); });
    connect(&viewModel, &NotchViewModel::isFileDragActiveChanged, this, &NotchShelfView::followFileDrag);
    follow();
}

NotchShelfView::~NotchShelfView() = default;

NotchShelfView::Pane &NotchShelfView::pane() {
    if (!m_pane) {
        m_pane = new Pane(*m_viewModel, m_ports, this);
        m_pane->hide();
        setFocusProxy(m_pane->row());
        m_pane->refresh();
        place();
    }
    return *m_pane;
}

ShelfRowView &NotchShelfView::row() {
    return *pane().row();
}

/// The shelf is black on every desktop, and what stands on it is lit.
void NotchShelfView::recolour() {
    look::Look *look = look::Look::current();
    if (!look)
        return;
    look::Theme theme = look::darkTheme(look->theme().accent);
    theme.surface = theme.elevated = theme.field = Qt::black;
    if (theme != look::themeOf(this))
        look->setTheme(this, theme);
}

void NotchShelfView::follow(const look::Spring &spring) {
    if (takeContent())
        m_change.start(
            spring, [this](double part) { showPart(part); }, [this] { m_leaving = {}; });
}

void NotchShelfView::followFileDrag() {
    if (takeContent())
        m_change.start(
            notch::fileDragAnimationDuration, look::easeInOut, [this](double part) { showPart(part); },
            [this] { m_leaving = {}; });
}

/// True when something else is to be shown from now on.
bool NotchShelfView::takeContent() {
    if (!m_viewModel)
        return false;
    if (m_pane)
        m_pane->refresh();
    const Content content = m_viewModel->isDragTargetActive() ? Content::dropTarget
                            : m_viewModel->showsItems()       ? Content::items
                            : m_viewModel->showsDropHint()    ? Content::dropHint
                                                              : Content::nothing;
    if (content == m_content)
        return false;
    if (m_content == Content::items) {
        m_leaving = m_pane->grab();
        m_pane->hide();
    }
    m_before = std::exchange(m_content, content);
    if (content == Content::items) {
        pane().show();
        m_pane->raise();
    }
    pulse();
    showPart(0);
    return true;
}

void NotchShelfView::showPart(double part) {
    m_part = part;
    update();
}

/// As long as there is a prompt.
void NotchShelfView::pulse() {
    m_pulse.stop();
    m_pulseScale = 1;
    if (m_content != Content::dropHint && m_content != Content::dropTarget)
        return;
    m_pulse.run([this, time = 0.0](Seconds passed) mutable {
        time += passed.count();
        const double turn = std::fmod(time / pulseTime, 2.0);
        m_pulseScale = 1 + pulseReach * look::easeInOut.at(turn < 1 ? turn : 2 - turn);
        update();
        return true;
    });
}

void NotchShelfView::place() {
    if (m_pane)
        m_pane->setGeometry(0, height() - itemsHeight, width(), itemsHeight);
}

void NotchShelfView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    place();
}

void NotchShelfView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const QPainterPath shape = notchOutline(size());
    painter.fillPath(shape, Qt::black);
    painter.setClipPath(shape);
    const double part = std::clamp(m_part, 0.0, 1.0);
    if (part < 1 && m_before == Content::items && !m_leaving.isNull()) {
        painter.setOpacity(1 - part);
        painter.drawPixmap(QPointF((width() - m_leaving.deviceIndependentSize().width()) / 2, height() - itemsHeight),
                           m_leaving);
    }
    if (part < 1)
        paintPrompt(painter, m_before, 1 - part);
    paintPrompt(painter, m_content, part);
}

void NotchShelfView::paintPrompt(QPainter &painter, Content content, double part) {
    if (part <= 0 || (content != Content::dropHint && content != Content::dropTarget))
        return;
    const bool isHint = content == Content::dropHint;
    const QString symbol = isHint ? QStringLiteral("plus.circle.fill") : QStringLiteral("tray.and.arrow.down.fill");
    const QString words = inDesktopWords(isHint ? QStringLiteral("Drop here") : QStringLiteral("Drop files here"));
    const auto role = isHint ? look::TextRole::bodyStrong : look::TextRole::heading;
    const double side = isHint ? 20 : 24;
    const double room = width() - 2 * sidePadding;
    const double text = std::min(look::lineWidth(words, role) + 1, room - side - look::space::small);
    const QRectF area(0, height() - promptHeight, width(), promptHeight - 8);
    const double left = std::round((width() - side - look::space::small - text) / 2);
    painter.setOpacity(part);
    const QColor accent = look::themeOf(this).accentText;
    const QPointF middle(left + side / 2, area.center().y());
    painter.save();
    painter.translate(middle);
    painter.scale(m_pulseScale, m_pulseScale);
    look::paintSymbol(painter, QRectF(-side / 2, -side / 2, side, side), symbol, side, accent);
    painter.restore();
    look::paintLine(painter, QRectF(left + side + look::space::small, area.top(), text, area.height()), words, role,
                    ink);
    painter.setOpacity(1);
}

void NotchShelfView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape && m_dismiss)
        m_dismiss();
    else
        QWidget::keyPressEvent(event);
}

bool NotchShelfView::event(QEvent *event) {
    // The window got the keyboard, or lost it to another program. A drag out of it holds the keyboard too.
    if (event->type() == QEvent::WindowActivate && QGuiApplication::mouseButtons() == Qt::NoButton)
        setFocus(Qt::ShortcutFocusReason);
    else if (event->type() == QEvent::WindowDeactivate && m_dismiss)
        m_dismiss();
    return QWidget::event(event);
}

} // namespace tavrine
