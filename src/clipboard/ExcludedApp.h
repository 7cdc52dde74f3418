#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace tavrine {

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

/// The stored form of the list: a JSON array of objects with the keys "id", "bundleID" and "displayName".
[[nodiscard]] QByteArray encodeExcludedApps(const std::vector<ExcludedApp> &apps);

/// Reads the stored form. All three keys are required in every entry: one entry that lacks a key, or has a value of
/// another type, makes the whole unreadable. Other keys are passed over.
[[nodiscard]] std::optional<std::vector<ExcludedApp>> decodeExcludedApps(const QByteArray &json);

} // namespace tavrine
