#pragma once

#include "ports/ApplicationCatalog.h"

#include <QHash>

namespace tavrine {

/// Programs that a test has installed, by the path of their file.
class FakeApplicationCatalog final : public ApplicationCatalog {
public:
    void install(const QString &path, const InstalledApplication &application) { m_installed[path] = application; }

    [[nodiscard]] std::optional<InstalledApplication> applicationIn(const QString &path) override {
        const auto found = m_installed.constFind(path);
        return found == m_installed.cend() ? std::nullopt : std::optional(*found);
    }
    /// What the program's file of this name calls it besides.
    void call(const QString &name, const QStringList &otherNames) { m_otherNames[name] = otherNames; }
    [[nodiscard]] int otherNamesReads() const { return m_otherNamesReads; }

    [[nodiscard]] QStringList otherNamesOf(const QString &name) override {
        ++m_otherNamesReads;
        return m_otherNames.value(name);
    }
    [[nodiscard]] QImage icon(const QString &bundleIdentifier, int side) override {
        for (const InstalledApplication &each : m_installed) {
            if (each.bundleIdentifier == bundleIdentifier) {
                QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
                image.fill(Qt::darkCyan);
                return image;
            }
        }
        return {};
    }
    [[nodiscard]] QString folder() override { return QStringLiteral("/applications"); }
    [[nodiscard]] QString fileFilter() override { return QStringLiteral("Programs (*.desktop)"); }

private:
    QHash<QString, InstalledApplication> m_installed;
    QHash<QString, QStringList> m_otherNames;
    int m_otherNamesReads = 0;
};

} // namespace tavrine
