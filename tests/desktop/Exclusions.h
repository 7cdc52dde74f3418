#pragma once

#include "adapters/linux/DesktopEntries.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace tavrine::testing {

/// The preference of a person who has chosen this file under "Choose Application…". Empty when it tells no program.
[[nodiscard]] inline QByteArray exclusionByFile(const QString &path) {
    const auto application = DesktopEntries({}).applicationIn(path);
    if (!application)
        return {};
    const QByteArray list = "[{\"id\":\"4F8F3A8E-6B1C-4C62-9D9A-0A2B0B5E7C11\",\"bundleID\":\"" +
                            application->bundleIdentifier.toUtf8() + "\",\"displayName\":\"" +
                            application->localizedName.toUtf8() + "\"}]";
    return "<key>ExcludedAppsV2</key><data>" + list.toBase64() + "</data>";
}

/// A program's file of this name in a home, with these lines besides those that every such file has. Its path.
[[nodiscard]] inline QString installInHome(const QString &home, const char *name, const QByteArray &lines) {
    const QString path = home + QStringLiteral("/.local/share/applications/") + QLatin1String(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write("[Desktop Entry]\nType=Application\nName=A program\n" + lines);
    return path;
}

} // namespace tavrine::testing
