#pragma once

#include "base/Preference.h"
#include "clipboard/ClipboardPreferences.h"

#include <QObject>

#include <array>

namespace tavrine {

/// The tools that can be switched off, one by one.
enum class Feature {
    notchShelf,
    snippingTool,
    screenRecorder,
    tavrineEditor,
    clipboardHistory,
    networkSpeed,
    keepAwake,
    cleaningMode,
    loFi,
    emojiPicker,
};

/// What is fixed about a feature: its name in the code, its preference, and how the features page shows it.
struct FeatureText {
    Feature feature;
    const char *property;
    Preference<bool> preference;
    const char *title;
    const char *description;
    const char *icon;
};

inline constexpr std::array<FeatureText, 10> featureTexts{{
    {Feature::notchShelf, "notchShelf", Preference<bool>{"featureNotchShelf", true}, "Notch Shelf",
     "Drop files under the notch for quick access", "menubar.arrow.up.rectangle"},
    {Feature::snippingTool, "snippingTool", Preference<bool>{"featureSnippingTool", true}, "Snipping Tool + OCR",
     "Capture screen regions and extract text with OCR", "viewfinder.circle.fill"},
    {Feature::screenRecorder, "screenRecorder", Preference<bool>{"featureScreenRecorder", true}, "Screen Recorder",
     "Record screen regions with mic/system audio", "video.badge.plus"},
    {Feature::tavrineEditor, "tavrineEditor", Preference<bool>{"featureTavrineEditor", true}, "Tavrine Editor",
     "Standalone photo & screenshot editor window", "photo.badge.plus"},
    {Feature::clipboardHistory, "clipboardHistory", preference::featureClipboardHistory, "Clipboard History",
     "Track and access your clipboard history", "doc.on.clipboard"},
    {Feature::networkSpeed, "networkSpeed", Preference<bool>{"featureNetworkSpeed", true}, "Network Speed Meter",
     "Live upload and download speeds in the menu bar", "network"},
    {Feature::keepAwake, "keepAwake", Preference<bool>{"featureKeepAwake", true}, "Keep Awake",
     "Prevent your Mac from sleeping on demand", "cup.and.saucer.fill"},
    {Feature::cleaningMode, "cleaningMode", Preference<bool>{"featureCleaningMode", true}, "Cleaning Mode",
     "Lock the keyboard while cleaning your Mac", "keyboard.fill"},
    {Feature::loFi, "loFi", Preference<bool>{"featureLoFi", true}, "Lo-Fi Vibe Mode",
     "Background lo-fi music to help you focus", "headphones"},
    {Feature::emojiPicker, "emojiPicker", Preference<bool>{"featureEmojiPicker", true}, "Emoji Picker",
     "Keyboard-first emoji search with a configurable shortcut", "face.smiling"},
}};

[[nodiscard]] constexpr const FeatureText &textOf(Feature feature) {
    return featureTexts[static_cast<std::size_t>(feature)];
}

/// The switches of the tools, and the only model of them: no tool keeps a copy.
///
/// Lives on the main thread, as long as the process. A flag is on unless a Bool that says otherwise is stored under
/// its key when the object is made. Only the setter writes the key.
class FeatureFlags : public QObject {
    Q_OBJECT

public:
    explicit FeatureFlags(UserDefaults &defaults, QObject *parent = nullptr);

    [[nodiscard]] bool isOn(Feature feature) const { return m_isOn[static_cast<std::size_t>(feature)]; }

    /// Tells that something will change, publishes the new value, and then stores it. The same value again is
    /// published again.
    void set(Feature feature, bool isOn);

Q_SIGNALS:
    void objectWillChange();
    void published(tavrine::Feature feature, bool isOn);

private:
    UserDefaults &m_defaults;
    std::array<bool, featureTexts.size()> m_isOn{};
};

} // namespace tavrine
