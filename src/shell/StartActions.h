#pragma once

#include <QString>

#include <functional>

namespace tavrine {

class HotKeyCenter;
class Tools;
enum class Feature;
enum class Trigger;

/// What a further start of the program asks for, or a call over the session bus: the way in for shortcuts that a person
/// binds in the desktop's own settings. A trigger is used as by its hot key. Lives on the main thread.
class StartActions {
public:
    struct Actions {
        std::function<bool(Feature)> isOn;
        std::function<void()> openSettings;
    };

    StartActions(HotKeyCenter &hotKeys, Tools &tools, Actions actions)
        : m_hotKeys(hotKeys), m_tools(tools), m_actions(std::move(actions)) {}

    /// False for a word that nobody knows and for a tool that is switched off: the program comes forward.
    [[nodiscard]] bool run(const QString &action);

private:
    [[nodiscard]] bool press(Trigger trigger);
    [[nodiscard]] bool openShelf();

    HotKeyCenter &m_hotKeys;
    Tools &m_tools;
    Actions m_actions;
};

} // namespace tavrine
