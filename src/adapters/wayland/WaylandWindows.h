#pragma once

#include <QString>

#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace tavrine {

class WaylandReader;

/// A window of some program, as the compositor tells it. Panels and menus are none.
struct WaylandWindow {
    quint32 number = 0;    ///< ours, never used again
    QString applicationId; ///< of an X program, its window's class
    QString title;
    qint64 processIdentifier = 0; ///< 0 where the compositor does not tell
    bool isActive = false;
};

/// The windows of all programs, in the order of their coming, kept up to date by the compositor's notices.
///
/// Lives on the main thread, on a connection that sleeps until something changes. Shared by who asks.
class WaylandWindows {
public:
    /// Ends the following when it is released.
    using Following = std::shared_ptr<void>;

    /// By the foreign toplevels of wlroots or by Plasma's window management, whichever is offered; where neither is,
    /// as to a program that KWin does not know, there are no windows.
    /// With part in that connection; null for one of its own.
    [[nodiscard]] static std::shared_ptr<WaylandWindows> make(std::shared_ptr<WaylandReader> reader = nullptr);

    virtual ~WaylandWindows() = default;

    /// What the compositor knows now: waits for its answer, for a tenth of a second at most. False when it stands
    /// still.
    virtual bool refresh() { return true; }
    virtual void activate(quint32 /*number*/) {}
    virtual void minimize(quint32 /*number*/) {}

    [[nodiscard]] const std::vector<WaylandWindow> &all() const { return m_windows; }
    /// The one that has the keyboard; null for none, as while a panel has it.
    [[nodiscard]] const WaylandWindow *active() const;
    [[nodiscard]] const WaylandWindow *find(quint32 number) const;
    /// The number of the one that was active last, be it for a moment in which a panel was without the keyboard: where
    /// a panel gets it back each time, that tells where the person went meanwhile. 0 before the first.
    [[nodiscard]] quint32 lastActive() const { return m_lastActive; }

    /// `changed` is called after each change, within `refresh` too. It may not release what it follows with.
    [[nodiscard]] Following follow(std::function<void()> changed);

protected:
    /// The list's, to be filled in; stays where it is until the next window comes or goes.
    [[nodiscard]] WaylandWindow *known(quint32 number);
    void add(const WaylandWindow &window);
    void remove(quint32 number);
    void removeAll();
    void tell();
    [[nodiscard]] quint32 nextNumber() { return ++m_lastNumber; }
    /// At once, whatever is told of it together with that.
    void noteActive(quint32 number) { m_lastActive = number; }

private:
    using Followers = std::list<std::function<void()>>;

    std::vector<WaylandWindow> m_windows;
    std::shared_ptr<Followers> m_followers = std::make_shared<Followers>();
    quint32 m_lastNumber = 0;
    quint32 m_lastActive = 0;
};

} // namespace tavrine
