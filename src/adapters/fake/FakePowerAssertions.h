#pragma once

#include "adapters/fake/VirtualTime.h"
#include "ports/PowerAssertions.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tavrine {

/// A machine with one service that keeps it awake, which answers a turn later, unless the test says otherwise.
class FakePowerAssertions final : public PowerAssertions {
public:
    static constexpr int refused = 5;

    /// What is held, or asked for.
    struct Assertion {
        PowerAssertionType type{};
        QString name;
        bool appliesOnLidClose = false;
        bool isAnswered = false;
        std::function<void(int)> created;
    };

    explicit FakePowerAssertions(VirtualTime &time) : m_time(time) {}

    [[nodiscard]] quint32 createWithName(PowerAssertionType type, const QString &name,
                                         std::function<void(int)> created) override {
        const quint32 id = ++m_created;
        m_assertions[id] = {type, name, false, false, std::move(created)};
        if (!m_isHanging)
            m_time.async([this, id, result = m_isRefusing ? refused : success] { answer(id, result); });
        else
            m_time.asyncAfter(longestAnswer, [this, id] { answer(id, refused); });
        return id;
    }
    void setAppliesOnLidClose(quint32 id) override {
        if (const auto found = m_assertions.find(id); found != m_assertions.end())
            found->second.appliesOnLidClose = true;
    }
    void release(quint32 id) override { m_assertions.erase(id); }

    /// From now on the service refuses, or does not answer.
    void setRefusing(bool isRefusing) { m_isRefusing = isRefusing; }
    void setHanging(bool isHanging) { m_isHanging = isHanging; }

    [[nodiscard]] const std::map<quint32, Assertion> &held() const { return m_assertions; }
    [[nodiscard]] int createdCount() const { return static_cast<int>(m_created); }

    // What the machine does.
    [[nodiscard]] bool screenStaysOn() const { return holds(PowerAssertionType::noDisplaySleep); }
    [[nodiscard]] bool staysUp() const { return !m_assertions.empty(); }
    [[nodiscard]] bool suspendsWhenAsked() const { return !holds(PowerAssertionType::preventSystemSleep); }
    [[nodiscard]] bool staysUpWithLidClosed() const {
        return std::ranges::any_of(m_assertions, [](const auto &each) { return each.second.appliesOnLidClose; });
    }

private:
    [[nodiscard]] bool holds(PowerAssertionType type) const {
        return std::ranges::any_of(m_assertions, [type](const auto &each) { return each.second.type == type; });
    }
    void answer(quint32 id, int result) {
        const auto found = m_assertions.find(id);
        if (found == m_assertions.end() || std::exchange(found->second.isAnswered, true))
            return;
        const auto created = found->second.created;
        if (result != success)
            m_assertions.erase(found);
        created(result);
    }

    VirtualTime &m_time;
    std::map<quint32, Assertion> m_assertions;
    quint32 m_created = 0;
    bool m_isRefusing = false;
    bool m_isHanging = false;
};

} // namespace tavrine
