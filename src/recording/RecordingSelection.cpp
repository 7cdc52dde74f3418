#include "recording/RecordingSelection.h"

#include "base/Time.h"
#include "base/VirtualKeys.h"
#include "ports/Access.h"
#include "ports/EventMonitors.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

PanelDescription overlayDescription(const Screen &screen) {
    return {.title = QStringLiteral("Select Area to Record"),
            .contentSize = screen.frame.size(),
            .level = windowLevel::screenSaver,
            .hasShadow = false};
}

} // namespace

RecordingSelection::RecordingSelection(const Ports &ports, Actions actions, View view)
    : m_ports(ports), m_actions(std::move(actions)), m_view(std::move(view)), m_window(ports.windows, ports.time) {}

RecordingSelection::~RecordingSelection() = default;

void RecordingSelection::open(const Screen &screen) {
    m_screen = screen;
    m_model = std::make_shared<ScreenRecorderSelectionModel>(
        screen.frame.size(), screen.scale,
        ScreenRecorderSelectionModel::Actions{
            .onMic = [this] { pressMic(); },
            .onStart = [this] { start(); },
            .onCancel = [this] { cancel(); },
            .onStop = m_actions.isRecording() ? std::function([this] { stopRecording(); }) : nullptr});
    m_window.show(overlayDescription(screen), screen.frame, m_view ? m_view(m_model) : nullptr,
                  OverlayWindow::Keyboard::taken);
    m_window.window()->setOnClosed([this] { cancel(); });
    m_escKeyMonitor = m_ports.monitors.addLocalMonitor(
        eventMask::keyDown, [this](const InputEvent &event) { return swallowsKey(event.keyCode); });
    m_screenChanges = m_ports.screens.onChange([this] { keepOnScreen(); });
}

bool RecordingSelection::swallowsKey(int keyCode) {
    if (keyCode != virtualKey::escape)
        return false;
    m_ports.time.async(this, [this] { cancel(); }); // not within the monitor, which goes with the overlay
    return true;
}

/// An area of a screen that has gone or changed is none.
void RecordingSelection::keepOnScreen() {
    const QList<Screen> screens = m_ports.screens.screens();
    const auto same = [this](const Screen &screen) {
        return screen.number == m_screen.number && screen.frame == m_screen.frame && screen.scale == m_screen.scale;
    };
    if (std::ranges::none_of(screens, same))
        m_ports.time.async(this, [this] { cancel(); });
}

void RecordingSelection::cancel() {
    if (!m_model)
        return;
    clear();
    m_actions.onCancelled();
}

/// The key that opens the overlay is the way to the recorder for who has no pointer, and the bar takes no keys.
void RecordingSelection::stopRecording() {
    clear();
    if (m_actions.isRecording())
        m_actions.stopRecording();
    else // it has ended meanwhile
        m_actions.onCancelled();
}

void RecordingSelection::clear() {
    m_escKeyMonitor.reset();
    m_screenChanges.reset();
    if (const auto model = std::exchange(m_model, nullptr))
        m_ports.time.async(this, [model] {}); // its own button may be what closes it
    m_window.clear();
}

void RecordingSelection::alertSoon() {
    m_ports.time.async(this, [this] { m_actions.showMicrophoneAlert(); });
}

void RecordingSelection::pressMic() {
    switch (m_ports.access.microphoneAuthorization()) {
    case MicrophoneAuthorization::authorized:
        m_model->flipMic();
        break;
    case MicrophoneAuthorization::notDetermined:
        clear(); // the desktop's own question would lie under it
        m_ports.access.requestMicrophone([this, self = QPointer(this)](bool isGranted) {
            if (self)
                m_ports.time.async(this, isGranted ? m_actions.startScreenRecording : m_actions.showMicrophoneAlert);
        });
        break;
    case MicrophoneAuthorization::restricted:
    case MicrophoneAuthorization::denied:
        clear();
        alertSoon();
        break;
    }
}

void RecordingSelection::start() {
    if (!m_model->includesMic() && !m_model->includesSystemAudio()) {
        select(false);
        return;
    }
    switch (m_ports.access.microphoneAuthorization()) {
    case MicrophoneAuthorization::authorized:
        select(true);
        break;
    case MicrophoneAuthorization::notDetermined:
        m_ports.access.requestMicrophone([this, self = QPointer(this), asked = std::weak_ptr(m_model)](bool isGranted) {
            if (self)
                m_ports.time.async(this, [this, asked, isGranted] { startAnswered(asked, isGranted); });
        });
        break;
    case MicrophoneAuthorization::restricted:
    case MicrophoneAuthorization::denied:
        alertSoon();
        break;
    }
}

void RecordingSelection::startAnswered(const std::weak_ptr<ScreenRecorderSelectionModel> &asked, bool isGranted) {
    const auto model = asked.lock();
    if (!model || model != m_model)
        return; // the person has given it up meanwhile, or an earlier answer has started it
    if (isGranted) {
        select(true);
        return;
    }
    switch (m_ports.access.microphoneAuthorization()) {
    case MicrophoneAuthorization::authorized:
        break;
    case MicrophoneAuthorization::notDetermined:
        m_ports.access.requestMicrophone([](bool) {});
        break;
    case MicrophoneAuthorization::restricted:
    case MicrophoneAuthorization::denied:
        alertSoon();
        break;
    }
}

void RecordingSelection::select(bool includeAudio) {
    const QRectF raw = m_model->selection().value_or(QRectF());
    const RecordingArea area{
        .appKitRect = {raw.x(), m_model->size().height() - raw.y() - raw.height(), raw.width(), raw.height()},
        .rawSwiftUIRect = raw,
        .screen = m_screen,
        .includeAudio = includeAudio};
    const int delay = m_model->timerDelay();
    clear();
    m_actions.onSelect(area, delay);
}

} // namespace tavrine
