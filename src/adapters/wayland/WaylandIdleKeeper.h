#pragma once

#include "adapters/linux/PowerKeeper.h"

#include <QObject>

#include <memory>

namespace tavrine {

class WaylandReader;

/// Keeps the compositor from taking the session for idle, and with it the programs that blank or lock the screen then.
///
/// Lives on the main thread. A compositor heeds a surface that wants it, for as long as that is shown: here a clear
/// pixel behind everything, which is there only while it is wanted.
class WaylandIdleKeeper final : public QObject, public PowerKeeper {
public:
    /// With part in that connection; null for one of its own.
    explicit WaylandIdleKeeper(std::shared_ptr<WaylandReader> reader = nullptr);
    ~WaylandIdleKeeper() override;

    void want(const PowerNeeds &needs, const QString &why) override;
    [[nodiscard]] PowerNeeds held() const override;
    [[nodiscard]] bool isAsking() const override;

private:
    class Pixel;

    void onShown();

    const std::shared_ptr<WaylandReader> m_reader;
    std::unique_ptr<Pixel> m_pixel; ///< null until it is first wanted
};

} // namespace tavrine
