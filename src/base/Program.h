#pragma once

#include <QLatin1String>

namespace tavrine {

/// The name by which the desktop, the session bus, the key ring and the files of preferences know this program. The
/// files in packaging/ and resources/ carry it in their names.
inline constexpr QLatin1String ownBundleIdentifier("com.veltrane.Tavrine");

} // namespace tavrine
