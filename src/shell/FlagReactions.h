#pragma once

#include "shell/FeatureFlags.h"

#include <QObject>

#include <array>
#include <functional>

namespace tavrine {

class HotKeyCenter;
class Shell;
class StatusDisplay;
class StatusMenu;
class Tools;

/// What flipping a switch does to its tool, and to what the shell shows of it. Lives on the main thread; AppDelegate
/// owns it and makes it in its place within the launch.
///
///  1. A flag that does not change does nothing, nor does the value that it has when the object is made.
///  2. Reactions run in a later turn of the main queue, in the order of the changes, each with its own value: a flag
///     that goes off and on again does both.
class FlagReactions : public QObject {
    Q_OBJECT

public:
    /// All outlive the reactions.
    struct Parts {
        Shell &shell;
        Tools &tools;
        HotKeyCenter &hotKeys;
        StatusMenu &menu;
        StatusDisplay &display;
    };

    explicit FlagReactions(const Parts &parts);

private:
    void react(Feature feature, bool isOn);
    void deliver(std::function<void()> work);

    Parts m_parts;
    std::array<bool, featureTexts.size()> m_last{};
};

} // namespace tavrine
