#pragma once

#include "ports/InterfaceCounters.h"

#include <map>
#include <string>

namespace tavrine {

/// Interfaces that a test makes, and traffic on them.
class FakeInterfaceCounters final : public InterfaceCounters {
public:
    /// A new interface, or one that is replaced.
    void set(const std::string &name, const InterfaceAddress &entry) { m_entries[name] = entry; }
    void add(const std::string &name, quint32 flags = interfaceFlag::up | interfaceFlag::running) {
        set(name, {.flags = flags, .isLinkLayer = true, .data = InterfaceData{}});
    }
    void remove(const std::string &name) { m_entries.erase(name); }
    void setFlags(const std::string &name, quint32 flags) { m_entries.at(name).flags = flags; }

    void receive(const std::string &name, quint32 bytes) { m_entries.at(name).data->inputBytes += bytes; }
    void send(const std::string &name, quint32 bytes) { m_entries.at(name).data->outputBytes += bytes; }

    void failNext() { m_failsNext = true; }
    [[nodiscard]] int calls() const { return m_calls; }

    [[nodiscard]] std::optional<std::vector<InterfaceAddress>> interfaces() override {
        ++m_calls;
        if (std::exchange(m_failsNext, false))
            return std::nullopt;
        std::vector<InterfaceAddress> list;
        for (const auto &[name, entry] : m_entries)
            list.push_back(entry);
        return list;
    }

private:
    std::map<std::string, InterfaceAddress> m_entries;
    int m_calls = 0;
    bool m_failsNext = false;
};

} // namespace tavrine
