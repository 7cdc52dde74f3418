#pragma once

#include "base/Preference.h"

/// What stands in the Quick Actions, and in which order.
namespace tavrine::preference {

inline constexpr Preference<bool> layoutShowScreenshot{"layoutShowScreenshot", true};
inline constexpr Preference<bool> layoutShowEditor{"layoutShowEditor", true};
inline constexpr Preference<bool> layoutShowQRScan{"layoutShowQRScan", true};
inline constexpr Preference<bool> layoutShowSubtitles{"layoutShowSubtitles", true};
/// Ids behind commas. The default is the menu's; the page that changes the order begins with another one, on purpose:
/// the settings tile goes behind the editor's for whoever orders things, and stands before it for everybody else.
inline constexpr Preference<QString> layoutOrder{
    "layoutOrder", "loFi,keepAwake,screenshot,screenRecord,qrScan,cleanMode,settings,editor"};
inline constexpr auto layoutOrderOfPage = "loFi,keepAwake,screenshot,screenRecord,qrScan,cleanMode,editor,settings";

} // namespace tavrine::preference
