#pragma once

#include "base/Descriptor.h"

#include <QString>

namespace tavrine {

/// A file for a program of ours that reads what others made.
struct PlainFile {
    Descriptor file;      ///< for reading; closed where there is none
    bool isThere = false; ///< though it may be no plain file
    QString reason = {};  ///< why it is not open, in words
};

/// Opens what `path` leads to, if it is a plain file. What is none is not waited for: a pipe that nobody writes into, a
/// device.
[[nodiscard]] PlainFile openPlainFile(const QString &path);

} // namespace tavrine
