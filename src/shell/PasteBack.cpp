#include "shell/PasteBack.h"

#include "base/NotificationCenter.h"
#include "base/Print.h"
#include "base/Time.h"
#include "base/VirtualKeys.h"
#include "ports/ApplicationActivator.h"
#include "ports/EventMonitors.h"
#include "ports/EventPoster.h"

namespace tavrine {
namespace {

constexpr int longestWait = 12; ///< rounds
constexpr Seconds waitRound{0.05};
constexpr Seconds settling{0.08};  ///< between the target's coming to the front and the keystroke
constexpr int longestHold = 100;   ///< rounds: twice as long as a hot key holds the keyboard
constexpr Seconds holdRound{0.02}; ///< until a keystroke that was held back is tried again
constexpr Seconds blindDelay{0.2}; ///< where nothing tells that a target is in front

/// Why the last keystroke was not typed; empty when it was.
QString failureOf(const EventPoster &poster) {
    const QString why = poster.failure();
    return why.isEmpty() && poster.isHeldBack() ? QStringLiteral("the keyboard was not free") : why;
}

} // namespace

PasteBack::PasteBack(Workspace &workspace, Time &time) : m_workspace(workspace), m_time(time) {}

PasteBack::~PasteBack() = default;

void PasteBack::listen() {
    m_deactivations = m_workspace.notificationCenter().addObserver(
        QLatin1String(Workspace::didDeactivateApplicationNotification), [this](const Notification &notification) {
            const QVariant application = notification.userInfo.value(QLatin1String(Workspace::applicationKey));
            if (application.canConvert<RunningApplication>())
                appDidDeactivate(application.value<RunningApplication>());
        });
}

void PasteBack::appDidDeactivate(const RunningApplication &application) {
    if (!isThisProgram(application))
        m_previous = application;
}

void PasteBack::noteFrontmost() {
    if (const auto front = m_workspace.frontmostApplication())
        appDidDeactivate(*front);
}

void PasteBack::paste(ApplicationActivator &activator, EventPoster &poster, const std::function<void()> &notTyped) {
    const Keystroke keystroke{poster, notTyped};
    ++m_underWay;
    if (m_previous && !activator.isRunning(*m_previous))
        m_previous.reset();
    if (!m_previous) {
        activator.hide();
        postAfter(keystroke, blindDelay);
        return;
    }
    activator.activate(*m_previous);
    waitForActivation(keystroke, *m_previous, 0);
}

void PasteBack::waitForActivation(const Keystroke &keystroke, const RunningApplication &target, int attempt) {
    const auto front = m_workspace.frontmostApplication();
    if (front && isSameApplication(*front, target))
        postAfter(keystroke, settling);
    else if (attempt < longestWait)
        m_time.asyncAfter(waitRound, this,
                          [this, keystroke, target, attempt] { waitForActivation(keystroke, target, attempt + 1); });
    else
        postAfter(keystroke, blindDelay); // never dropped: the person sees where it went
}

void PasteBack::postAfter(const Keystroke &keystroke, Seconds delay) {
    m_time.asyncAfter(delay, this, [this, keystroke] { post(keystroke, 0); });
}

/// A hot key that goes down at this moment holds the keyboard for the panel that it opens: the keystroke comes before
/// it.
void PasteBack::post(const Keystroke &keystroke, int attempt) {
    EventPoster &poster = keystroke.poster;
    poster.postKeyboardEvent(virtualKey::v, true, modifierFlag::command);
    poster.postKeyboardEvent(virtualKey::v, false, modifierFlag::command);
    if (poster.isHeldBack() && attempt < longestHold) {
        m_time.asyncAfter(holdRound, this, [this, keystroke, attempt] { post(keystroke, attempt + 1); });
        return;
    }
    if (const QString why = failureOf(poster); !why.isEmpty()) {
        printLine(QStringLiteral("DEBUG: The paste was not typed: ") + why);
        if (keystroke.notTyped)
            keystroke.notTyped();
    }
    ended();
}

void PasteBack::ended() {
    if (--m_underWay > 0)
        return;
    for (const auto &[context, next] : std::exchange(m_waiting, {}))
        if (context)
            next();
}

void PasteBack::afterPastes(QObject *context, std::function<void()> next) {
    if (isPasting())
        m_waiting.emplace_back(context, std::move(next));
    else
        next();
}

} // namespace tavrine
