#include "adapters/linux/TrayStatusItem.h"

#include <chrono>

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
                           .onPress = [this](QPoint told) { press(m_onPress, told); },
                           .onSecondaryPress = [this](QPoint told) { press(m_onSecondaryPress, told); }});
}

/// `handler` is a member: what is set when the place is known is called.
void TrayStatusItem::press(const OnPress &handler, QPoint told) {
    if (!m_placing) {
        if (handler)
            handler(told, {});
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    m_placing([&handler, start](QPoint place) {
        if (handler)
            handler(place, std::chrono::steady_clock::now() - start);
    });
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
