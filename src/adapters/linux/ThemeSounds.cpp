#include "adapters/linux/ThemeSounds.h"

#include "adapters/linux/HelperProcess.h"

namespace tavrine {
namespace {

/// What themes may call a sound, the best first: names of the freedesktop.org sound naming specification. Few themes
/// know the sound of a drag that was accepted; all have that of a changed volume, a pop of a fifteenth of a second.
const char *namesOf(const QString &sound) {
    return sound == QStringLiteral("Pop") ? "drag-accept audio-volume-change\n" : nullptr;
}

} // namespace

ThemeSounds::ThemeSounds(const QString &programFolder, std::function<DesktopThemes()> themes,
                         std::chrono::milliseconds longest)
    : m_program(programFolder + QStringLiteral("/TavrineSounds")), m_themes(std::move(themes)) {
    m_turn.setSingleShot(true);
    m_rest.setSingleShot(true);
    m_rest.setInterval(longest);
    m_rest.callOnTimeout([this] { m_process.reset(); });
}

ThemeSounds::~ThemeSounds() = default;

qint64 ThemeSounds::processIdentifier() const {
    return m_process ? m_process->processIdentifier() : 0;
}

void ThemeSounds::play(const QString &name) {
    const char *names = namesOf(name);
    if (!names)
        return;
    if (!m_turn.isActive()) {
        m_now = m_themes();
        m_turn.start(0);
    }
    if (!m_now.hasEventSounds.value_or(true))
        return;
    if (m_theme != m_now.sounds)
        m_process.reset();
    if (!m_process) {
        m_theme = m_now.sounds;
        m_process = std::make_unique<HelperProcess>(
            HelperProcess::Start{.program = m_program,
                                 .arguments = m_theme.isEmpty() ? QStringList() : QStringList(m_theme)},
            HelperProcess::Handlers{.line = [](const std::string &) {},
                                    .ended = [this](const QString &) { m_process.reset(); }});
    }
    m_process->write(names);
    m_rest.start();
}

} // namespace tavrine
