#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <cstdint>
#include <optional>
#include <utility>

/// What other programs hand us over the clipboard, taken apart. Pure functions for any thread; every input is
/// possible, and none does harm.
namespace tavrine::selection {

/// How the bytes of a text are to be read.
enum class TextEncoding {
    utf8,     ///< invalid sequences become U+FFFD
    latin1,   ///< STRING: every byte is a character
    unmarked, ///< "text/plain" says nothing: UTF-8 when it is valid as such, else Latin-1
};

/// A list of atoms: `bytes` of a property of 32-bit format, in the machine's order. Zeros and repetitions are left
/// out, and so is what comes after the first `maxCount`.
[[nodiscard]] QList<std::uint32_t> parseAtoms(QByteArrayView bytes, int maxCount);

/// A list of pairs of atoms, as MULTIPLE has it, zeros and repetitions included. An odd one at the end is left out.
[[nodiscard]] QList<std::pair<std::uint32_t, std::uint32_t>> parseAtomPairs(QByteArrayView bytes, int maxCount);

/// The encoding of an answer. Its type decides where it says something, else what was asked for. None for encodings
/// that are not read: COMPOUND_TEXT, which no owner offers without a better one beside it.
[[nodiscard]] std::optional<TextEncoding> textEncoding(const QByteArray &target, const QByteArray &replyType);

/// The bytes without the NULs at their end, which some programs send along.
[[nodiscard]] QByteArrayView withoutTerminators(QByteArrayView bytes);

/// The text, as it stands: a NUL inside it stays, and so does a byte order mark. None when nothing is left.
[[nodiscard]] std::optional<QString> decodeText(QByteArrayView bytes, TextEncoding encoding);

/// This machine's name, by which URIs may call it.
[[nodiscard]] QByteArray hostName();

/// The absolute paths of the local files named in a "text/uri-list" or "x-special/gnome-copied-files", in file system
/// encoding. A file is local when its URI has no host, "localhost" or `hostName`.
[[nodiscard]] QList<QByteArray> parseLocalPaths(QByteArrayView bytes, QByteArrayView hostName, int maxCount);

} // namespace tavrine::selection
