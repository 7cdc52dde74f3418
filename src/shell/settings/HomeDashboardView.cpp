#include "shell/settings/HomeDashboardView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Tile.h"
#include "shell/settings/AbilitiesView.h"
#include "shell/settings/AppIconView.h"
#include "shell/settings/WhatsNew.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrine {

using namespace look;

namespace {

constexpr int iconSide = 56;
constexpr qreal iconRadius = 13;
constexpr int noteHeight = 34;

/// One release note: its tag and its words.
class NoteRow final : public QWidget {
public:
    explicit NoteRow(const ReleaseNote &note)
        : m_tag(inDesktopWords(QLatin1String(note.tag))), m_text(inDesktopWords(QLatin1String(note.text))) {
        QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum); // higher than its hint where it wraps
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
        setRole(*this, QAccessible::StaticText);
        setAccessibleName(m_tag + QStringLiteral(": ") + m_text);
    }

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override {
        const QRect room(0, 0, width - textLeft() - space::medium, 10000);
        const int words = QFontMetrics(fontFor(TextRole::body)).boundingRect(room, wrapping, m_text).height();
        return std::max(noteHeight, words + 2 * space::small);
    }
    [[nodiscard]] QSize sizeHint() const override { return {420, noteHeight}; }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        paintBadge(painter, QRectF(space::medium, 0, badgeColumn(), noteHeight), m_tag, theme.control, theme.text);
        const QRect words(textLeft(), 0, width() - textLeft() - space::medium, height());
        if (height() == noteHeight) {
            paintLine(painter, words, m_text, TextRole::body, theme.text);
            return;
        }
        painter.setFont(fontFor(TextRole::body));
        painter.setPen(theme.text);
        painter.drawText(words.adjusted(0, space::small, 0, 0), wrapping, m_text);
    }

private:
    static constexpr int wrapping = int(Qt::AlignLeft) | int(Qt::AlignTop) | int(Qt::TextWordWrap);

    /// As wide as the longest of the tags.
    [[nodiscard]] static int badgeColumn() {
        qreal column = 0;
        for (const ReleaseNote &note : whatsNew)
            column = std::max(column, badgeWidth(QLatin1String(note.tag)));
        return int(std::ceil(column));
    }
    [[nodiscard]] static int textLeft() { return int(space::medium) + badgeColumn() + int(space::medium); }

    QString m_tag;
    QString m_text;
};

} // namespace

HomeDashboardView::HomeDashboardView(const HomeDashboardModel::Ports &ports, const QString &appVersion)
    : m_model(ports) {
    setAccessibleName(inDesktopWords(QStringLiteral("Home")));
    addHead(appVersion);
    addPermissions();
    addAbilities();
    addWhatsNew();
    addBanner();
}

void HomeDashboardView::addHead(const QString &appVersion) {
    auto *head = new QWidget;
    head->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(head);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::large);
    row->addWidget(new AppIconView(iconSide, iconRadius));
    auto *words = new QVBoxLayout;
    words->setSpacing(space::tiny);
    words->addWidget(new Label(QStringLiteral("Tavrine"), TextRole::hero));
    words->addWidget(new Label(QStringLiteral("Version ") + appVersion, TextRole::body, Label::Tone::secondary));
    row->addLayout(words, 1);
    add(head);
}

void HomeDashboardView::addPermissions() {
    auto *section = new QWidget;
    auto *inner = new QVBoxLayout(section);
    inner->setContentsMargins(0, space::huge, 0, 0);
    inner->setSpacing(space::small);
    inner->addWidget(new Label(QStringLiteral("Permissions needed"), TextRole::captionStrong, Label::Tone::secondary));
    auto *card = new Card;
    inner->addWidget(card);
    std::vector<SettingsRow *> rows;
    for (const HomeDashboardModel::PermissionRow &each : HomeDashboardModel::permissionRows) {
        auto *row =
            new SettingsRow(QLatin1String(each.symbol), QLatin1String(each.title), QLatin1String(each.subtitle));
        auto *button = new Button(QStringLiteral("Allow"), ButtonStyle::prominent);
        button->setButtonSize(ButtonSize::small);
        button->setAccessibleDescription(inDesktopWords(QLatin1String(each.title)));
        row->setTrailing(button);
        connect(button, &QAbstractButton::clicked, &m_model, [this, &each] { m_model.allow(each); });
        card->add(row);
        rows.push_back(row);
    }
    const auto refresh = [this, section, rows] {
        section->setVisible(m_model.needsPermissions());
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i]->setVisible(!(m_model.*HomeDashboardModel::permissionRows.at(i).isGranted)());
    };
    add(section);
    connect(&m_model, &HomeDashboardModel::changed, section, refresh);
    refresh();
}

void HomeDashboardView::addAbilities() {
    auto *abilities = new AbilitiesView(m_model);
    addSection(QStringLiteral("What this desktop allows"), abilities);
}

void HomeDashboardView::addWhatsNew() {
    Card *card = addSection(QStringLiteral("What's New"));
    for (const ReleaseNote &note : whatsNew)
        card->add(new NoteRow(note));
    auto *link = new Button(QStringLiteral("View full changelog"), ButtonStyle::link);
    link->setSymbol(QStringLiteral("arrow.up.right"));
    connect(link, &QAbstractButton::clicked, &m_model, &HomeDashboardModel::openChangelog);
    column().addSpacing(space::small);
    column().addWidget(link, 0, Qt::AlignLeft);
}

void HomeDashboardView::addBanner() {
    Card *card = addSection();
    auto *row = new SettingsRow(QStringLiteral("bubble.left.and.bubble.right"), QStringLiteral("Join the Community"),
                                QStringLiteral("Chat with other Tavrine users on Discord"));
    auto *end = new QWidget;
    auto *buttons = new QHBoxLayout(end);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(space::small);
    auto *open = new Button(QStringLiteral("arrow.up.right"), QStringLiteral("Join the Community"));
    auto *dismiss = new Button(QStringLiteral("xmark"), QStringLiteral("Dismiss"));
    buttons->addWidget(open);
    buttons->addWidget(dismiss);
    row->setTrailing(end);
    card->add(row);
    connect(open, &QAbstractButton::clicked, &m_model, &HomeDashboardModel::openCommunity);
    connect(dismiss, &QAbstractButton::clicked, &m_model, &HomeDashboardModel::dismissBanner);
    const auto refresh = [this, card] { card->setVisible(m_model.showsBanner()); };
    connect(&m_model, &HomeDashboardModel::changed, card, refresh);
    refresh();
}

} // namespace tavrine
