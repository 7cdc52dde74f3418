#include "adapters/linux/PasteChord.h"

#include <algorithm>
#include <array>

namespace tavrine {
namespace {

constexpr PasteChord usual{};
// In a terminal, Control-V belongs to the program that runs in it.
constexpr PasteChord terminal{.hasControl = true, .hasShift = true};
constexpr PasteChord primaryTerminal{.hasControl = false, .hasShift = true, .isInsert = true, .pastesPrimary = true};
// Control-V is quoted input in these editors: they insert the next key, or mark a block, in the place of the text.
constexpr PasteChord primaryEditor = primaryTerminal;
constexpr PasteChord editor{.hasControl = false, .hasShift = true, .isInsert = true};

struct Known {
    const char *name; // lower case
    PasteChord chord;
};

// Window classes, and for programs without a fixed class their instance names, as those programs set them.
constexpr auto known = std::to_array<Known>({
    {"xterm", primaryTerminal},
    {"uxterm", primaryTerminal},
    {"koi8rxterm", primaryTerminal},
    {"rxvt", primaryTerminal},
    {"urxvt", primaryTerminal},
    {"mrxvt", primaryTerminal},
    {"aterm", primaryTerminal},
    {"eterm", primaryTerminal},
    {"zutty", primaryTerminal},
    {"st", primaryTerminal},
    {"st-256color", primaryTerminal},
    {"emacs", editor},
    {"gvim", primaryEditor},
    {"vim", primaryEditor},
    {"nvim-qt", primaryEditor},
    {"xemacs", primaryEditor},
    {"alacritty", terminal},
    {"com.gexperts.tilix", terminal},
    {"com.mitchellh.ghostty", terminal},
    {"com.raggesilver.blackbox", terminal},
    {"contour", terminal},
    {"cool-retro-term", terminal},
    {"deepin-terminal", terminal},
    {"foot", terminal},
    {"ghostty", terminal},
    {"gnome-terminal", terminal},
    {"gnome-terminal-server", terminal},
    {"guake", terminal},
    {"hyper", terminal},
    {"io.elementary.terminal", terminal},
    {"kgx", terminal},
    {"kitty", terminal},
    {"konsole", terminal},
    {"lxterminal", terminal},
    {"mate-terminal", terminal},
    {"org.gnome.console", terminal},
    {"org.gnome.ptyxis", terminal},
    {"org.gnome.terminal", terminal},
    {"org.kde.konsole", terminal},
    {"org.wezfurlong.wezterm", terminal},
    {"ptyxis", terminal},
    {"qterminal", terminal},
    {"rio", terminal},
    {"roxterm", terminal},
    {"sakura", terminal},
    {"tabby", terminal},
    {"terminator", terminal},
    {"terminology", terminal},
    {"termit", terminal},
    {"termite", terminal},
    {"tilda", terminal},
    {"tilix", terminal},
    {"warp", terminal},
    {"wezterm", terminal},
    {"wezterm-gui", terminal},
    {"xfce4-terminal", terminal},
    {"yakuake", terminal},
});

} // namespace

PasteChord pasteChordFor(const QByteArray &instance, const QByteArray &className) {
    // The class names the program; its instance name is often the person's own.
    for (const QByteArray &name : {className.toLower(), instance.toLower()}) {
        const auto found = std::find_if(known.begin(), known.end(), [&](const Known &k) { return name == k.name; });
        if (found != known.end())
            return found->chord;
    }
    return usual;
}

} // namespace tavrine
