#include "adapters/pasteboard/PasteboardTypes.h"

#include "ports/Pasteboard.h"

#include <QHash>
#include <QSet>

namespace tavrine {
namespace {

const QHash<QByteArray, const char *> &names() {
    static const QHash<QByteArray, const char *> table{
        {"UTF8_STRING", pasteboardType::string},
        {"STRING", pasteboardType::string},
        {"TEXT", pasteboardType::string},
        {"COMPOUND_TEXT", pasteboardType::string},
        {"text/plain", pasteboardType::string},
        {"text/plain;charset=utf-8", pasteboardType::string},
        {"text/html", pasteboardType::html},
        {"text/rtf", pasteboardType::rtf},
        {"application/rtf", pasteboardType::rtf},
        {"text/richtext", pasteboardType::rtf},
        {"text/uri-list", pasteboardType::fileUrl},
        {"x-special/gnome-copied-files", pasteboardType::fileUrl},
        {"image/png", pasteboardType::png},
        {"image/tiff", pasteboardType::tiff},
        {"x-kde-passwordManagerHint", pasteboardType::concealed},
        {"application/x-nspasteboard-concealed-type", pasteboardType::concealed},
        {"ExcludeClipboardContentFromMonitorProcessing", pasteboardType::concealed}, // Windows programs under Wine
    };
    return table;
}

/// Media types are compared without regard to case; "text/plain;charset=UTF-8" is common.
QByteArray folded(const QByteArray &target) {
    return target.startsWith("text/plain") ? target.toLower() : target;
}

} // namespace

QString pasteboardTypeOf(const QByteArray &target) {
    const auto found = names().constFind(folded(target));
    return found != names().constEnd() ? QString::fromLatin1(*found) : QString::fromLatin1(target);
}

QStringList pasteboardTypesOf(const QList<QByteArray> &targets) {
    QStringList types;
    for (const QByteArray &target : targets) {
        if (isProtocolTarget(target))
            continue;
        const QString type = pasteboardTypeOf(target);
        if (!types.contains(type))
            types.append(type);
    }
    return types;
}

bool isProtocolTarget(const QByteArray &target) {
    static const QSet<QByteArray> protocol{
        // questions and commands
        "TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY",
        // about the owner as it runs
        "CLIENT_WINDOW", "PROCESS", "TASK", "HOST_NAME", "OWNER_OS", "USER", "CLASS", "NAME", "MODULE", "PROCEDURE",
        "LENGTH", "LIST_LENGTH",
        // things of the server that end with the owner
        "PIXMAP", "DRAWABLE", "BITMAP", "COLORMAP", "WINDOW", "FOREGROUND", "BACKGROUND"};
    return protocol.contains(target);
}

bool isConcealedTarget(const QByteArray &target) {
    return pasteboardTypeOf(target) == QLatin1String(pasteboardType::concealed);
}

const QList<QByteArray> &textTargets() {
    static const QList<QByteArray> targets{
        "UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=UTF-8", "text/plain", "STRING", "TEXT"};
    return targets;
}

const QList<QByteArray> &imageTargets() {
    static const QList<QByteArray> targets{"image/png",      "image/tiff", "image/bmp", "image/x-bmp",
                                           "image/x-MS-bmp", "image/webp", "image/jpeg"};
    return targets;
}

const QList<QByteArray> &fileTargets() {
    static const QList<QByteArray> targets{"text/uri-list", "x-special/gnome-copied-files"};
    return targets;
}

} // namespace tavrine
