#pragma once

#include <QByteArray>

namespace tavrine {

/// How large and how deep a property list may be, wherever it comes from. The size leaves room for a whole clipboard
/// history of the oldest format, which was kept as one value; nothing of ours nests deeper than three.
inline constexpr qsizetype largestPropertyList = 64 * 1024 * 1024;
inline constexpr int deepestPropertyList = 100;

/// True when the property list library can be given `content`: it parses and frees by recursion and expands shared
/// objects of the binary form each time they are named, so depth and number of objects are checked before, without
/// recursion. XML must be well-formed, without declarations of its own. What passes may still not be a property list.
[[nodiscard]] bool isSafePropertyList(const QByteArray &content);

} // namespace tavrine
