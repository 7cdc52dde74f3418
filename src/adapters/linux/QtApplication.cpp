#include "adapters/linux/QtApplication.h"

#include <QCoreApplication>

namespace tavrine {

void QtApplication::setActivationPolicy(ActivationPolicy policy) {
    m_policy = policy;
}

void QtApplication::terminate() {
    QCoreApplication::quit();
}

} // namespace tavrine
