#include "shell/settings/MainAppView.h"

#include "base/DesktopWords.h"
#include "look/ApplicationIcon.h"
#include "look/EmptyState.h"
#include "look/Look.h"
#include "look/Tile.h"
#include "shell/settings/SidebarView.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QShortcut>
#include <QWindow>

namespace tavrine {
namespace {

/// Below it the titles of the pages would leave a page less room than its rows are made for: on a screen of 1024 pixels
/// on which a person wants twice the text.
constexpr int narrowWidth = 620;

} // namespace

MainAppView::MainAppView(NotificationCenter &center, MakePage makePage, AskToSave askToSave, QWidget *parent)
    : QWidget(parent), m_makePage(std::move(makePage)), m_askToSave(std::move(askToSave)),
      m_sidebar(new SidebarView(this)),
      m_toClipboard(center.addObserver(QStringLiteral("navigateToClipboardSettings"),
                                       [this](const Notification &) { setSelection(SidebarItem::clipboard); })),
      m_toLofi(center.addObserver(QStringLiteral("navigateToLofiSettings"),
                                  [this](const Notification &) { setSelection(SidebarItem::lofi); })) {
    setMinimumSize(smallestSize);
    connect(m_sidebar, &SidebarView::selected, this, [this](SidebarItem item) { setSelection(item); });
    addKeys();
    setSelection(SidebarItem::home);
}

MainAppView::~MainAppView() = default;

std::unique_ptr<QWidget> MainAppView::makeWindow(NotificationCenter &center, MakePage makePage, AskToSave askToSave) {
    auto window = std::make_unique<MainAppView>(center, std::move(makePage), std::move(askToSave));
    window->setWindowTitle(inDesktopWords(QLatin1String(windowTitle)));
    window->setWindowIcon(look::applicationIcon());
    window->setAttribute(Qt::WA_QuitOnClose, false);
    window->resize(firstSize);
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        QRect frame(QPoint(), firstSize);
        frame.moveCenter(screen->availableGeometry().center());
        window->move(frame.topLeft());
    }
    return window;
}

/// Ctrl+1 and so on are the first nine pages from the top; Ctrl+comma is the settings key of other programs.
void MainAppView::addKeys() {
    const auto key = [this](const QKeySequence &sequence, auto work) {
        connect(new QShortcut(sequence, this), &QShortcut::activated, this, work);
    };
    key(Qt::CTRL | Qt::Key_W, [this] { window()->close(); });
    key(Qt::CTRL | Qt::Key_Comma, [this] { setSelection(SidebarItem::general); });
    const std::vector<SidebarItem> order = SidebarView::order();
    constexpr int keys = 9;
    for (int number = 0; number < keys; ++number)
        key(QKeySequence(int(Qt::CTRL) | (Qt::Key_1 + number)),
            [this, item = order[static_cast<std::size_t>(number)]] { setSelection(item); });
}

void MainAppView::setSelection(std::optional<SidebarItem> item) {
    if (m_isAsking || (item == m_selection && m_page))
        return;
    if (!settleDrafts())
        return;
    m_selection = item;
    m_sidebar->setSelection(item);
    if (m_page) {
        m_page->hide();
        m_page->deleteLater(); // the wish to leave may come from the page
    }
    m_page = item ? m_makePage(*item).release() : nullptr;
    if (!m_page)
        m_page = new look::EmptyState(QStringLiteral("slider.horizontal.3"), QStringLiteral("Select a feature"));
    m_page->setParent(this);
    place();
    m_page->show();
    m_page->lower();    // what lies over the window stays over it
    m_sidebar->lower(); // and comes first to a screen reader
}

/// Asks for what the page holds. False when the page has to stay.
bool MainAppView::settleDrafts() {
    std::vector<look::Draft *> unsaved;
    if (m_page && !m_isAsking) {
        for (QWidget *widget : QList<QWidget *>{m_page} + m_page->findChildren<QWidget *>()) {
            if (auto *draft = dynamic_cast<look::Draft *>(widget); draft && draft->isUnsaved())
                unsaved.push_back(draft);
        }
    }
    for (look::Draft *draft : unsaved) {
        const QPointer self(this);
        m_isAsking = true;
        const bool isWanted = m_askToSave(draft->question());
        if (!self)
            return false;
        m_isAsking = false;
        if (isWanted && !draft->saveDraft())
            return false;
    }
    return true;
}

void MainAppView::closeEvent(QCloseEvent *event) {
    if (settleDrafts())
        QWidget::closeEvent(event);
    else
        event->ignore();
}

void MainAppView::place() {
    const bool isNarrow = width() < narrowWidth;
    m_sidebar->setKind(isNarrow ? SidebarView::Kind::narrow : SidebarView::Kind::wide);
    const int left = SidebarView::widthOf(m_sidebar->kind());
    m_sidebar->setGeometry(0, 0, left, height());
    if (m_page)
        m_page->setGeometry(left, 0, width() - left, height());
}

void MainAppView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), look::themeOf(this).surface);
}

void MainAppView::mousePressEvent(QMouseEvent *event) {
    for (const QWidget *at = childAt(event->pos()); at && at != this; at = at->parentWidget()) {
        if (qobject_cast<const look::Card *>(at) || qobject_cast<const QAbstractButton *>(at))
            return;
    }
    if (event->button() == Qt::LeftButton && windowHandle())
        windowHandle()->startSystemMove();
}

void MainAppView::resizeEvent(QResizeEvent *event) {
    place();
    QWidget::resizeEvent(event);
}

} // namespace tavrine
