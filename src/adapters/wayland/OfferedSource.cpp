#include "adapters/wayland/OfferedSource.h"

#include <algorithm>

#include <unistd.h>
#include <wayland/wlr-data-control-unstable-v1.h>

namespace tavrine {
namespace {

constexpr std::size_t maxWaiting = 64;

} // namespace

OfferedSource::OfferedSource(const DataControl &control, OutgoingPipes &pipes, std::vector<OfferedForm> forms,
                             Hooks hooks)
    : m_pipes(pipes), m_forms(std::move(forms)), m_hooks(std::move(hooks)), m_source(control.makeSource()) {
    static constexpr zwlr_data_control_source_v1_listener listener{
        .send = [](void *self, zwlr_data_control_source_v1 *, const char *target,
                   int descriptor) { static_cast<OfferedSource *>(self)->send(target, descriptor); },
        .cancelled =
            [](void *self, zwlr_data_control_source_v1 *) {
                const auto onReplaced = static_cast<OfferedSource *>(self)->m_hooks.onReplaced;
                onReplaced();
            },
    };
    zwlr_data_control_source_v1_add_listener(m_source, &listener, this);
    for (const OfferedForm &form : m_forms)
        zwlr_data_control_source_v1_offer(m_source, form.target.constData());
}

OfferedSource::~OfferedSource() {
    for (const Waiting &waiting : m_waiting)
        ::close(waiting.descriptor);
    zwlr_data_control_source_v1_destroy(m_source);
}

void OfferedSource::send(const QByteArray &target, int descriptor) {
    const auto form =
        std::find_if(m_forms.begin(), m_forms.end(), [&](const OfferedForm &f) { return f.target == target; });
    if (form == m_forms.end() || m_waiting.size() >= maxWaiting) {
        ::close(descriptor);
    } else if (!form->recipe) {
        m_pipes.write(descriptor, form->bytes);
    } else {
        m_waiting.push_back({target, descriptor});
        if (m_underWay.insert(target).second)
            m_hooks.make(target, form->recipe);
    }
}

void OfferedSource::onMade(const QByteArray &target, const QByteArray &bytes) {
    m_underWay.erase(target);
    for (OfferedForm &form : m_forms) {
        if (form.target == target && form.isKept) {
            form.bytes = bytes;
            form.recipe = {};
        }
    }
    std::erase_if(m_waiting, [&](const Waiting &waiting) {
        const bool isMade = waiting.target == target;
        if (isMade)
            m_pipes.write(waiting.descriptor, bytes);
        return isMade;
    });
}

} // namespace tavrine
