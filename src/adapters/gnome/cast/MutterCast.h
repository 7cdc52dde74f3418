#pragma once

#include "adapters/cast/CastSource.h"

#include <QDBusConnection>
#include <QObject>

class QEventLoop;

namespace tavrine {

/// A part of GNOME's screens, which its compositor casts to every program of the session that is in no sandbox. Over a
/// connection of its own to the session bus: the cast ends with that.
class MutterCast final : public QObject, public CastSource {
    Q_OBJECT

public:
    MutterCast();
    ~MutterCast() override;

    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan &plan,
                                                   const ScreenStreamConfiguration &configuration) override;

private Q_SLOTS:
    void added(uint node);

private:
    /// The object's path that a call gives; empty when it fails.
    [[nodiscard]] QString make(const QString &path, const char *interface, const char *method,
                               const QVariantList &arguments);

    const QString m_name;
    QDBusConnection m_bus;
    std::optional<std::uint32_t> m_node;
    QEventLoop *m_waiting = nullptr;
};

} // namespace tavrine
