#include "adapters/wayland/LayerStack.h"

#include <algorithm>

namespace tavrine {

LayerStack::Place LayerStack::add(Window window) {
    const auto above = std::find_if(m_windows.begin(), m_windows.end(),
                                    [&](const Window &other) { return other.level > window.level; });
    const auto place = m_windows.insert(above, std::move(window));
    if (place->wantsKeyboard) {
        m_keys.push_back(&*place);
        m_yields = false; // the person called it
    }
    settle(&*place);
    return place;
}

void LayerStack::remove(Place window) {
    m_keys.remove(&*window);
    m_windows.erase(window);
    settle(nullptr);
}

void LayerStack::follow(Place window, const QRect &rect) {
    window->rect = rect;
    settle(nullptr);
}

void LayerStack::setYields(bool yields) {
    m_yields = yields;
    settle(nullptr);
}

void LayerStack::setHeld(bool isHeld) {
    m_isHeld = isHeld;
    settle(nullptr);
}

void LayerStack::settle(const Window *silent) {
    for (auto each = m_windows.begin(); each != m_windows.end(); ++each) {
        const bool isCovered = std::any_of(std::next(each), m_windows.end(),
                                           [&](const Window &front) { return front.rect.intersects(each->rect); });
        const Standing now{.takesKeyboard = !m_yields && !m_isHeld && !m_keys.empty() && m_keys.back() == &*each,
                           .isOverFullScreen = !isCovered};
        if (now.takesKeyboard == each->standing.takesKeyboard &&
            now.isOverFullScreen == each->standing.isOverFullScreen)
            continue;
        each->standing = now;
        if (&*each != silent)
            each->stand(now);
    }
    if (m_settled)
        m_settled();
}

} // namespace tavrine
