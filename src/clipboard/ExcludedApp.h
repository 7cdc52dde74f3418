#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace tavrine {

class ApplicationCatalog;
struct RunningApplication;

/// An application whose copies are not recorded.
struct ExcludedApp {
    QUuid id;            ///< identity in the list
    QString bundleID;    ///< used as a prefix: it also covers every identifier that continues it
    QString displayName; ///< shown in settings

    bool operator==(const ExcludedApp &) const = default;
};

inline size_t qHash(const ExcludedApp &app, size_t seed = 0) {
    return qHashMulti(seed, app.id, app.bundleID, app.displayName);
}

/// True when the stored identifier of one of `apps` means this program.
///
///  1. The program's identifier continues the stored one; capitals count.
///  2. Or one of the names that its windows have is the stored one. What a session tells of a window, and how that is
///     spelt, depends on the session and on the program's toolkit, and an exclusion holds in every session. So
///     capitals do not count here, and a name stands also for the others that the program's file in `catalog` gives it;
///     but it is the whole name, or a program would be silent whose name merely begins like another's.
[[nodiscard]] bool isAnyMeant(const std::vector<ExcludedApp> &apps, const RunningApplication &program,
                              ApplicationCatalog &catalog);

/// The stored form of the list: a JSON array of objects with the keys "id", "bundleID" and "displayName".
[[nodiscard]] QByteArray encodeExcludedApps(const std::vector<ExcludedApp> &apps);

/// Reads the stored form. All three keys are required in every entry: one entry that lacks a key, or has a value of
/// another type, makes the whole unreadable. Other keys are passed over.
[[nodiscard]] std::optional<std::vector<ExcludedApp>> decodeExcludedApps(const QByteArray &json);

} // namespace tavrine
