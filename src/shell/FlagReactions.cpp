#include "shell/FlagReactions.h"

#include "base/Print.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardExperienceSettings.h"
#include "clipboard/ClipboardManager.h"
#include "ports/StatusItem.h"
#include "shell/AppDelegate.h"
#include "shell/StatusIcon.h"
#include "shell/StatusMenu.h"
#include "shell/ToolHooks.h"

#include <QPointer>
#include <QWidget>

namespace tavrine {
namespace {

constexpr Seconds remeasureDelay{0.05};
constexpr Seconds advancedPanelAnimation{0.36};

} // namespace

FlagReactions::FlagReactions(AppDelegate &delegate) : m_delegate(delegate) {
    FeatureFlags &flags = delegate.flags();
    ToolHooks &hooks = delegate.hooks();
    for (const FeatureText &text : featureTexts)
        m_last[static_cast<size_t>(text.feature)] = flags.isOn(text.feature);

    connect(&flags, &FeatureFlags::published, this, [this](Feature feature, bool isOn) {
        bool &last = m_last[static_cast<size_t>(feature)];
        if (last == isOn)
            return;
        last = isOn;
        deliver([this, feature, isOn] { react(feature, isOn); });
    });
    auto &experience = delegate.experienceSettings();
    connect(&experience, &ClipboardExperienceSettings::selectedExperiencePublished, this,
            [this, last = experience.selectedExperience()](ClipboardExperience selected) mutable {
                if (last == selected)
                    return;
                last = selected;
                deliver([this] {
                    m_delegate.hooks().orderOutClipboardPanels();
                    m_delegate.hooks().removePanelMonitors();
                    m_delegate.refreshClipboardMenuItem();
                });
            });
    const QPointer<FlagReactions> self(this);
    const auto keepAwakeChanged = [self] {
        if (self)
            self->deliver([self] { self->applyKeepAwake(); });
    };
    hooks.setOnKeepAwakeChange(keepAwakeChanged);
    keepAwakeChanged(); // the first value counts as well
    connect(&flags, &FeatureFlags::objectWillChange, this, [this] {
        deliver([this] {
            m_delegate.time().asyncAfter(remeasureDelay, this, [this] { m_delegate.hooks().remeasureQuickActions(); });
        });
    });
    const auto advancedPanelChanged = [self] {
        if (self) {
            self->deliver([self] { self->m_delegate.hooks().animateQuickActionsHeight(advancedPanelAnimation); });
        }
    };
    hooks.setOnShowAdvancedPanelChange(advancedPanelChanged);
    advancedPanelChanged();
}

void FlagReactions::deliver(std::function<void()> work) {
    m_delegate.time().async(this, std::move(work));
}

void FlagReactions::react(Feature feature, bool isOn) {
    ToolHooks &hooks = m_delegate.hooks();
    ClipboardManager &clipboard = m_delegate.clipboardManager();
    switch (feature) {
    case Feature::notchShelf:
        if (!isOn)
            hooks.closeNotch();
        else if (!hooks.hasNotch())
            hooks.showNotch();
        break;
    case Feature::snippingTool:
        hooks.registerHotkeys(); // between captures there is nothing else to release
        break;
    case Feature::screenRecorder:
        if (!isOn)
            hooks.unloadScreenRecorder();
        hooks.registerHotkeys();
        break;
    case Feature::tavrineEditor:
        if (!isOn)
            deliver([this] { unloadEditor(); });
        break;
    case Feature::clipboardHistory:
        m_delegate.statusMenu().entry(StatusMenuItem::clipboard).isEnabled = isOn;
        if (isOn) {
            clipboard.setPaused(false);
            clipboard.reloadHistory();
            clipboard.startMonitoring();
        } else {
            clipboard.pauseMonitoring();
            hooks.unloadClipboardPanels();
        }
        hooks.registerHotkeys();
        break;
    case Feature::networkSpeed:
        isOn ? hooks.startMeter() : hooks.stopMeter();
        hooks.updateStatusItem();
        break;
    case Feature::keepAwake:
        if (!isOn)
            hooks.turnOffKeepAwakeIfAwake();
        break;
    case Feature::cleaningMode:
        if (!isOn)
            hooks.stopCleaningIfCleaning();
        break;
    case Feature::loFi:
        if (!isOn)
            hooks.stopLofi();
        break;
    case Feature::emojiPicker:
        m_delegate.statusMenu().entry(StatusMenuItem::emojiPicker).isEnabled = isOn;
        if (!isOn)
            hooks.unloadEmojiPanel();
        hooks.registerHotkeys();
        m_delegate.refreshEmojiMenuItem();
        break;
    }
}

void FlagReactions::unloadEditor() {
    printLine(QStringLiteral("DEBUG: TavrineEditor unloading module and purging memory/CPU resources."));
    if (QWidget *editor = m_delegate.editorWindow()) {
        editor->close();
        m_delegate.setEditorWindow(nullptr);
        m_delegate.restoreAccessoryPolicy();
    }
}

void FlagReactions::applyKeepAwake() {
    const KeepAwakeState state = m_delegate.hooks().keepAwakeState();
    StatusItem &item = m_delegate.statusItem();
    item.setToolTip(state.isAwake ? QStringLiteral("Tavrine — Keep Awake: ") + state.modeName
                                  : QStringLiteral("Tavrine"));
    if (m_delegate.defaults().get<bool>(QStringLiteral("showInternetSpeed"), false) &&
        m_delegate.flags().isOn(Feature::networkSpeed))
        m_delegate.hooks().updateStatusItem();
    else
        item.setImage(statusIcon(state.isAwake, m_delegate.defaults()));
}

} // namespace tavrine
