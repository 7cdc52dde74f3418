#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

namespace tavrine {

/// A program that the desktop can start.
struct InstalledApplication {
    QString bundleIdentifier; ///< one of its names
    QString localizedName;
    bool operator==(const InstalledApplication &) const = default;
};

/// What the desktop knows of the programs that are installed. Lives on the main thread. Files of strangers are read:
/// one that tells no program is none.
class ApplicationCatalog {
public:
    virtual ~ApplicationCatalog() = default;

    /// The program that a file in the desktop's own form describes.
    [[nodiscard]] virtual std::optional<InstalledApplication> applicationIn(const QString &path) = 0;

    /// What else a program is called whose file goes by this name: by the class that the file gives its windows, and by
    /// the command. Quick: asked about whatever comes to the front. Empty where there is no such file.
    [[nodiscard]] virtual QStringList otherNamesOf(const QString &name) = 0;

    /// The program's icon, `side` pixels high and wide or a little less. Null when there is none.
    [[nodiscard]] virtual QImage icon(const QString &bundleIdentifier, int side) = 0;

    /// Where a person looks for such files; empty when nowhere.
    [[nodiscard]] virtual QString folder() = 0;
    /// "Programs (*.desktop)"
    [[nodiscard]] virtual QString fileFilter() = 0;
};

} // namespace tavrine
