#include "shell/settings/FeatureRowModel.h"

namespace tavrine {

FeatureRowModel::FeatureRowModel(Feature feature, FeatureFlags &flags, Time &time, QObject *parent)
    : QObject(parent), m_feature(feature), m_flags(flags), m_time(time) {
    connect(&flags, &FeatureFlags::published, this, [this](Feature published) {
        if (published != m_feature)
            return;
        m_isStarting = m_isStarting && this->isOn(); // it may have been switched off elsewhere
        Q_EMIT changed();
    });
}

void FeatureRowModel::setOn(bool isOn) {
    if (isOn == this->isOn())
        return;
    m_isStarting = isOn;
    m_flags.set(m_feature, isOn);
    if (isOn) {
        m_time.asyncAfter(startingTime, this, [this, start = ++m_starts] {
            if (start != m_starts)
                return; // it was started anew meanwhile
            m_isStarting = false;
            Q_EMIT changed();
        });
    }
    Q_EMIT changed();
}

} // namespace tavrine
