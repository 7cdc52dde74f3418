#pragma once

#include "ports/EventPoster.h"

#include <functional>
#include <vector>

namespace tavrine {

/// Keeps what was posted, in order.
class FakeEventPoster final : public EventPoster {
public:
    struct Posted {
        int keyCode;
        bool isKeyDown;
        quint32 flags;
        bool operator==(const Posted &) const = default;
    };

    void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) override {
        if (isKeyDown)
            m_isHeldBack = m_heldBack > 0 && m_heldBack-- > 0;
        if (m_isHeldBack || !m_failure.isEmpty())
            return;
        m_posted.push_back({keyCode, isKeyDown, flags});
        if (m_onPost)
            m_onPost();
    }

    [[nodiscard]] bool isHeldBack() const override { return m_isHeldBack; }
    [[nodiscard]] QString failure() const override { return m_failure; }
    /// Nothing is typed from here on.
    void setFailure(const QString &failure) { m_failure = failure; }
    /// The next so many key-downs are not typed.
    void holdBack(int count) { m_heldBack = count; }

    [[nodiscard]] const std::vector<Posted> &posted() const { return m_posted; }
    /// Called at each event, to look at the world in that moment.
    void setOnPost(std::function<void()> onPost) { m_onPost = std::move(onPost); }

private:
    std::vector<Posted> m_posted;
    std::function<void()> m_onPost;
    QString m_failure;
    int m_heldBack = 0;
    bool m_isHeldBack = false;
};

} // namespace tavrine
