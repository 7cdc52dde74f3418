#pragma once

/// The X server's keyboard extension. The C header has a member called explicit, which C++ keeps for itself: here it is
/// explicitParts. What it includes itself comes first, and knows the keyword.
#include <xcb/xcb.h>

#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicitParts
#include <xcb/xkb.h>
#undef explicit
#ifdef __clang__
#pragma clang diagnostic pop
#endif
