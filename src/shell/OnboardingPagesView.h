#pragma once

#include "look/Theme.h"
#include "shell/OnboardingModel.h"

class QWidget;

namespace tavrine {

namespace look {
class Button;
}

/// The pages of the welcome window. Each is a widget that belongs to its parent; `forward` is the button that leads on.
namespace onboardingPages {

inline constexpr QColor accent{0xFF, 0x95, 0x00}; ///< 1.0, 0.584, 0.0
inline constexpr QColor ground{0x1C, 0x1C, 0x1E}; ///< 0.11, 0.11, 0.118

/// Dark, with the accent as it is: an orange that light takes black words.
[[nodiscard]] look::Theme theme();

struct Page {
    QWidget *widget;
    look::Button *forward;
};
[[nodiscard]] Page makeWelcomeScreen(QWidget *parent);
/// `explore` is called for the link.
[[nodiscard]] Page makeFeaturesScreen(QWidget *parent, std::function<void()> explore);
/// Ends with the keys that a person can try next. The checker outlives the page.
[[nodiscard]] Page makePermissionsScreen(QWidget *parent, PermissionChecker &checker,
                                         const std::vector<OnboardingModel::Shortcut> &shortcuts,
                                         std::function<QString()> wanting);

} // namespace onboardingPages
} // namespace tavrine
