#pragma once

#include "ports/EventMonitors.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tavrine {

/// Events that a test makes. Another program is active until the test says otherwise.
class FakeEventMonitors final : public EventMonitors {
public:
    [[nodiscard]] std::unique_ptr<EventMonitor> addGlobalMonitor(quint32 mask, GlobalHandler handler) override {
        if (m_isBroken)
            return nullptr;
        return add(mask, true, [handler = std::move(handler)](const InputEvent &event) {
            handler(event);
            return false;
        });
    }
    [[nodiscard]] std::unique_ptr<EventMonitor> addLocalMonitor(quint32 mask, LocalHandler handler) override {
        if (m_isLocalBroken)
            return nullptr;
        return add(mask, false, std::move(handler));
    }

    /// Whether this program has the keyboard.
    void setActive(bool isActive) { m_isActive = isActive; }

    /// An event that goes to the active program. True when a monitor swallowed it.
    bool send(const InputEvent &event) { return tell(event, !m_isActive); }
    void flags(quint32 modifierFlags) {
        send({.type = eventMask::flagsChanged, .modifierFlags = modifierFlags, .keyCode = -1, .scrollDelta = {}});
    }
    void keyDown(int keyCode) {
        send({.type = eventMask::keyDown, .modifierFlags = 0, .keyCode = keyCode, .scrollDelta = {}});
    }
    /// What the mouse does goes to the window under the pointer, whoever is active, and until all buttons are up to the
    /// one where the first was pressed.
    void mouse(quint32 type, bool isForOurWindow = false) {
        tell({.type = type, .modifierFlags = 0, .keyCode = -1, .scrollDelta = {}}, !isForOurWindow);
    }
    void mouseDown(quint32 type, bool isOverOurWindow) { mouse(type, isOverOurWindow); }

    /// No global monitor can be installed while it is.
    void setBroken(bool isBroken) { m_isBroken = isBroken; }

    /// No local one.
    void setLocalBroken(bool isBroken) { m_isLocalBroken = isBroken; }

    [[nodiscard]] int globalCount() const { return count(true); }
    [[nodiscard]] int localCount() const { return count(false); }

private:
    struct Entry {
        quint32 mask;
        bool isGlobal;
        LocalHandler handler;
    };
    struct Monitor final : EventMonitor {
        explicit Monitor(std::shared_ptr<Entry> entry) : m_entry(std::move(entry)) {}
        ~Monitor() override { m_entry->handler = nullptr; }
        std::shared_ptr<Entry> m_entry;
    };

    std::unique_ptr<EventMonitor> add(quint32 mask, bool isGlobal, LocalHandler handler) {
        auto entry = std::make_shared<Entry>(Entry{mask, isGlobal, std::move(handler)});
        m_entries.push_back(entry);
        return std::make_unique<Monitor>(entry);
    }
    bool tell(const InputEvent &event, bool isGlobal) {
        const auto present = m_entries;
        for (const auto &entry : present)
            if (entry->isGlobal == isGlobal && (entry->mask & event.type))
                if (const LocalHandler handler = entry->handler; handler && handler(event))
                    return true;
        return false;
    }
    [[nodiscard]] int count(bool isGlobal) const {
        return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(), [&](const auto &entry) {
            return entry->handler && entry->isGlobal == isGlobal;
        }));
    }

    std::vector<std::shared_ptr<Entry>> m_entries;
    bool m_isActive = false;
    bool m_isBroken = false;
    bool m_isLocalBroken = false;
};

} // namespace tavrine
