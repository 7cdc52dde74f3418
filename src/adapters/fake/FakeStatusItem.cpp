#include "adapters/fake/FakeStatusItem.h"

namespace tavrine {

void FakeStatusItem::setVisible(bool visible) {
    const bool wasShown = isShown();
    m_isVisible = visible;
    tellIfShown(wasShown);
}

void FakeStatusItem::setImage(const StatusImage &image) {
    ++m_imageCount;
    if (m_image.identity.isEmpty() || m_image.identity != image.identity)
        ++m_drawings;
    m_image = image;
}

void FakeStatusItem::setTrayRunning(bool isRunning) {
    const bool wasShown = isShown();
    m_isTrayRunning = isRunning;
    tellIfShown(wasShown);
}

void FakeStatusItem::press(QPoint place, Seconds ago) {
    if (isShown() && m_onPress)
        m_onPress(place, ago);
}

void FakeStatusItem::pressWithTheMiddleButton(QPoint place) {
    if (isShown() && m_onSecondaryPress)
        m_onSecondaryPress(place, {});
}

void FakeStatusItem::tellIfShown(bool wasShown) {
    if (isShown() && !wasShown && m_onShown)
        m_onShown();
}

} // namespace tavrine
