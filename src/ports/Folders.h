#pragma once

#include <QString>

namespace tavrine {

/// Where files lie: absolute paths without a trailing slash. None of the folders is created by asking; a path is empty
/// when the desktop has no such folder.
struct Folders {
    QString applicationSupport; ///< the program's own data
    QString home;
    QString documents;
    QString temporary;        ///< private to this program and person
    QString preferences = {}; ///< holds one file for each program
    QString programs = {};    ///< this program's own file, and those that come with it
    QString resources = {};   ///< what came with the program and is only read
    QString caches = {};      ///< what can be made anew, the program's own
    bool operator==(const Folders &) const = default;
};

} // namespace tavrine
