#pragma once

#include "adapters/linux/PowerKeeper.h"
#include "ports/PowerAssertions.h"

#include <QObject>

#include <map>
#include <memory>
#include <vector>

namespace tavrine {

/// Holds what is asserted with all services that the desktop has for it, at once, since each is heeded by somebody
/// else.
///
/// The screen is kept on by the service of the screen saver, by the session manager or by the display server itself;
/// the machine is kept up by logind, by the session manager or by the power manager. One of those that can keep the
/// promise is enough for success. A power manager may hold off the screen together with the suspend, so where the
/// screen may blank it is asked only while nobody else keeps the machine up.
class LinuxPowerAssertions final : public QObject, public PowerAssertions {
    Q_OBJECT

public:
    static constexpr int notTaken = 1; ///< the error: nobody took it, or nobody answered in time

    /// `lastResort` may be null.
    LinuxPowerAssertions(std::vector<std::unique_ptr<PowerKeeper>> keepers, std::unique_ptr<PowerKeeper> lastResort);
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
    void askLastResort(const PowerNeeds &needs, const QString &why);
    void answer();
    void finish(quint32 id, int result);
    [[nodiscard]] PowerNeeds held() const;
    [[nodiscard]] bool isAsking() const;

    std::vector<std::unique_ptr<PowerKeeper>> m_keepers;
    std::unique_ptr<PowerKeeper> m_lastResort;
    std::map<quint32, Assertion> m_assertions;
    quint32 m_lastId = 0;
    bool m_isApplyPosted = false;
};

} // namespace tavrine
