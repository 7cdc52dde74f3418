#pragma once

#include "ports/Application.h"

#include <QObject>

namespace tavrine {

/// This program on Qt's event loop. Lives on the main thread. Starts as an accessory; whoever owns windows follows
/// `activationPolicyChanged` and takes them out of the task bar and the pager, or puts them in.
class QtApplication final : public QObject, public Application {
    Q_OBJECT

public:
    void setActivationPolicy(ActivationPolicy policy) override;
    [[nodiscard]] ActivationPolicy activationPolicy() const override { return m_policy; }
    void terminate() override;

Q_SIGNALS:
    void activationPolicyChanged(tavrine::ActivationPolicy policy);

private:
    ActivationPolicy m_policy = ActivationPolicy::accessory;
};

} // namespace tavrine
