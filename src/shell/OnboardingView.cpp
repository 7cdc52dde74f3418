#include "shell/OnboardingView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Text.h"
#include "shell/OnboardingFlow.h"
#include "shell/OnboardingPagesView.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

namespace tavrine {
namespace {

constexpr int hairline = 1; // round the window, which nothing may cover
constexpr int titleHeight = 32;
constexpr float quietTitle = 0.55F; // white's opacity
constexpr float quietEdge = 0.12F;
constexpr int dotsHeight = 44;
constexpr double dotSide = 7;
constexpr double capsuleWidth = 20;
constexpr double dotGap = 7;
constexpr double restingDot = 0.22; // white's opacity
const look::Spring dotSpring = look::Spring::responding(0.35, 0.7);
constexpr Seconds turnLength{0.35};
constexpr double turnWay = 0.35; // of the width: the pages part while they fade

// The page alone: the ground stays where it is while pages change places.
QPixmap pictureOf(QWidget &page) {
    QPixmap picture(page.size() * page.devicePixelRatioF());
    picture.setDevicePixelRatio(page.devicePixelRatioF());
    picture.fill(Qt::transparent);
    page.render(&picture, {}, {}, QWidget::DrawChildren);
    return picture;
}

/// The window's name, where its title bar would be.
void paintTitle(QPainter &painter, int width) {
    QColor quiet(Qt::white);
    quiet.setAlphaF(quietTitle);
    look::paintLine(painter, QRectF(0, 0, width, titleHeight),
                    inDesktopWords(QLatin1String(OnboardingFlow::windowTitle)), look::TextRole::captionStrong, quiet,
                    Qt::AlignHCenter);
}

/// The pictures of the page that leaves and the page that comes.
class TurningPages final : public QWidget {
public:
    TurningPages(const QPixmap &from, const QPixmap &to, double direction, QWidget *parent)
        : QWidget(parent), m_from(from), m_to(to), m_direction(direction) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    void show(double part) {
        m_part = part;
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        painter.setClipRect(rect());
        // As much of the window as the pages take: its upper corners are round.
        look::fillRounded(painter, QRectF(rect()).adjusted(0, 0, 0, look::radius::panel),
                          look::radius::panel - hairline, onboardingPages::ground);
        painter.translate(-hairline, -hairline); // the pictures are those of the whole page
        paintTitle(painter, width() + 2 * hairline);
        const double way = m_direction * width() * turnWay;
        painter.setOpacity(1 - m_part);
        painter.drawPixmap(QPointF(-way * m_part, 0), m_from);
        painter.setOpacity(m_part);
        painter.drawPixmap(QPointF(way * (1 - m_part), 0), m_to);
    }

private:
    QPixmap m_from;
    QPixmap m_to;
    double m_direction;
    double m_part = 0;
};

} // namespace

OnboardingView::OnboardingView(const OnboardingModel::Ports &ports, std::function<void()> onClose, QWidget *parent)
    : PanelSurface(look::radius::panel, parent), m_model(ports, std::move(onClose)) {
    if (auto *look = look::Look::current())
        look->setTheme(this, onboardingPages::theme());
    for (const auto &page :
         {onboardingPages::makeWelcomeScreen(this),
          onboardingPages::makeFeaturesScreen(this, [this] { m_model.exploreFeatures(); }),
          onboardingPages::makePermissionsScreen(this, m_model.permissionChecker(), m_model.shortcuts(),
                                                 [this] { return m_model.wanting(); })}) {
        page.widget->setVisible(m_pages.empty());
        m_pages.push_back(page.widget);
        m_forward.push_back(page.forward);
        connect(page.forward, &QAbstractButton::clicked, &m_model, &OnboardingModel::goForward);
    }
    setFixedSize(sizeHint());
    connect(&m_model, &OnboardingModel::currentPageChanged, this, &OnboardingView::showPage);
}

OnboardingView::~OnboardingView() = default;

std::unique_ptr<QWidget> OnboardingView::makeWindow(const OnboardingModel::Ports &ports,
                                                    std::function<void()> onClose) {
    auto window = std::make_unique<OnboardingView>(ports, std::move(onClose));
    // Some window managers draw a close button into every frame, so there is no frame.
    window->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    window->setWindowTitle(inDesktopWords(QLatin1String(OnboardingFlow::windowTitle)));
    window->setAttribute(Qt::WA_QuitOnClose, false);
    window->setAttribute(Qt::WA_TranslucentBackground);
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        QRect place(QPoint(), window->size());
        place.moveCenter(screen->availableGeometry().center());
        window->move(place.topLeft());
    }
    return window;
}

