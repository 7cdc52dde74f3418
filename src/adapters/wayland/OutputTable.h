#pragma once

#include "adapters/wayland/WaylandClient.h"
#include "base/SerialQueue.h"

#include <QRect>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <vector>

struct wl_compositor;
struct zwlr_layer_shell_v1;
struct zxdg_output_manager_v1;

namespace tavrine {

/// One output as the compositor tells it.
struct OutputFacts {
    QString name;
    QString description;
    QRect logical; ///< in points, in the plane of the compositor
    QSize pixels;  ///< of its picture, turned as it is seen
    QRect usable;  ///< what panels of the desktop leave, in points from its corner; empty where nobody told
    bool operator==(const OutputFacts &) const = default;
};

/// The outputs of the compositor, which are read when something changes and never otherwise. Lives on the main thread.
///
/// What panels leave of an output is told to a surface of the layer shell that asks for all that is free. It gets no
/// picture, so it is never seen, and hears of each change. Where that lies is asked on a thread; until then what is
/// taken is thought to be at the top.
class OutputTable {
public:
    OutputTable(std::shared_ptr<WaylandReader> reader, std::function<void()> onChange);
    ~OutputTable();
    OutputTable(const OutputTable &) = delete;
    OutputTable &operator=(const OutputTable &) = delete;

    /// Of the output with that name; null for none.
    [[nodiscard]] const OutputFacts *find(const QString &name) const;

private:
    class Output;

    void added(const WaylandLink::Global &global);
    void removed(std::uint32_t name);
    void askForPlaces();
    void takePlaces(const std::map<QString, QRect> &parts);

    const std::function<void()> m_onChange;
    WaylandClient m_client;
    wl_compositor *m_compositor = nullptr;
    zwlr_layer_shell_v1 *m_layerShell = nullptr;
    zxdg_output_manager_v1 *m_manager = nullptr;
    std::vector<std::unique_ptr<Output>> m_outputs;
    bool m_isAsking = false;
    bool m_asksAgain = false;
    SerialQueue m_questions;
    const std::shared_ptr<OutputTable *> m_self; ///< for answers that come when it is gone
};

} // namespace tavrine
