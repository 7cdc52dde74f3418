#include "adapters/linux/XdgAutostart.h"

#include "base/PrivateFiles.h"
#include "base/Program.h"

#include <QFile>
#include <QHash>
#include <QStandardPaths>

namespace tavrine {
namespace {

/// The escapes of a string in a desktop entry.
QString escaped(const QString &text) {
    QString result;
    for (const QChar character : text) {
        switch (character.unicode()) {
        case u'\\':
            result += QStringLiteral("\\\\");
            break;
        case u'\n':
            result += QStringLiteral("\\n");
            break;
        case u'\t':
            result += QStringLiteral("\\t");
            break;
        case u'\r':
            result += QStringLiteral("\\r");
            break;
        default:
            result += character;
        }
    }
    // A space at the beginning would be taken for layout.
    return result.startsWith(u' ') ? QStringLiteral("\\s") + result.mid(1) : result;
}

/// One argument of Exec: in quotes, with the four characters that a quoted argument escapes, and no field codes. The
/// escapes of strings come on top.
QString quotedArgument(const QString &argument) {
    QString result(u'"');
    for (const QChar character : argument) {
        if (QStringLiteral("\"`$\\").contains(character))
            result += u'\\';
        result += character;
        if (character == u'%')
            result += u'%';
    }
    return result + u'"';
}

QHash<QByteArray, QByteArray> mainGroup(const QByteArray &text) {
    QHash<QByteArray, QByteArray> values;
    bool isMainGroup = false;
    for (const QByteArray &rawLine : text.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            isMainGroup = line == "[Desktop Entry]";
        } else if (const auto equals = line.indexOf('='); isMainGroup && equals > 0 && !line.startsWith('#')) {
            values.insert(line.first(equals).trimmed(), line.sliced(equals + 1).trimmed());
        }
    }
    return values;
}

} // namespace

XdgAutostart::XdgAutostart(QString folder, QString program)
    : m_folder(std::move(folder)), m_file(m_folder + u'/' + ownBundleIdentifier + QStringLiteral(".desktop")),
      m_program(std::move(program)) {}

QString XdgAutostart::userFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart");
}

QByteArray XdgAutostart::entryFor(const QString &program) {
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Version=1.0\n"
                          "Name=Tavrine\n"
                          "Icon=%3\n"
                          "Exec=%1\n"
                          "TryExec=%2\n"
                          "Terminal=false\n"
                          "StartupNotify=false\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(escaped(quotedArgument(program)), escaped(program), ownBundleIdentifier)
        .toUtf8();
}

std::optional<QHash<QByteArray, QByteArray>> XdgAutostart::entry() const {
    constexpr qint64 longestEntry = 65536;
    QFile file(m_file);
    return file.open(QIODevice::ReadOnly) ? std::optional(mainGroup(file.read(longestEntry))) : std::nullopt;
}

bool XdgAutostart::isEnabled() const {
    const auto values = entry();
    return values && values->value("Hidden") != "true" && values->value("X-GNOME-Autostart-enabled") != "false";
}

void XdgAutostart::followProgram() {
    const auto values = entry();
    const QString started = values ? QString::fromUtf8(values->value("TryExec")) : QString();
    // Only what an entry of ours has: a whole path, here one without escapes.
    const bool isPath = started.startsWith(u'/') && !started.contains(u'\\');
    if (isPath && !QFile::exists(started) && QFile::exists(m_program) && isEnabled())
        static_cast<void>(registerItem()); // where that fails, all stays as it was
}

bool XdgAutostart::registerItem() {
    return makePrivateFolder(m_folder) && writePrivateFile(m_file, entryFor(m_program));
}

bool XdgAutostart::unregisterItem() {
    return !QFile::exists(m_file) || QFile::remove(m_file);
}

} // namespace tavrine