QSize OnboardingView::sizeHint() const {
    return {OnboardingFlow::windowWidth, OnboardingFlow::windowHeight};
}

/// A low screen has no room for all of it.
void OnboardingView::resizeEvent(QResizeEvent *event) {
    for (QWidget *page : m_pages)
        page->setGeometry(pageRect());
    PanelSurface::resizeEvent(event);
}

QRect OnboardingView::pageRect() const {
    return rect().adjusted(0, 0, 0, -dotsHeight);
}

void OnboardingView::showPage() {
    QWidget *leaving = nullptr;
    for (QWidget *page : m_pages) {
        if (!page->isHidden())
            leaving = page;
    }
    const auto index = size_t(m_model.currentPage());
    const QPixmap from = leaving && isVisible() ? pictureOf(*leaving) : QPixmap();
    // Who goes by the keyboard goes on by it.
    const auto *focused = qobject_cast<look::Control *>(focusWidget());
    const bool hadKeyboard = leaving && focused && leaving->isAncestorOf(focused);
    const bool showsFocus = hadKeyboard && focused->showsFocus();
    m_pages[index]->show();
    if (hadKeyboard)
        m_forward[index]->setFocus(showsFocus ? Qt::TabFocusReason : Qt::OtherFocusReason);
    if (leaving)
        leaving->hide();
    if (!from.isNull())
        turnPages(from);
    moveDots();
}

void OnboardingView::turnPages(const QPixmap &from) {
    m_turn.stop();
    delete m_turning;
    auto *turning = new TurningPages(from, pictureOf(*m_pages[size_t(m_model.currentPage())]),
                                     m_model.goingForward() ? 1 : -1, this);
    m_turning = turning;
    turning->setGeometry(pageRect().adjusted(hairline, hairline, -hairline, 0));
    turning->QWidget::show();
    m_turn.start(
        turnLength, look::easeInOut, [turning](double part) { turning->show(part); },
        [this] {
            delete m_turning;
            m_turning = nullptr;
        });
}

void OnboardingView::moveDots() {
    const auto from = m_dots;
    const auto current = size_t(m_model.currentPage());
    m_dotMotion.start(dotSpring, [this, from, current](double part) {
        for (size_t i = 0; i < m_dots.size(); ++i)
            m_dots.at(i) = from.at(i) + ((i == current ? 1 : 0) - from.at(i)) * part;
        update(QRect(0, height() - dotsHeight, width(), dotsHeight));
    });
}

void OnboardingView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    if (!look::Look::composites()) // the mask cuts pixels whole, so none may be half covered
        painter.fillRect(rect(), onboardingPages::ground);
    look::fillRounded(painter, rect(), look::radius::panel, onboardingPages::ground);
    QColor edge(Qt::white);
    edge.setAlphaF(quietEdge);
    look::strokeHairline(painter, rect(), look::radius::panel, edge);
    paintTitle(painter, this->width());
    double width = dotGap * double(m_dots.size() - 1);
    for (const double part : m_dots)
        width += dotSide + (capsuleWidth - dotSide) * part;
    double x = (this->width() - width) / 2;
    QColor resting(Qt::white);
    resting.setAlphaF(float(restingDot));
    for (const double part : m_dots) {
        const double wide = dotSide + (capsuleWidth - dotSide) * part;
        look::fillRounded(painter, QRectF(x, height() - dotsHeight / 2.0 - dotSide / 2, wide, dotSide), dotSide / 2,
                          look::mixed(resting, onboardingPages::accent, std::clamp(part, 0.0, 1.0)));
        x += wide + dotGap;
    }
}

void OnboardingView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        m_model.goForward(); // the view may be gone
        return;
    }
    QWidget::keyPressEvent(event);
}

void OnboardingView::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

} // namespace tavrine
