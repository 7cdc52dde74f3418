// Files that other programs of the desktop write: entries of programs, the entry of the autostart folder, settings,
// feeds of versions, and what sway says of its windows.

#include "FuzzFiles.h"
#include "adapters/linux/DesktopEntries.h"
#include "adapters/linux/GtkSettingsFiles.h"
#include "adapters/linux/KnownPrograms.h"
#include "adapters/linux/PlasmaSettingsFile.h"
#include "adapters/linux/XdgAutostart.h"
#include "base/Program.h"
#include "shell/updates/Appcast.h"
#include "shell/updates/Versions.h"

namespace tavrine::fuzz {
namespace {

QString textOf(Bytes bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

void readEntry(Bytes input) {
    const QString path = fileWith(QStringLiteral("a.desktop"), input);
    const auto entry = DesktopEntry::read(path);
    DesktopEntries entries({folder()});
    const auto application = entries.applicationIn(path);
    require(application.has_value() == entry.has_value());
    require(!application || (!application->bundleIdentifier.isEmpty() && !application->localizedName.isEmpty()));
    const auto known = knownProgram(textOf(input), textOf(input));
    require(input.empty() || known.bundleIdentifier.isEmpty() == textOf(input).isEmpty());
    fileWith(QString(ownBundleIdentifier) + QStringLiteral(".desktop"), input);
    static_cast<void>(XdgAutostart(folder(), QStringLiteral("/usr/bin/a")).isEnabled());
}

void readSettings(Bytes input) {
    makeApplication();
    fileWith(QStringLiteral("gtk-3.0/settings.ini"), input);
    fileWith(QStringLiteral("kdeglobals"), input);
    static_cast<void>(GtkSettingsFiles(folder()).settings());
    static_cast<void>(gtkThemes(folder()));
    static_cast<void>(PlasmaSettingsFile(folder()).settings());
    static_cast<void>(isNoDuration(textOf(input)));
}

void readFeed(Bytes input) {
    const auto items = itemsOfAppcast(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    if (!items)
        return;
    require(items->size() <= mostAppcastItems);
    for (const AppcastItem &item : *items)
        require(item.url.scheme() == QLatin1String("https") && item.length >= 0 && !item.version.isEmpty());
}

/// Two versions, a line each: whatever they are, their order is one.
void readVersions(Bytes input) {
    Values values(input);
    const QString one = textOf(values.text()).left(longestVersion);
    const QString other = textOf(values.text()).left(longestVersion);
    const auto order = compareDebianVersions(one, other);
    require((order < 0) == (compareDebianVersions(other, one) > 0) && compareDebianVersions(one, one) == 0);
    static_cast<void>(upstreamVersion(one));
    const auto first = SemanticVersion::parse(one);
    const auto second = SemanticVersion::parse(other);
    require(!first || !second || (*first < *second) == (*second > *first));
}

const Target entryTarget("desktop-entries", &readEntry, [] {
    return std::vector<std::string>{"[Desktop Entry]\nType=Application\nName=A\nIcon=a\nStartupWMClass=B\nExec=\"/a "
                                    "b\" %u\n[Desktop Action x]\nName=C\n",
                                    "[Desktop Entry]\nHidden=true\nX-GNOME-Autostart-enabled=false\n",
                                    "# c\n[Desktop Entry\nName[de]=\xC3\xBC\n=\n"};
});
const Target settingsTarget("settings-files", &readSettings, [] {
    return std::vector<std::string>{
        "[Settings]\ngtk-theme-name=Adwaita-dark\ngtk-application-prefer-dark-theme=1\ngtk-enable-animations=0\n",
        "[KDE]\nAnimationDurationFactor=0\n", "1e-400", "nan"};
});
const Target feedTarget("feed", &readFeed, [] {
    return std::vector<std::string>{
        R"(<rss version="2.0" xmlns:s="a"><channel><item><title>b</title><s:version>2.4.0</s:version>
<enclosure url="https://a.example/b.deb" length="12"/></item></channel></rss>)",
        R"(<!DOCTYPE a [<!ENTITY b "c">]><rss><channel><item>&b;</item></channel></rss>)"};
});
const Target versionTarget("versions", &readVersions, [] {
    return std::vector<std::string>{"1:2.3.1~rc1-1\n2.3.1-1+b1\n", "2.4.0-rc.1\n2.4\n", "99999999999999999999\n1e9\n"};
});

} // namespace
} // namespace tavrine::fuzz
