#pragma once

#include <QString>

namespace tavrine {

/// What a program is called in the system.
struct KnownProgram {
    QString bundleIdentifier;
    QString name;
};

/// The identifiers under which the system lists a program that names itself `name` on this desktop, by its application
/// identifier or its window class; upper and lower case are the same. A program that is not listed is called by its
/// own name.
[[nodiscard]] KnownProgram knownProgram(const QString &name);

} // namespace tavrine
