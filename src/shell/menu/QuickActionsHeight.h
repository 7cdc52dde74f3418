#pragma once

#include "base/Time.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// The height of the Quick Actions within the menu: an explicit one, set at once or in steps, and never below 44
/// points. Belongs to the menu; main thread.
class QuickActionsHeight : public QObject {
    Q_OBJECT

public:
    static constexpr double smallest = 44;
    static constexpr Seconds measureDelay{0.05}; ///< after a switch was flipped or a preference written
    static constexpr Seconds settleDelay{0.02};  ///< before an animation: what is to be measured is laid out by then
    static constexpr Seconds step{1.0 / 60.0};
    static constexpr double smallestDifference = 0.5;
    static constexpr Seconds panelLength{0.36}; ///< of the advanced panel of Keep Awake

    /// `measure` gives the height that the content wants; none while there is no content.
    QuickActionsHeight(Time &time, std::function<std::optional<double>()> measure, QObject *parent = nullptr);
    ~QuickActionsHeight() override;

    [[nodiscard]] double height() const { return m_height; }
    /// Measures and sets the height now.
    void setNow();
    /// The same a moment later.
    void setSoon();
    /// From the present height to the wanted one; a new animation ends the one that runs.
    void animate(Seconds duration);
    [[nodiscard]] bool isAnimating() const { return m_panelHeightTimer != nullptr; }

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] std::optional<double> target() const;
    void set(double height);

    Time &m_time;
    std::function<std::optional<double>()> m_measure;
    double m_height = smallest;
    std::unique_ptr<Timer> m_panelHeightTimer;
};

} // namespace tavrine
