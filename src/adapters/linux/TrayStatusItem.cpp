#include "adapters/linux/TrayStatusItem.h"

namespace tavrine {

TrayStatusItem::TrayStatusItem(std::vector<std::unique_ptr<TrayIcon>> trays, Placing placing)
    : m_trays(std::move(trays)), m_placing(std::move(placing)) {
    for (const auto &tray : m_trays)
        tray->setHandlers({.onOfferChanged = [this] { choose(); },
                           .onShown =
                               [this, each = tray.get()] {
                                   if (each == m_chosen && !std::exchange(m_isShown, true) && m_onShown)
                                       m_onShown();
                               },
                           .onPress =
                               [this](QPoint place) {
                                   if (m_onPress)
                                       m_onPress(m_placing ? m_placing(place) : place);
                               },
                           .onSecondaryPress =
                               [this](QPoint place) {
                                   if (m_onSecondaryPress)
                                       m_onSecondaryPress(m_placing ? m_placing(place) : place);
                               }});
}

TrayIcon *TrayStatusItem::best() const {
    if (m_isWide)
        for (const auto &tray : m_trays)
            if (tray->keepsShape() && tray->offer() == TrayIcon::Offer::yes)
                return tray.get();
    for (const auto &tray : m_trays) {
        if (tray->offer() == TrayIcon::Offer::yes)
            return tray.get();
        if (tray->offer() == TrayIcon::Offer::unknown)
            return nullptr;
    }
    return nullptr;
}

void TrayStatusItem::choose() {
    TrayIcon *const next = m_isVisible ? best() : nullptr;
    if (next == m_chosen)
        return;
    TrayIcon *const left = std::exchange(m_chosen, next);
    if (!next)
        m_isShown = false;
    if (left)
        left->setWanted(false);
    if (next)
        next->setWanted(true);
}

void TrayStatusItem::setVisible(bool visible) {
    m_isVisible = visible;
    choose();
}

void TrayStatusItem::setImage(const StatusImage &image) {
    if (std::exchange(m_identity, image.identity) == image.identity && !image.identity.isEmpty())
        return;
    m_isWide = 2 * image.width > 3 * image.height;
    // A tray that is left by this need not hear of the image any more: Xfce's ends when an item changes and goes at
    // once.
    TrayIcon *const before = m_chosen;
    for (const auto &tray : m_trays)
        if (tray.get() != before)
            tray->setImage(image);
    choose();
    if (before)
        before->setImage(image);
}

void TrayStatusItem::setMenu(StatusItemMenu menu) {
    for (const auto &tray : m_trays)
        tray->setMenu(menu);
}

void TrayStatusItem::menuChanged() {
    for (const auto &tray : m_trays)
        tray->menuChanged();
}

void TrayStatusItem::setToolTip(const QString &toolTip) {
    for (const auto &tray : m_trays)
        tray->setToolTip(toolTip);
}

} // namespace tavrine
