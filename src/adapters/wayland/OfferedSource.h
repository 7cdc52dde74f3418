#pragma once

#include "adapters/pasteboard/OfferedForms.h"
#include "adapters/wayland/DataControl.h"
#include "adapters/wayland/OutgoingPipes.h"

#include <functional>
#include <set>
#include <vector>

namespace tavrine {

/// What is ours, offered to the other programs for as long as this object stands and nobody has replaced it. Lives on
/// the reader's thread.
///
/// What costs work is made when somebody asks for it, on another thread; who asks meanwhile for something else does not
/// wait for it. Who is being served when the clipboard passes on is served to the end.
class OfferedSource {
public:
    struct Hooks {
        /// Runs the recipe elsewhere and leads to `onMade`.
        std::function<void(const QByteArray &target, const OfferedForm::Recipe &recipe)> make;
        /// Somebody else owns the clipboard now, or has emptied it. May end this object.
        std::function<void()> onReplaced;
    };

    OfferedSource(const DataControl &control, OutgoingPipes &pipes, std::vector<OfferedForm> forms, Hooks hooks);
    ~OfferedSource();
    OfferedSource(const OfferedSource &) = delete;
    OfferedSource &operator=(const OfferedSource &) = delete;

    [[nodiscard]] zwlr_data_control_source_v1 *source() const { return m_source; }
    void onMade(const QByteArray &target, const QByteArray &bytes);

private:
    struct Waiting {
        QByteArray target;
        int descriptor;
    };

    void send(const QByteArray &target, int descriptor);

    OutgoingPipes &m_pipes;
    std::vector<OfferedForm> m_forms;
    Hooks m_hooks;
    std::set<QByteArray> m_underWay;
    std::vector<Waiting> m_waiting;
    zwlr_data_control_source_v1 *m_source;
};

} // namespace tavrine
