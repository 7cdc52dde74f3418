#pragma once

#include "base/Time.h"
#include "ports/SessionNotices.h"

#include <algorithm>
#include <vector>

namespace tavrine {

/// A session to which a test lets things happen.
class FakeSessionNotices final : public SessionNotices {
public:
    explicit FakeSessionNotices(Time &time) : m_time(time) {}

    [[nodiscard]] Token follow(std::function<void(SessionNotice)> handler) override {
        auto token = std::make_shared<Handler>(std::move(handler));
        m_followers.push_back(token);
        return token;
    }

    void happen(SessionNotice notice) {
        m_time.async([followers = m_followers, notice] {
            for (const auto &follower : followers)
                if (const auto handler = follower.lock())
                    (*handler)(notice);
        });
    }
    [[nodiscard]] int following() const {
        return static_cast<int>(
            std::count_if(m_followers.begin(), m_followers.end(), [](const auto &token) { return !token.expired(); }));
    }

private:
    using Handler = std::function<void(SessionNotice)>;
    Time &m_time;
    std::vector<std::weak_ptr<Handler>> m_followers;
};

} // namespace tavrine
