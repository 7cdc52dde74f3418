#include "adapters/linux/CastTokens.h"

#include "base/PrivateFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace tavrine {
namespace {

constexpr qint64 longestFile = 64 * 1024;
constexpr qsizetype mostScreens = 32;
constexpr qsizetype longestToken = 1024; // a UUID, where it is not the desktop's own

} // namespace

QString CastTokens::usualPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/Tavrine/screen-casts.json");
}

QMap<QString, QString> CastTokens::read() const {
    QMap<QString, QString> tokens;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > longestFile)
        return tokens;
    const QJsonObject stored = QJsonDocument::fromJson(file.read(longestFile)).object();
    for (auto each = stored.begin(); each != stored.end() && tokens.size() < mostScreens; ++each)
        if (const QString token = each.value().toString(); !token.isEmpty() && token.size() <= longestToken)
            tokens[each.key()] = token;
    return tokens;
}

void CastTokens::set(const QString &screen, const QString &token) const {
    auto tokens = read();
    const auto before = tokens;
    if (token.isEmpty() || token.size() > longestToken)
        tokens.remove(screen);
    else
        tokens[screen] = token;
    if (tokens == before)
        return;
    QJsonObject stored;
    for (auto each = tokens.begin(); each != tokens.end(); ++each)
        stored[each.key()] = each.value();
    makePrivateFolder(QFileInfo(m_path).path());
    static_cast<void>(writePrivateFile(m_path, QJsonDocument(stored).toJson()));
}

} // namespace tavrine
