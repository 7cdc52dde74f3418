#include "adapters/linux/ThemeFileIcons.h"

#include "adapters/linux/DrawnFileIcon.h"
#include "adapters/linux/FileLooks.h"
#include "adapters/linux/ThumbnailReader.h"

#include <QDir>
#include <QIcon>
#include <QMimeType>
#include <QPainter>

namespace tavrine {
namespace {

constexpr qsizetype kindLimit = 512;
constexpr qsizetype longestEnding = 20;

const QString folderIcon = QStringLiteral("folder");

/// What of the name tells the kind: "tar.gz", and the whole of a name without an ending.
QString telling(const QString &name) {
    const auto last = name.lastIndexOf(u'.');
    if (last <= 0)
        return name;
    const auto second = name.lastIndexOf(u'.', last - 1);
    return name.mid((second > 0 && name.size() - second <= longestEnding ? second : last) + 1).prepend(u'.');
}

/// A theme that is there, where the desktop names none and nothing else does.
QString anyTheme() {
    for (const char *name : {"Adwaita", "breeze", "Papirus", "elementary", "gnome", "oxygen"})
        for (const QString &folder : QIcon::themeSearchPaths())
            if (QDir(folder + u'/' + QLatin1String(name)).exists())
                return QLatin1String(name);
    return {};
}

/// The icon in the middle of a square of that size, as large as it gets; null when the theme has none.
QImage themeIcon(const QString &name, int pixels) {
    const QIcon icon = name.isEmpty() ? QIcon() : QIcon::fromTheme(name);
    if (icon.isNull())
        return {};
    QImage picture = icon.pixmap(QSize(pixels, pixels), 1).toImage();
    if (picture.isNull() || picture.size() == QSize(pixels, pixels))
        return picture;
    picture = picture.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QImage square(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    square.fill(Qt::transparent);
    QPainter(&square).drawImage((pixels - picture.width()) / 2, (pixels - picture.height()) / 2, picture);
    return square;
}

} // namespace

ThemeFileIcons::ThemeFileIcons(std::function<DesktopThemes()> themes, std::chrono::milliseconds patience)
    : m_themes(std::move(themes)), m_patience(patience) {
    m_turn.setSingleShot(true);
}

ThemeFileIcons::~ThemeFileIcons() = default;

/// Once a turn.
void ThemeFileIcons::followTheme() {
    if (m_turn.isActive())
        return;
    m_turn.start(0);
    m_namings = 0;
    if (m_looks)
        m_looks->allow(m_patience);
    const QString theme = m_themes().icons;
    if (theme == m_theme)
        return;
    m_theme = theme;
    m_icons.clear();
    if (!theme.isEmpty())
        QIcon::setThemeName(theme);
    const QString used = QIcon::themeName();
    if (used.isEmpty() || used == QStringLiteral("hicolor")) // which has the icons of programs alone
        QIcon::setThemeName(anyTheme());
}

ThemeFileIcons::Kind ThemeFileIcons::kindByName(const QString &name) {
    const QString key = telling(name);
    const auto known = m_kinds.constFind(key);
    if (known != m_kinds.constEnd())
        return *known;
    Kind kind{.icon = QStringLiteral("application-x-generic"), .genericIcon = QStringLiteral("text-x-generic")};
    if (++m_namings > namingLimit)
        return kind;
    if (m_kinds.size() >= kindLimit)
        m_kinds.clear();
    const QList<QMimeType> types = m_types.mimeTypesForFileName(key.startsWith(u'.') ? u'x' + key : key);
    if (!types.isEmpty())
        kind = {.icon = types.first().iconName(), .genericIcon = types.first().genericIconName(), .isKnown = true};
    return *m_kinds.insert(key, kind);
}

ThemeFileIcons::Kind ThemeFileIcons::kindOf(const QString &path) {
    const Kind folder{.icon = QStringLiteral("folder"), .genericIcon = QStringLiteral("inode-directory")};
    if (path.endsWith(u'/'))
        return folder;
    Kind byName = kindByName(path.mid(path.lastIndexOf(u'/') + 1));
    if (byName.isKnown)
        return byName;
    if (!m_looks) {
        m_looks = std::make_unique<FileLooks>();
        m_looks->allow(m_patience);
    }
    switch (m_looks->look(path)) {
    case FileLooks::Kind::folder:
        return folder;
    case FileLooks::Kind::program:
        return {.icon = QStringLiteral("application-x-executable"), .genericIcon = byName.icon};
    default:
        return byName;
    }
}

QImage ThemeFileIcons::iconForFile(const QString &path, int pixels) {
    followTheme();
    pixels = std::clamp(pixels, 1, 1024);
    const Kind kind = kindOf(path);
    const bool isFolder = kind.icon == folderIcon;
    const std::pair key(kind.icon, pixels);
    if (const QImage *known = m_icons.object(key))
        return *known;
    QImage icon = themeIcon(kind.icon, pixels);
    if (icon.isNull())
        icon = themeIcon(kind.genericIcon, pixels);
    if (icon.isNull())
        icon = isFolder ? drawnFolderIcon(pixels) : drawnFileIcon(kind.icon, pixels);
    m_icons.insert(key, new QImage(icon));
    return icon;
}

FileIcons::Token ThemeFileIcons::thumbnail(const QString &path, int pixels,
                                           std::function<void(const QImage &)> handler) {
    if (!m_thumbnails)
        m_thumbnails = std::make_unique<ThumbnailReader>();
    return m_thumbnails->read(path, pixels, std::move(handler));
}

} // namespace tavrine
