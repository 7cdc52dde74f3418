#pragma once

#include "shell/FeatureFlags.h"

#include <QObject>

#include <array>
#include <functional>
#include <optional>

namespace tavrine {

class AppDelegate;

/// What flipping a switch does to its tool. Lives on the main thread; AppDelegate owns it and makes it in its place
/// within the launch.
///
///  1. A flag that does not change does nothing, nor does the value that it has when the object is made.
///  2. Reactions run in a later turn of the main queue, in the order of the changes, each with its own value: a flag
///     that goes off and on again does both.
class FlagReactions : public QObject {
    Q_OBJECT

public:
    explicit FlagReactions(AppDelegate &delegate);

private:
    void react(Feature feature, bool isOn);
    void unloadEditor();
    void applyKeepAwake();
    void deliver(std::function<void()> work);

    AppDelegate &m_delegate;
    std::array<bool, featureTexts.size()> m_last{};
};

} // namespace tavrine
