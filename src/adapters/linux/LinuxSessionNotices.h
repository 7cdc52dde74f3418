#pragma once

#include "adapters/linux/SessionEvents.h"
#include "ports/SessionNotices.h"

#include <QObject>

#include <memory>
#include <vector>

namespace tavrine {

/// What happens to a session, as every Linux desktop tells it: waking and unlocking from logind and the lock screen,
/// the keyboard from the toolkit. Lives on the main thread.
///
/// On Wayland this is all. A compositor tells nobody that its screens were switched on, that another workspace is shown
/// or that windows are shown again.
class LinuxSessionNotices : public QObject, public SessionNotices {
public:
    ~LinuxSessionNotices() override;

    [[nodiscard]] bool tells(SessionNotice notice) const override;
    [[nodiscard]] Token follow(std::function<void(SessionNotice)> handler) final;

protected:
    /// The first begins to follow.
    virtual void begin();
    /// The last has ended. Followers are told in turns of their own, so nothing of this is at work.
    virtual void end();
    void tell(SessionNotice notice);

private:
    using Handler = std::function<void(SessionNotice)>;

    std::vector<std::shared_ptr<Handler>> m_followers;
    SessionEvents m_events;
    SessionEvents::Listening m_listening;
    std::unique_ptr<QObject> m_toolkit; ///< holds the connections to its signals
    bool m_hasKeyboard = false;
};

} // namespace tavrine
