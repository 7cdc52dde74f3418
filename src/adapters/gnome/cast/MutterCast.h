#pragma once

#include "adapters/cast/CastSource.h"
#include "adapters/linux/StreamBus.h"

#include <QObject>
#include <QRect>

namespace tavrine {

/// A part of GNOME's screens, which its compositor casts to every program of the session that is in no sandbox. Over a
/// connection of its own to the session bus: the cast ends with that.
class MutterCast final : public QObject, public CastSource {
    Q_OBJECT

public:
    /// `display` is where the screen lies on the X server's plane, whose `scale` pixels are a point there. A shell that
    /// is busy takes its time.
    MutterCast(const QRect &display, double scale, StreamBus::Wait longestAnswer = std::chrono::seconds(5))
        : m_display(display), m_scale(scale), m_longestAnswer(longestAnswer) {}

    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan &plan,
                                                   const ScreenStreamConfiguration &configuration,
                                                   const ThreadedScreenStream::Session &session) override;

private Q_SLOTS:
    void added(uint node) { m_node = node; }

private:
    /// The object's path that a call gives; empty when it fails.
    [[nodiscard]] QString make(const QString &path, const char *interface, const char *method,
                               const QVariantList &arguments);

    /// None when the compositor does not say it. Who says it is asked for all that follows.
    [[nodiscard]] std::optional<double> fineness();

    const QRect m_display;
    const double m_scale;
    const StreamBus::Wait m_longestAnswer;
    std::optional<StreamBus> m_bus;
    QString m_compositor; ///< its own name on the bus
    std::optional<std::uint32_t> m_node;
};

} // namespace tavrine
