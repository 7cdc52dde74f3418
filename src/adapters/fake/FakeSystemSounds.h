#pragma once

#include "ports/SystemSounds.h"

#include <QStringList>

namespace tavrine {

/// Sounds that are written down instead of heard.
class FakeSystemSounds final : public SystemSounds {
public:
    void play(const QString &name) override { m_played.append(name); }

    [[nodiscard]] const QStringList &played() const { return m_played; }

private:
    QStringList m_played;
};

} // namespace tavrine
