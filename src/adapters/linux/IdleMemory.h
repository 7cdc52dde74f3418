#pragma once

namespace tavrine {

/// Gives memory back to the system that this process holds without a present use: what was freed, and the pages of
/// large fonts and of the lists of fonts, which come again from the file when a letter is drawn or a family looked for.
/// For a moment at which nobody waits, as it takes a few milliseconds.
void giveIdleMemoryBack();

} // namespace tavrine
