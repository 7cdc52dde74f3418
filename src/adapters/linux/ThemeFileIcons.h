#pragma once

#include "adapters/linux/DesktopThemes.h"
#include "ports/FileIcons.h"

#include <QCache>
#include <QHash>
#include <QImage>
#include <QMimeDatabase>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace tavrine {

class FileLooks;
class ThumbnailReader;

/// Icons of the desktop's theme by the kind of a file, which its name tells. Where the name tells nothing the file
/// system is asked what it is, by a thread that is waited for briefly. What the theme does not have is drawn. Main
/// thread; nothing is read, and no thread started, before the first icon.
class ThemeFileIcons final : public FileIcons {
public:
    /// For all looks of one turn together.
    static constexpr std::chrono::milliseconds lookLimit{40};
    /// Names and endings that are looked up in one turn, at a tenth of a millisecond each; more are files of no kind.
    static constexpr int namingLimit = 200;
    /// Kinds whose icon is kept; at the size of a tile 64 KiB each.
    static constexpr int iconLimit = 48;

    /// `themes` is asked in each turn in which there is an icon to be made.
    explicit ThemeFileIcons(std::function<DesktopThemes()> themes, std::chrono::milliseconds patience = lookLimit);
    ~ThemeFileIcons() override;

    [[nodiscard]] QImage iconForFile(const QString &path, int pixels) override;
    [[nodiscard]] Token thumbnail(const QString &path, int pixels,
                                  std::function<void(const QImage &)> handler) override;

private:
    /// The names that a theme may know a kind of file by, the best first.
    struct Kind {
        QString icon;
        QString genericIcon;
        bool isKnown = false; ///< by the name alone
    };

    [[nodiscard]] Kind kindByName(const QString &name);
    [[nodiscard]] Kind kindOf(const QString &path);
    void followTheme();

    const std::function<DesktopThemes()> m_themes;
    const std::chrono::milliseconds m_patience;
    QMimeDatabase m_types;
    QHash<QString, Kind> m_kinds; ///< by ending, or by name for a file without one
    QCache<std::pair<QString, int>, QImage> m_icons{iconLimit};
    std::optional<QString> m_theme; ///< that the desktop named; none before the first icon
    QTimer m_turn;
    int m_namings = 0; ///< in this turn
    std::unique_ptr<FileLooks> m_looks;
    std::unique_ptr<ThumbnailReader> m_thumbnails;
};

} // namespace tavrine
