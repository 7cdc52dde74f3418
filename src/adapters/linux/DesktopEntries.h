#pragma once

#include "ports/ApplicationCatalog.h"

#include <QHash>
#include <QStringList>

namespace tavrine {

/// One file of the Desktop Entry Specification, as far as it matters here.
struct DesktopEntry {
    QString name;
    QString icon;
    QString windowClass; ///< empty when the file tells none
    /// What toolkits call a program's windows unless they are told. Empty where the line that starts the program says
    /// more than which: one program that does several jobs has a name for each.
    QString command;

    /// None when the file is no program's, cannot be read, or is larger than any such file is.
    [[nodiscard]] static std::optional<DesktopEntry> read(const QString &path);
};

/// The programs by their desktop files. The files are read when an icon is first asked for.
class DesktopEntries final : public ApplicationCatalog {
public:
    /// The folders that hold such files, the first of two with the same name counting.
    explicit DesktopEntries(QStringList folders);
    /// Those of the data folders of this session.
    [[nodiscard]] static QStringList standardFolders();

    [[nodiscard]] std::optional<InstalledApplication> applicationIn(const QString &path) override;
    [[nodiscard]] QStringList otherNamesOf(const QString &name) override;
    [[nodiscard]] QImage icon(const QString &bundleIdentifier, int side) override;
    [[nodiscard]] QString folder() override;
    [[nodiscard]] QString fileFilter() override { return QStringLiteral("Programs (*.desktop)"); }

private:
    void readAll();

    QStringList m_folders;
    bool m_isRead = false;
    QHash<QString, QString> m_icons; ///< by the identifier in lower case
};

} // namespace tavrine
