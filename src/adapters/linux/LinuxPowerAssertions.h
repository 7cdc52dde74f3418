#pragma once

#include "adapters/linux/PowerKeeper.h"
#include "ports/PowerAssertions.h"

#include <QObject>

#include <map>

namespace tavrine {

/// Holds what is asserted with all services that the desktop has for it, at once, since each is heeded by somebody
/// else.
///
/// The screen is kept on by the service of the screen saver, by the session manager or by the display server itself;
/// the machine is kept up by the session manager, by the power manager or by logind. One of those that can keep the
/// promise is enough for success.
///
/// Where the screen may blank, a service that may keep it on together with the machine is a last resort, asked while
/// nobody before it keeps the machine up: the power manager, since some do so, and after it logind's idea of idleness,
/// which Plasma takes for the screen's.
class LinuxPowerAssertions final : public QObject, public PowerAssertions {
    Q_OBJECT

public:
    static constexpr int notTaken = 1; ///< the error: nobody took it, or nobody answered in time

    /// The last resorts in their order.
    LinuxPowerAssertions(PowerKeepers keepers, PowerKeepers lastResorts);
    ~LinuxPowerAssertions() override;

    [[nodiscard]] quint32 createWithName(PowerAssertionType type, const QString &name,
                                         std::function<void(int result)> created) override;
    void setAppliesOnLidClose(quint32 id) override;
    void release(quint32 id) override;

private:
    struct Assertion {
        PowerAssertionType type;
        QString name;
        std::function<void(int)> created; ///< empty once it was called
        bool appliesOnLidClose = false;
    };

    void applySoon();
    void apply();
    void askLastResorts(const PowerNeeds &needs, const QString &why);
    void answer();
    void finish(quint32 id, int result);
    [[nodiscard]] PowerNeeds held() const;
    [[nodiscard]] bool isAsking() const;

    PowerKeepers m_keepers;
    PowerKeepers m_lastResorts;
    std::map<quint32, Assertion> m_assertions;
    quint32 m_lastId = 0;
    bool m_isApplyPosted = false;
};

} // namespace tavrine
