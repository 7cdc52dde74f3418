#pragma once

#include "base/Date.h"
#include "ports/Workspace.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tavrine {

class ApplicationActivator;
class EventPoster;
class Time;

/// The program that the person came from, and the paste into it. Lives on the main thread from the launch on. It hears
/// of the programs that are left, and the last of them that is not this one is the target.
class PasteBack final : public QObject {
    Q_OBJECT

public:
    /// Both outlive it.
    PasteBack(Workspace &workspace, Time &time);
    ~PasteBack() override;

    /// Hears of the programs from now on.
    void listen();

    /// The selector of `didDeactivateApplicationNotification`.
    void appDidDeactivate(const RunningApplication &application);
    /// The program in front is about to be left. The notice that follows says the same, but may come late.
    void noteFrontmost();
    /// May have quit meanwhile.
    [[nodiscard]] const std::optional<RunningApplication> &previouslyActiveApplication() const { return m_previous; }

    /// Brings the target to the front and types the paste there once it is, or after a while all the same. Without a
    /// target this program gives way, and the keystroke goes to whatever has the keyboard then. Both hands outlive the
    /// wait. `notTyped` comes in place of a keystroke that nobody can type: a keyboard that stays held for two seconds
    /// is not waited for any longer, for what comes later would surprise whoever writes on.
    void paste(ApplicationActivator &activator, EventPoster &poster, const std::function<void()> &notTyped = {});

    /// From a paste until its keystroke is typed, or given up.
    [[nodiscard]] bool isPasting() const { return m_underWay > 0; }
    /// Calls `next` when no keystroke is to be typed any more; at once where none is. A panel that is shown before that
    /// would get what is meant for the program behind it. Nothing is called once `context` is gone.
    void afterPastes(QObject *context, std::function<void()> next);

private:
    struct Keystroke {
        EventPoster &poster;
        std::function<void()> notTyped;
    };
    void waitForActivation(const Keystroke &keystroke, const RunningApplication &target, int attempt);
    void postAfter(const Keystroke &keystroke, Seconds delay);
    void post(const Keystroke &keystroke, int attempt);
    void ended();

    Workspace &m_workspace;
    Time &m_time;
    std::optional<RunningApplication> m_previous;
    std::shared_ptr<void> m_deactivations;
    std::vector<std::pair<QPointer<QObject>, std::function<void()>>> m_waiting; ///< for the last keystroke
    int m_underWay = 0;
};

} // namespace tavrine
