#include "adapters/linux/KnownPrograms.h"

namespace tavrine {
namespace {

struct Entry {
    const char *desktopName; ///< an application identifier or a window class
    const char *bundleIdentifier;
    const char *name;
};

// Programs that the system tells apart by an identifier of another platform: the password managers, whose copies are
// never recorded. A key ring of the desktop stands for the key chain of the other platform.
constexpr Entry entries[] = {
    {"1Password", "com.agilebits.onepassword7", "1Password"},
    {"com.onepassword.OnePassword", "com.agilebits.onepassword7", "1Password"},
    {"Bitwarden", "com.bitwarden.desktop", "Bitwarden"},
    {"com.bitwarden.desktop", "com.bitwarden.desktop", "Bitwarden"},
    {"Dashlane", "co.dashlane.dashlane", "Dashlane"},
    {"gcr-prompter", "com.apple.keychainaccess", "GNOME Keyring"},
    {"KeePassXC", "org.keepassxc.keepassxc", "KeePassXC"},
    {"org.keepassxc.KeePassXC", "org.keepassxc.keepassxc", "KeePassXC"},
    {"kwalletmanager", "com.apple.keychainaccess", "KWalletManager"},
    {"kwalletmanager5", "com.apple.keychainaccess", "KWalletManager"},
    {"kwalletmanager6", "com.apple.keychainaccess", "KWalletManager"},
    {"org.kde.kwalletmanager", "com.apple.keychainaccess", "KWalletManager"},
    {"org.kde.kwalletmanager5", "com.apple.keychainaccess", "KWalletManager"},
    {"org.kde.kwalletmanager6", "com.apple.keychainaccess", "KWalletManager"},
    {"LastPass", "com.lastpass.LastPass", "LastPass"},
    {"org.gnome.seahorse", "com.apple.keychainaccess", "Passwords and Keys"},
    {"org.gnome.seahorse.Application", "com.apple.keychainaccess", "Passwords and Keys"},
    {"seahorse", "com.apple.keychainaccess", "Passwords and Keys"},
};

} // namespace

KnownProgram knownProgram(const QString &applicationId, const QString &windowClass) {
    for (const QString &name : {applicationId, windowClass})
        for (const Entry &entry : entries)
            if (name.compare(QLatin1String(entry.desktopName), Qt::CaseInsensitive) == 0)
                return {QLatin1String(entry.bundleIdentifier), QLatin1String(entry.name)};
    return {applicationId.isEmpty() ? windowClass : applicationId, windowClass.isEmpty() ? applicationId : windowClass};
}

} // namespace tavrine
