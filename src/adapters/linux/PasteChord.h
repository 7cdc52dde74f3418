#pragma once

#include <QByteArray>

namespace tavrine {

/// The keys that paste in a program.
struct PasteChord {
    bool hasControl = true;
    bool hasShift = false;
    bool isInsert = false;      ///< Insert in the place of V
    bool pastesPrimary = false; ///< the program pastes the primary selection with it
    bool operator==(const PasteChord &) const = default;
};

/// The chord for a program by both parts of its window class, in whatever case: Control-V unless it is known to take
/// another one.
[[nodiscard]] PasteChord pasteChordFor(const QByteArray &instance, const QByteArray &className);

} // namespace tavrine
