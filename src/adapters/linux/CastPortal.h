#pragma once

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

class QDBusServiceWatcher;

namespace tavrine {

/// Whether a portal of this session shows programs its screens, as it says itself. It is asked from the first question
/// on, and anew when it comes back; nobody waits for it. Main thread.
class CastPortal final : public QObject {
public:
    enum class Answer { asking, there, missing };

    CastPortal();
    ~CastPortal() override;

    [[nodiscard]] Answer answer();

private:
    void ask();

    bool m_hasBegun = false;
    Answer m_answer = Answer::asking;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
};

} // namespace tavrine
