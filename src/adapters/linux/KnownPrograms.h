#pragma once

#include <QString>

namespace tavrine {

/// What a program is called in the system.
struct KnownProgram {
    QString bundleIdentifier;
    QString name;
};

/// The identifiers under which the system lists a program that names itself so on this desktop; upper and lower case
/// are the same. One listed name is enough, whatever the other says: a password manager must not pass for another
/// program. A program that is not listed is identified by its application identifier, else its class, and called by its
/// class.
[[nodiscard]] KnownProgram knownProgram(const QString &applicationId, const QString &windowClass);

} // namespace tavrine
