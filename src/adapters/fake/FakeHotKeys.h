#pragma once

#include "base/VirtualKeys.h"
#include "ports/HotKeys.h"

#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace tavrine {

/// A keyboard that a test presses.
class FakeHotKeys final : public HotKeys {
public:
    struct Registration {
        int keyCode;
        quint32 modifiers;
        HotKeyId id;
        bool operator==(const Registration &) const = default;
    };

    void installHandler(Handler handler) override {
        ++m_installations;
        if (m_onInstallation)
            m_onInstallation();
        m_handler = std::move(handler);
    }
    void removeHandler() override { m_handler = nullptr; }

    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override {
        const std::pair combination{keyCode, modifiers};
        bool isTaken = !xKeycode(keyCode) || m_takenElsewhere.contains(combination);
        for (const auto &[ref, other] : m_registrations)
            isTaken = isTaken || combination == std::pair{other.keyCode, other.modifiers};
        if (isTaken)
            return std::nullopt;
        m_registrations[++m_lastRef] = {keyCode, modifiers, id};
        return m_lastRef;
    }
    void unregisterHotKey(HotKeyRef ref) override { m_registrations.erase(ref); }
    [[nodiscard]] HotKeyTraits traits() const override { return m_traits; }
    void setTitle(HotKeyId id, const QString &title) override { m_titles[id.id] = title; }
    void setOnHeld(std::function<void(HotKeyRef, bool)> handler) override { m_onHeld = std::move(handler); }

    /// What the desktop that keeps the keys cannot promise.
    void setTraits(const HotKeyTraits &traits) { m_traits = traits; }
    /// Such a desktop says what became of a combination.
    void tellHeld(int keyCode, quint32 modifiers, bool isHeld) {
        for (const auto &[ref, registration] : std::map(m_registrations))
            if (registration.keyCode == keyCode && registration.modifiers == modifiers && m_onHeld)
                m_onHeld(ref, isHeld);
    }
    [[nodiscard]] QString title(quint32 id) const {
        const auto found = m_titles.find(id);
        return found == m_titles.end() ? QString() : found->second;
    }

    /// Another program takes the combination, or lets it go.
    void takeElsewhere(int keyCode, quint32 modifiers) { m_takenElsewhere.insert({keyCode, modifiers}); }
    void freeElsewhere(int keyCode, quint32 modifiers) { m_takenElsewhere.erase({keyCode, modifiers}); }

    /// The person presses the combination and lets it go.
    void press(int keyCode, quint32 modifiers) {
        for (const auto &[ref, registration] : m_registrations)
            if (registration.keyCode == keyCode && registration.modifiers == modifiers) {
                if (const Handler handler = m_handler)
                    (void)handler(HotKeyId(registration.id));
                return;
            }
    }

    /// A press arrives with a number that no registration has.
    void pressUnknown(quint32 id) {
        if (m_handler)
            (void)m_handler({0, id});
    }

    /// Called whenever the program registers its keys anew.
    void setOnInstallation(std::function<void()> onInstallation) { m_onInstallation = std::move(onInstallation); }
    [[nodiscard]] bool hasHandler() const { return m_handler != nullptr; }
    [[nodiscard]] int installations() const { return m_installations; }
    /// What is registered now, in the order of registering.
    [[nodiscard]] std::vector<Registration> registrations() const {
        std::vector<Registration> all;
        for (const auto &[ref, registration] : m_registrations)
            all.push_back(registration);
        return all;
    }

private:
    Handler m_handler;
    std::function<void()> m_onInstallation;
    std::map<HotKeyRef, Registration> m_registrations;
    std::set<std::pair<int, quint32>> m_takenElsewhere;
    std::map<quint32, QString> m_titles;
    std::function<void(HotKeyRef, bool)> m_onHeld;
    HotKeyTraits m_traits;
    HotKeyRef m_lastRef = 0;
    int m_installations = 0;
};

} // namespace tavrine
