#pragma once

#include <QString>

#include <functional>

namespace tavrine {

class Catalogue;

/// A text of ours in this desktop's words and then in the person's language, for the moment at which it is shown: "⌘⇧V"
/// is "Super+Shift+V", "your Mac" is "your computer", and that is "Ihr Computer". The texts in the code stay as they
/// are everywhere else, and what is no text of ours comes back as it went in: whole texts are known here, not words, so
/// that nothing that a person wrote is ever rewritten.
///
/// The controls of look/ do this with what they are given. Who paints, notifies or fills a menu does it himself.
/// Super is the key of the shortcuts that work everywhere, Ctrl that of our own windows.
[[nodiscard]] QString inDesktopWords(const QString &text);

/// In the words of a desktop of that name alone; an empty one is "the desktop".
[[nodiscard]] QString inDesktopWords(const QString &text, const QString &desktop);

/// The name of the desktop by its `XDG_CURRENT_DESKTOP`, a list from the special to the general: "GNOME" for
/// "ubuntu:GNOME".
[[nodiscard]] QString desktopName(const QString &currentDesktop);

/// What a text is in the person's language, before anything is shown. Main thread; none is English.
void setTranslation(std::function<QString(const QString &text)> translation);
void setTranslation(Catalogue catalogue);

} // namespace tavrine
