#include "shell/settings/ExcludedAppsView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/MenuStyle.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/WrappedText.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {

using namespace look;

namespace {

constexpr int rowHeight = 48;
constexpr int programIconSide = 28;
constexpr int footHeight = 48;

} // namespace

class ExcludedAppsView::Row final : public QWidget {
public:
    Row(const ExcludedApp &app, ClipboardSettingsModel &model) : m_app(app), m_model(model) {
        setFixedHeight(rowHeight);
        setAccessibleName(app.displayName);
        setAccessibleDescription(app.bundleID);
        setToolTip(app.bundleID);
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(space::medium, 0, space::medium, 0);
        row->addStretch();
        auto *remove = new Button(QStringLiteral("minus.circle.fill"), QStringLiteral("Remove"));
        remove->setAccessibleDescription(app.displayName);
        row->addWidget(remove);
        connect(remove, &QAbstractButton::clicked, this, [&model, id = app.id] { model.include(id); });
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const Theme &theme = themeOf(this);
        const QRectF place(space::medium, (height() - programIconSide) / 2.0, programIconSide, programIconSide);
        if (m_icon.isNull())
            m_icon = m_model.icon(m_app.bundleID, qRound(programIconSide * devicePixelRatioF()));
        if (m_icon.isNull())
            paintSymbolPlate(painter, place, QStringLiteral("square.grid.2x2.fill"), theme.control, theme.text);
        else
            painter.drawImage(place, m_icon);
        const qreal left = place.right() + space::medium;
        paintLine(painter, QRectF(left, 0, width() - left - 60, height()),
                  m_app.displayName.isEmpty() ? m_app.bundleID : m_app.displayName, TextRole::body, theme.text);
    }

private:
    ExcludedApp m_app;
    ClipboardSettingsModel &m_model;
    QImage m_icon;
};

ExcludedAppsView::ExcludedAppsView(ClipboardSettingsModel &model, QWidget *parent)
    : Card(parent), m_model(model), m_rows(new QWidget), m_none(new QWidget),
      m_add(new Button(QStringLiteral("Add Application…"))) {
    auto *none = new QVBoxLayout(m_none);
    none->setContentsMargins(space::medium, space::large, space::medium, space::large);
    none->addWidget(new WrappedText({},
                                    QStringLiteral("Copies are recorded from every application but password managers."),
                                    WrappedText::Tone::secondary));
    add(m_none);
    auto *rows = new QVBoxLayout(m_rows);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    add(m_rows);
    auto *foot = new QWidget;
    foot->setFixedHeight(footHeight);
    auto *row = new QHBoxLayout(foot);
    row->setContentsMargins(space::medium, 0, space::medium, 0);
    m_add->setButtonSize(ButtonSize::small);
    m_add->setSymbol(QStringLiteral("plus"));
    row->addWidget(m_add);
    row->addStretch();
    add(foot);
    connect(m_add, &QAbstractButton::clicked, this, &ExcludedAppsView::showMenu);
    connect(&model, &ClipboardSettingsModel::excludedAppsChanged, this, &ExcludedAppsView::refresh);
    refresh();
}

ExcludedAppsView::~ExcludedAppsView() = default;

void ExcludedAppsView::refresh() {
    const bool hadKeyboard = m_rows->isAncestorOf(focusWidget());
    while (QLayoutItem *item = m_rows->layout()->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // the press that removes a row comes from it
        delete item;
    }
    for (const ExcludedApp &app : m_model.excludedApps())
        m_rows->layout()->addWidget(new Row(app, m_model));
    const bool isEmpty = m_model.excludedApps().empty();
    m_rows->setVisible(!isEmpty);
    m_none->setVisible(isEmpty);
    if (hadKeyboard)
        m_add->setFocus(Qt::TabFocusReason);
    update();
}

void ExcludedAppsView::fill(QMenu &menu) {
    for (const InstalledApplication &application : m_model.candidates()) {
        QString title = application.localizedName;
        title.replace(u'&', QStringLiteral("&&"));
        const QImage icon = m_model.icon(application.bundleIdentifier, 16 * 2);
        QAction *action = menu.addAction(QIcon(QPixmap::fromImage(icon)), title);
        connect(action, &QAction::triggered, this, [this, application] { m_model.exclude(application); });
    }
    if (!menu.isEmpty())
        menu.addSeparator();
    connect(menu.addAction(inDesktopWords(QStringLiteral("Choose Application…"))), &QAction::triggered, this,
            [this] { m_model.excludeByFile(); });
}

void ExcludedAppsView::showMenu() {
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    dress(*menu, this);
    fill(*menu);
    menu->popup(m_add->mapToGlobal(QPoint(0, m_add->height() + space::tiny)));
}

} // namespace tavrine
