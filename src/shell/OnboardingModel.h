#pragma once

#include "base/Preference.h"
#include "shell/PermissionChecker.h"
#include "shell/Triggers.h"

#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <vector>

namespace tavrine {

class DesktopAbilities;
class UrlOpener;

namespace preference {
/// The welcome window has been finished.
inline constexpr Preference<bool> hasCompletedOnboarding{"hasCompletedOnboarding", false};
} // namespace preference

/// The pages of the welcome window. Belongs to its view; lives on the main thread.
///
///  1. No page is stored: a program that is quit on the way begins at the first page again.
///  2. Neither grant is needed to finish.
class OnboardingModel : public QObject {
    Q_OBJECT

public:
    enum class Page { welcome = 0, features = 1, permissions = 2 };
    static constexpr int pageCount = 3;

    struct PageTexts {
        const char *title;
        const char *subtitle; ///< empty for none
        const char *button;   ///< the one that leads on
    };
    static constexpr std::array<PageTexts, pageCount> pages{
        PageTexts{"Your Mac. Simplified.", "The Utility Layer of Your Mac", "Get Started"},
        PageTexts{"Everything inside Tavrine", "", "Continue"},
        PageTexts{"A few permissions to get started", "You can change these anytime in System Settings.",
                  "Done, Let's Go"}};
    static constexpr auto welcomeSymbol = "sparkles";
    static constexpr auto featuresLink = "Explore Features";

    struct FeatureCell {
        const char *symbol;
        const char *name;
    };
    static constexpr std::array features{
        FeatureCell{"doc.on.clipboard", "Clipboard History"},
        FeatureCell{"text.viewfinder", "OCR"},
        FeatureCell{"tray.2", "Notch Shelf"},
        FeatureCell{"pencil.tip", "Annotations"},
        FeatureCell{"moon.zzz", "Keep Awake"},
        FeatureCell{"camera", "Screenshots"},
        FeatureCell{"antenna.radiowaves.left.and.right", "Network Speed Monitor"},
        FeatureCell{"face.smiling", "Emoji Picker"},
        FeatureCell{"headphones", "Lo-Fi Vibe Mode"},
        FeatureCell{"keyboard", "Cleaning Mode"},
        FeatureCell{"scissors", "Snipping Tool"},
    };

    struct PermissionRow {
        const char *icon;
        const char *name;
        const char *description;
        bool (PermissionChecker::*isGranted)() const;
        void (PermissionChecker::*onGrant)();
    };
    static constexpr std::array permissionRows{
        PermissionRow{"hand.point.up.left", "Accessibility", "Required for clipboard monitoring and keyboard shortcuts",
                      &PermissionChecker::accessibilityGranted, &PermissionChecker::requestAccessibility},
        PermissionRow{"rectangle.dashed.badge.record", "Screen Recording", "Required for OCR and screenshot capture",
                      &PermissionChecker::screenRecordingGranted, &PermissionChecker::requestScreenRecording},
    };
    /// What the last page tells a person to try first: the tools that a key opens.
    struct ShortcutRow {
        Trigger trigger;
        const char *name;
    };
    static constexpr std::array shortcutRows{ShortcutRow{Trigger::clipboard, "Clipboard"},
                                             ShortcutRow{Trigger::emojiPicker, "Emoji Picker"},
                                             ShortcutRow{Trigger::capture, "Screenshot"}};
    struct Shortcut {
        QString keys; ///< "⌘⇧V"
        QString name;
        bool operator==(const Shortcut &) const = default;
    };

    static constexpr auto allowButton = "Allow";
    static constexpr auto grantedSymbol = "checkmark";
    static constexpr auto grantedText = "Granted";

    struct Ports {
        UserDefaults &defaults;
        Access &access;
        Time &time;
        UrlOpener &urlOpener;
        QString resources = {}; ///< the folder of what came with the program
        const DesktopAbilities *abilities = nullptr;
    };
    /// `onClose` is called when the person has finished.
    OnboardingModel(Ports ports, std::function<void()> onClose, QObject *parent = nullptr);

    [[nodiscard]] Page currentPage() const { return m_currentPage; }
    [[nodiscard]] bool goingForward() const { return m_goingForward; } ///< the direction of the page transition
    [[nodiscard]] PermissionChecker &permissionChecker() { return m_permissionChecker; }
    [[nodiscard]] bool hasCompletedOnboarding() const;

    /// The rows whose tool is switched on and has a key, as the preferences have it.
    [[nodiscard]] std::vector<Shortcut> shortcuts() const;

    /// What this desktop does not allow in full, in a sentence; empty where it allows everything.
    [[nodiscard]] QString wanting() const;

    void setCurrentPage(Page page);
    /// The page's button: the next page, and from the last one the end.
    void goForward();
    void exploreFeatures();

Q_SIGNALS:
    void currentPageChanged();

private:
    Ports m_ports;
    std::function<void()> m_onClose;
    PermissionChecker m_permissionChecker;
    Page m_currentPage = Page::welcome;
    bool m_goingForward = true;
};

} // namespace tavrine
