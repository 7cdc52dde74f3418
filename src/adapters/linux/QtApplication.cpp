#include "adapters/linux/QtApplication.h"

#include "adapters/linux/IdleMemory.h"
#include "base/Print.h"

#include <QCoreApplication>

namespace tavrine {

void QtApplication::setActivationPolicy(ActivationPolicy policy) {
    if (std::exchange(m_policy, policy) != policy && policy == ActivationPolicy::accessory)
        giveIdleMemoryBack(); // the last large window is gone
}

void QtApplication::terminate() {
    printLine(QStringLiteral("Tavrine quits, as it was asked to."));
    // Not quit(), which asks the windows first: a panel goes by the program's own way and would say no.
    QCoreApplication::exit(0);
}

} // namespace tavrine
