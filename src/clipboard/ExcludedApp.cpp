#include "clipboard/ExcludedApp.h"

#include "base/Uuid.h"
#include "clipboard/JsonList.h"
#include "ports/ApplicationCatalog.h"
#include "ports/Workspace.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tavrine {
namespace {

constexpr QLatin1String idKey("id");
constexpr QLatin1String bundleIDKey("bundleID");
constexpr QLatin1String displayNameKey("displayName");

QStringList withOtherNames(QStringList names, ApplicationCatalog &catalog) {
    names.removeAll(QString());
    const QStringList told = names;
    for (const QString &name : told)
        names += catalog.otherNamesOf(name);
    return names;
}

} // namespace

bool isAnyMeant(const std::vector<ExcludedApp> &apps, const RunningApplication &program, ApplicationCatalog &catalog) {
    const auto isContinued = [&](const ExcludedApp &app) { return program.bundleIdentifier.startsWith(app.bundleID); };
    if (std::ranges::any_of(apps, isContinued))
        return true;
    if (apps.empty())
        return false;
    const QStringList names = withOtherNames(program.names, catalog); // once: files are read for them
    return !names.isEmpty() && std::ranges::any_of(apps, [&](const ExcludedApp &app) {
        const QStringList meant = withOtherNames({app.bundleID}, catalog);
        return std::ranges::any_of(names,
                                   [&](const QString &name) { return meant.contains(name, Qt::CaseInsensitive); });
    });
}

QByteArray encodeExcludedApps(const std::vector<ExcludedApp> &apps) {
    QJsonArray array;
    for (const ExcludedApp &app : apps) {
        array.append(
            QJsonObject{{idKey, uuidString(app.id)}, {bundleIDKey, app.bundleID}, {displayNameKey, app.displayName}});
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<std::vector<ExcludedApp>> decodeExcludedApps(const QByteArray &json) {
    std::vector<ExcludedApp> apps;
    const bool isReadable = forEachJsonObject(json, [&](const QJsonObject &object) {
        const std::optional<QUuid> id = jsonUuid(object, idKey);
        const std::optional<QString> bundleID = jsonText(object, bundleIDKey);
        const std::optional<QString> displayName = jsonText(object, displayNameKey);
        if (!id || !bundleID || !displayName)
            return false;
        apps.push_back({*id, *bundleID, *displayName});
        return true;
    });
    return isReadable ? std::optional(std::move(apps)) : std::nullopt;
}

} // namespace tavrine
