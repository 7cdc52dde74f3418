#pragma once

#include "base/Time.h"
#include "shell/FeatureFlags.h"

#include <QObject>

namespace tavrine {

/// One feature on the features page. Its switch acts at once; that it says "Starting…" for a while is for the eye.
/// Lives as long as its page; main thread.
class FeatureRowModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds startingTime{2.5};
    static constexpr auto startingText = "Starting…";

    /// Both outlive the model.
    FeatureRowModel(Feature feature, FeatureFlags &flags, Time &time, QObject *parent = nullptr);

    [[nodiscard]] Feature feature() const { return m_feature; }
    [[nodiscard]] bool isOn() const { return m_flags.isOn(m_feature); }
    void setOn(bool isOn);
    [[nodiscard]] bool isStarting() const { return m_isStarting; }

Q_SIGNALS:
    void changed();

private:
    Feature m_feature;
    FeatureFlags &m_flags;
    Time &m_time;
    bool m_isStarting = false;
    int m_starts = 0;
};

} // namespace tavrine
