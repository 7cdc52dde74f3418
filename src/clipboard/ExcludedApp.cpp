#include "clipboard/ExcludedApp.h"

#include "base/Uuid.h"
#include "clipboard/JsonList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tavrine {
namespace {

constexpr QLatin1String idKey("id");
constexpr QLatin1String bundleIDKey("bundleID");
constexpr QLatin1String displayNameKey("displayName");

} // namespace

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
