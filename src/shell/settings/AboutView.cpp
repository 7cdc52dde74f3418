#include "shell/settings/AboutView.h"

#include "base/Addresses.h"
#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Metrics.h"
#include "look/Tile.h"
#include "ports/UrlOpener.h"
#include "shell/settings/AppIconView.h"
#include "shell/updates/SoftwareUpdater.h"

#include <QVBoxLayout>

namespace tavrine {

using namespace look;

namespace {

constexpr int iconSide = 90;
constexpr qreal iconRadius = 20;

Label *centred(const QString &text, TextRole role, Label::Tone tone) {
    auto *label = new Label(text, role, tone);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

SettingsRow *linkRow(const char *symbol, const char *title, UrlOpener &opener, const QUrl &address) {
    auto *row = new SettingsRow(QLatin1String(symbol), QLatin1String(title));
    auto *button = new Button(QStringLiteral("arrow.up.right"), QLatin1String(title));
    row->setTrailing(button);
    QObject::connect(button, &QAbstractButton::clicked, row, [&opener, address] { opener.openUrl(address); });
    return row;
}

} // namespace

AboutView::AboutView(const Parts &parts) {
    setAccessibleName(inDesktopWords(QStringLiteral("About")));
    column().addSpacing(space::huge);
    column().addWidget(makeIcon(), 0, Qt::AlignHCenter);
    column().addSpacing(space::medium);
    add(centred(QStringLiteral("Tavrine"), TextRole::hero, Label::Tone::primary));
    column().addSpacing(space::tiny);
    QString version = QStringLiteral("Version ") + parts.appVersion;
    if (!parts.buildNumber.isEmpty())
        version += QStringLiteral(" (") + parts.buildNumber + u')';
    add(centred(version, TextRole::body, Label::Tone::secondary));
    column().addSpacing(space::medium);
    Card *card = addSection();
    card->add(makeUpdates(parts.updater));
    card->add(linkRow("envelope", "Support", parts.urlOpener, addressOf(Address::support, parts.resources)));
    card->add(linkRow("globe", "Developer Website", parts.urlOpener, addressOf(Address::website, parts.resources)));
}

/// The outcome stands here also for a desktop that shows no notifications.
QWidget *AboutView::makeUpdates(SoftwareUpdater &updater) {
    auto *row = new SettingsRow(QStringLiteral("square.and.arrow.down"), QStringLiteral("Updates"));
    auto *button = new Button(QStringLiteral("Check Now"));
    button->setButtonSize(ButtonSize::small);
    const auto show = [row, button, &updater] {
        const QString status = updater.status();
        row->setNote(status.isEmpty() ? QStringLiteral("Not looked for since Tavrine was started") : status);
        button->setAccessibleDescription(row->note());
        button->setEnabled(updater.state() != SoftwareUpdater::State::lookingForPerson);
    };
    show();
    row->setTrailing(button);
    connect(&updater, &SoftwareUpdater::changed, row, show);
    connect(button, &QAbstractButton::clicked, &updater, &SoftwareUpdater::checkForUpdates);
    return row;
}

QWidget *AboutView::makeIcon() {
    auto *icon = new AppIconView(iconSide, iconRadius);
    connect(icon, &AppIconView::tapped, this, [this] { m_tapCount = (m_tapCount + 1) % tapsInARound; });
    return icon;
}

} // namespace tavrine
