#pragma once

#include <QString>

namespace tavrine {

/// Where the person's files lie: absolute paths without a trailing slash. None of the folders is created by asking;
/// a path is empty when the desktop has no such folder.
struct Folders {
    QString applicationSupport; ///< the program's own data
    QString home;
    QString documents;
    QString temporary; ///< private to this program and person
    bool operator==(const Folders &) const = default;
};

} // namespace tavrine
