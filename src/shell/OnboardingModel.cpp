#include "shell/OnboardingModel.h"

#include "base/Addresses.h"
#include "ports/DesktopAbilities.h"
#include "ports/UrlOpener.h"

namespace tavrine {

OnboardingModel::OnboardingModel(Ports ports, std::function<void()> onClose, QObject *parent)
    : QObject(parent), m_ports(ports), m_onClose(std::move(onClose)), m_permissionChecker(ports.access, ports.time) {}

bool OnboardingModel::hasCompletedOnboarding() const {
    return preference::hasCompletedOnboarding.get(m_ports.defaults);
}

std::vector<OnboardingModel::Shortcut> OnboardingModel::shortcuts() const {
    std::vector<Shortcut> found;
    for (const auto &[trigger, name] : shortcutRows) {
        const QString keys = shortcutText(m_ports.defaults, trigger);
        if (!keys.isEmpty() && textOf(featureOf(trigger)).preference.get(m_ports.defaults))
            found.push_back({keys, QString::fromLatin1(name)});
    }
    return found;
}

QString OnboardingModel::wanting() const {
    int count = 0;
    if (m_ports.abilities)
        for (const AbilityReport &report : m_ports.abilities->reports())
            count += report.state == AbilityState::there ? 0 : 1;
    if (count == 0)
        return {};
    const QString what = count == 1 ? QStringLiteral("One thing works") : QStringLiteral("%1 things work").arg(count);
    return what + QStringLiteral(" in part or not at all on this desktop: Home says what, and what to do.");
}

void OnboardingModel::setCurrentPage(Page page) {
    if (page == m_currentPage)
        return;
    m_goingForward = page > m_currentPage;
    m_currentPage = page;
    Q_EMIT currentPageChanged();
}

void OnboardingModel::goForward() {
    switch (m_currentPage) {
    case Page::welcome:
        return setCurrentPage(Page::features);
    case Page::features:
        return setCurrentPage(Page::permissions);
    case Page::permissions:
        preference::hasCompletedOnboarding.set(m_ports.defaults, true);
        // The window goes with this call, and this object with the window.
        const auto onClose = m_onClose;
        return onClose();
    }
}

void OnboardingModel::exploreFeatures() {
    m_ports.urlOpener.openUrl(addressOf(Address::features, m_ports.resources));
}

} // namespace tavrine
