#include "adapters/linux/PasteChord.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr PasteChord controlV{};
constexpr PasteChord controlShiftV{.hasControl = true, .hasShift = true};
constexpr PasteChord shiftInsertPrimary{.hasControl = false, .hasShift = true, .isInsert = true, .pastesPrimary = true};

TEST(PasteChord, aProgramNobodyKnowsTakesControlV) {
    EXPECT_EQ(pasteChordFor("firefox", "Firefox"), controlV);
    EXPECT_EQ(pasteChordFor("", ""), controlV);
    EXPECT_EQ(pasteChordFor("xtermcontrol", "XTermControl"), controlV);
}

TEST(PasteChord, aTerminalTakesShiftToo) {
    for (const char *name :
         {"Gnome-terminal", "konsole", "kitty", "Alacritty", "Xfce4-terminal", "org.wezfurlong.wezterm"})
        EXPECT_EQ(pasteChordFor("x", name), controlShiftV) << name;
}

TEST(PasteChord, xtermAndItsLikePasteThePrimarySelection) {
    for (const char *name : {"XTerm", "UXTerm", "URxvt", "st-256color"})
        EXPECT_EQ(pasteChordFor("x", name), shiftInsertPrimary) << name;
}

TEST(PasteChord, anEditorForWhichControlVIsQuotedInputPastesThePrimarySelection) {
    for (const char *name : {"Gvim", "Vim", "nvim-qt", "XEmacs"})
        EXPECT_EQ(pasteChordFor("x", name), shiftInsertPrimary) << name;
    EXPECT_EQ(pasteChordFor("gvim", "Gvim"), shiftInsertPrimary);
}

TEST(PasteChord, theInstanceNameCountsWhereTheClassIsUnknown) {
    EXPECT_EQ(pasteChordFor("xterm", "MyOwnClass"), shiftInsertPrimary);
    EXPECT_EQ(pasteChordFor("kitty", "scratchpad"), controlShiftV);
}

TEST(PasteChord, theClassCountsBeforeTheInstanceName) {
    EXPECT_EQ(pasteChordFor("xterm", "kitty"), controlShiftV);
}

} // namespace
} // namespace tavrine
