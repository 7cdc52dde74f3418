#include "adapters/linux/QtApplication.h"

#include "adapters/linux/IdleMemory.h"

#include <QCoreApplication>

namespace tavrine {

void QtApplication::setActivationPolicy(ActivationPolicy policy) {
    if (std::exchange(m_policy, policy) != policy && policy == ActivationPolicy::accessory)
        giveIdleMemoryBack(); // the last large window is gone
}

void QtApplication::terminate() {
    QCoreApplication::quit();
}

} // namespace tavrine
