#include "adapters/linux/LinuxPowerAssertions.h"

#include <QTimer>

#include <algorithm>

namespace tavrine {
namespace {

PowerNeeds needsOf(PowerAssertionType type, bool appliesOnLidClose) {
    return {.display = type == PowerAssertionType::noDisplaySleep,
            .idleSleep = true,
            .sleep = type == PowerAssertionType::preventSystemSleep,
            .lid = appliesOnLidClose};
}

bool isKept(PowerAssertionType type, const PowerNeeds &held) {
    switch (type) {
    case PowerAssertionType::noDisplaySleep:
        return held.display;
    case PowerAssertionType::noIdleSleep:
        return held.idleSleep;
    case PowerAssertionType::preventSystemSleep:
        break;
    }
    return held.sleep;
}

void add(PowerNeeds &needs, const PowerNeeds &others) {
    needs.display |= others.display;
    needs.idleSleep |= others.idleSleep;
    needs.sleep |= others.sleep;
    needs.lid |= others.lid;
}

} // namespace

LinuxPowerAssertions::LinuxPowerAssertions(PowerKeepers keepers, PowerKeepers lastResorts)
    : m_keepers(std::move(keepers)), m_lastResorts(std::move(lastResorts)) {
    for (const PowerKeepers *each : {&m_keepers, &m_lastResorts})
        for (const auto &keeper : *each)
            keeper->setOnChange([this] { applySoon(); });
}

LinuxPowerAssertions::~LinuxPowerAssertions() = default;

quint32 LinuxPowerAssertions::createWithName(PowerAssertionType type, const QString &name,
                                             std::function<void(int)> created) {
    const quint32 id = ++m_lastId;
    m_assertions[id] = {type, name, std::move(created)};
    applySoon();
    QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(longestAnswer), Qt::PreciseTimer, this,
                       [this, id] { finish(id, notTaken); });
    return id;
}

void LinuxPowerAssertions::setAppliesOnLidClose(quint32 id) {
    if (const auto found = m_assertions.find(id); found != m_assertions.end()) {
        found->second.appliesOnLidClose = true;
        applySoon();
    }
}

void LinuxPowerAssertions::release(quint32 id) {
    if (m_assertions.erase(id) > 0)
        applySoon();
}

/// At the end of the turn: what is released and asserted anew in one turn is never given back.
void LinuxPowerAssertions::applySoon() {
    if (std::exchange(m_isApplyPosted, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isApplyPosted = false;
            apply();
            answer();
        },
        Qt::QueuedConnection);
}

void LinuxPowerAssertions::apply() {
    PowerNeeds needs;
    QString why;
    for (const auto &[id, assertion] : m_assertions) {
        add(needs, needsOf(assertion.type, assertion.appliesOnLidClose));
        why = assertion.name;
    }
    for (const auto &keeper : m_keepers)
        keeper->want(needs, why);
    askLastResorts(needs, why);
}

void LinuxPowerAssertions::askLastResorts(const PowerNeeds &needs, const QString &why) {
    bool isKeptUp = std::ranges::any_of(m_keepers, [](const auto &keeper) { return keeper->held().idleSleep; });
    for (const auto &keeper : m_lastResorts) {
        const bool isWanted = needs.display || (needs.idleSleep && !isKeptUp);
        keeper->want(isWanted ? needs : PowerNeeds{}, why);
        isKeptUp = isKeptUp || keeper->held().idleSleep;
    }
}

PowerNeeds LinuxPowerAssertions::held() const {
    PowerNeeds needs;
    for (const PowerKeepers *each : {&m_keepers, &m_lastResorts})
        for (const auto &keeper : *each)
            add(needs, keeper->held());
    return needs;
}

bool LinuxPowerAssertions::isAsking() const {
    const auto asks = [](const auto &keeper) { return keeper->isAsking(); };
    return std::ranges::any_of(m_keepers, asks) || std::ranges::any_of(m_lastResorts, asks);
}

void LinuxPowerAssertions::answer() {
    const PowerNeeds now = held();
    const bool isOver = !isAsking();
    std::vector<std::pair<quint32, int>> results;
    for (const auto &[id, assertion] : m_assertions)
        if (assertion.created && (isKept(assertion.type, now) || isOver))
            results.emplace_back(id, isKept(assertion.type, now) ? success : notTaken);
    for (const auto &[id, result] : results)
        finish(id, result);
}

/// Nothing for one that was answered or released: its time limit comes here too.
void LinuxPowerAssertions::finish(quint32 id, int result) {
    const auto found = m_assertions.find(id);
    if (found == m_assertions.end() || !found->second.created)
        return;
    const auto created = std::exchange(found->second.created, nullptr);
    if (result != success)
        release(id);
    created(result);
}

} // namespace tavrine
