#include "adapters/gnome/GnomeColorSamplers.h"

#include "adapters/gnome/GnomeScreenFile.h"

#include <QPointer>

#include <utility>

namespace tavrine {

class GnomeColorSamplers::Sampler final : public ColorSampler {
public:
    explicit Sampler(GnomeColorSamplers &samplers) : m_samplers(&samplers) {}

    void showSampler(Selection selection) override {
        if (m_samplers)
            m_samplers->show(selection);
    }

private:
    QPointer<GnomeColorSamplers> m_samplers;
};

GnomeColorSamplers::GnomeColorSamplers(GnomeShell &shell) : m_shell(shell) {
    connect(&shell, &GnomeShell::keyPressed, this, [this](quint32 action) {
        if (action == m_escape && m_escape != 0)
            m_onX.cancel();
    });
    connect(&shell, &GnomeShell::detached, this, [this] { m_escape = 0; });
}

std::shared_ptr<ColorSampler> GnomeColorSamplers::makeSampler() {
    return std::make_shared<Sampler>(*this);
}

void GnomeColorSamplers::show(const Selection &selection) {
    m_onX.cancel(); // what is on the screen does not belong into the picture
    takeScreenFile(m_shell, Shrinking::leftOut, this, [this, selection](const std::shared_ptr<Descriptor> &file) {
        if (!file) {
            selection(std::nullopt);
            return;
        }
        ++m_shown;
        m_onX.show(pathOf(*file), [this, file, selection](std::optional<QColor> colour) {
            --m_shown;
            stopWatching();
            selection(colour);
        });
        if (m_shell.isAttached() && m_escape == 0 && !std::exchange(m_isEscapeAsked, true))
            m_shell.grabKey(gnomeKey::escape, this, [this](quint32 action) {
                m_isEscapeAsked = false;
                m_escape = action;
                stopWatching();
            });
    });
}

void GnomeColorSamplers::stopWatching() {
    if (m_shown == 0 && m_escape != 0)
        m_shell.ungrabKey(std::exchange(m_escape, 0));
}

} // namespace tavrine
