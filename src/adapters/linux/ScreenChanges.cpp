#include "adapters/linux/ScreenChanges.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <utility>

namespace tavrine {

ScreenChanges::ScreenChanges() {
    const auto screens = QGuiApplication::screens();
    for (QScreen *screen : screens)
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen *screen) {
        watch(screen);
        tell();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &ScreenChanges::tell);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &ScreenChanges::tell);
}

void ScreenChanges::watch(QScreen *screen) {
    connect(screen, &QScreen::geometryChanged, this, &ScreenChanges::tell);
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &ScreenChanges::tell);
}

void ScreenChanges::tell() {
    if (std::exchange(m_isPosted, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_isPosted = false;
        const auto listeners = m_listeners;
        for (const auto &listener : listeners)
            if (const auto handler = listener.lock())
                (*handler)();
        std::erase_if(m_listeners, [](const auto &listener) { return listener.expired(); });
    });
}

Screens::Token ScreenChanges::add(std::function<void()> handler) {
    auto token = std::make_shared<std::function<void()>>(std::move(handler));
    m_listeners.push_back(token);
    return token;
}

} // namespace tavrine
