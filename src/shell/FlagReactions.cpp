#include "shell/FlagReactions.h"

#include "base/Time.h"
#include "shell/HotKeyCenter.h"
#include "shell/Shell.h"
#include "shell/StatusDisplay.h"
#include "shell/StatusMenu.h"
#include "shell/tools/Tools.h"

namespace tavrine {
namespace {

/// What the shell does beside the tool itself.
struct Reaction {
    Feature feature;
    bool registersHotKeys = false; ///< the tool has a trigger
    bool redrawsItem = false;
    StatusMenuItem entry = StatusMenuItem::separator; ///< its entry of the menu; the separator for none
};

constexpr Reaction reactions[] = {
    {.feature = Feature::snippingTool, .registersHotKeys = true},
    {.feature = Feature::screenRecorder, .registersHotKeys = true},
    {.feature = Feature::clipboardHistory, .registersHotKeys = true, .entry = StatusMenuItem::clipboard},
    {.feature = Feature::networkSpeed, .redrawsItem = true},
    {.feature = Feature::emojiPicker, .registersHotKeys = true, .entry = StatusMenuItem::emojiPicker},
};

Reaction reactionOf(Feature feature) {
    for (const Reaction &reaction : reactions)
        if (reaction.feature == feature)
            return reaction;
    return {.feature = feature};
}

} // namespace

FlagReactions::FlagReactions(const Parts &parts) : m_parts(parts) {
    FeatureFlags &flags = parts.shell.flags();
    for (const FeatureText &text : featureTexts)
        m_last[static_cast<size_t>(text.feature)] = flags.isOn(text.feature);

    connect(&flags, &FeatureFlags::published, this, [this](Feature feature, bool isOn) {
        bool &last = m_last[static_cast<size_t>(feature)];
        if (last == isOn)
            return;
        last = isOn;
        deliver([this, feature, isOn] { react(feature, isOn); });
    });
    auto &experience = parts.shell.experienceSettings();
    connect(&experience, &ClipboardExperienceSettings::selectedExperiencePublished, this,
            [this, last = experience.selectedExperience()](ClipboardExperience selected) mutable {
                if (last == selected)
                    return;
                last = selected;
                deliver([this] {
                    if (PanelController *panels = m_parts.shell.panelsIfMade())
                        panels->orderOutClipboardPanels();
                    m_parts.menu.refreshClipboardMenuItem();
                });
            });
    const auto tellDisplay = [this, &keepAwake = parts.tools.keepAwake()] {
        deliver([this, state = keepAwake.state()] { m_parts.display.setKeepAwake(state); });
    };
    connect(&parts.tools.keepAwake(), &KeepAwakeTool::stateChanged, this, tellDisplay);
    tellDisplay(); // its first value counts as well
}

void FlagReactions::deliver(std::function<void()> work) {
    m_parts.shell.time().async(this, std::move(work));
}

void FlagReactions::react(Feature feature, bool isOn) {
    const Reaction reaction = reactionOf(feature);
    if (reaction.entry != StatusMenuItem::separator)
        m_parts.menu.setEnabled(reaction.entry, isOn);
    if (Tool *tool = m_parts.tools[feature])
        tool->setOn(isOn);
    if (reaction.registersHotKeys)
        m_parts.hotKeys.registerHotkeys(); // and refreshes the entries
    if (reaction.redrawsItem)
        m_parts.display.updateStatusItem();
}

} // namespace tavrine
