#pragma once

#include <QList>
#include <QString>
#include <QUrl>

/// The names and places of the music.
namespace tavrine::lofiTracks {

/// Where the tracks are kept, below the folder for the program's data.
[[nodiscard]] QString folder(const QString &applicationSupport);

/// The built-in tracks' names, in the order in which they are looked for.
[[nodiscard]] QList<QString> builtInNames();

/// Where the built-in tracks are fetched from, in the same order: what came with the program, below `resources`, or
/// where the build says (TAVRINE_LOFI_TRACKS).
[[nodiscard]] QList<QUrl> urls(const QString &resources);

/// The name of the copy of an imported file: "custom_" and the file's name. A name that would be too long for a file
/// system loses the end of its stem and keeps its extension.
[[nodiscard]] QString customFileName(const QString &fileName);

/// What a person calls the file: its name without its extension.
[[nodiscard]] QString displayName(const QString &fileName);

/// Where more of such music is to be found.
[[nodiscard]] QUrl browsingPage();

} // namespace tavrine::lofiTracks
