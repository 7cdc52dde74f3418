#include "adapters/linux/QtApplication.h"

#include <QCoreApplication>

#include <utility>

namespace tavrine {

void QtApplication::setActivationPolicy(ActivationPolicy policy) {
    if (std::exchange(m_policy, policy) != policy)
        Q_EMIT activationPolicyChanged(policy);
}

void QtApplication::terminate() {
    QCoreApplication::quit();
}

} // namespace tavrine
