#include "adapters/pasteboard/SelectionParser.h"

#include <QStringConverter>
#include <QtEndian>

#include <cstring>

#include <unistd.h>

namespace tavrine::selection {
namespace {

std::uint32_t atomAt(QByteArrayView bytes, qsizetype index) {
    std::uint32_t atom = 0;
    std::memcpy(&atom, bytes.data() + index * qsizetype{sizeof atom}, sizeof atom); // the bytes may stand unaligned
    return atom;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// Stray percent signs stand for themselves: some programs do not escape.
QByteArray percentDecoded(QByteArrayView text) {
    QByteArray result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            result.append(static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2])));
            i += 2;
        } else {
            result.append(text[i]);
        }
    }
    return result;
}

bool equalsIgnoringCase(QByteArrayView a, QByteArrayView b) {
    return a.size() == b.size() && qstrnicmp(a.data(), a.size(), b.data(), b.size()) == 0;
}

/// The path of one URI; empty when it is no local file.
QByteArray localPath(QByteArrayView uri, QByteArrayView hostName) {
    constexpr QByteArrayView scheme("file:");
    if (uri.size() <= scheme.size() || !equalsIgnoringCase(uri.first(scheme.size()), scheme))
        return {};
    QByteArrayView rest = uri.sliced(scheme.size());
    if (rest.startsWith("//")) {
        rest = rest.sliced(2);
        const qsizetype slash = rest.indexOf('/');
        if (slash < 0)
            return {};
        const QByteArrayView host = rest.first(slash);
        if (!host.isEmpty() && !equalsIgnoringCase(host, "localhost") && !equalsIgnoringCase(host, hostName))
            return {};
        rest = rest.sliced(slash);
    }
    for (const char end : {'#', '?'}) { // a fragment or query names no other file
        if (const qsizetype at = rest.indexOf(end); at >= 0)
            rest = rest.first(at);
    }
    QByteArray path = percentDecoded(rest);
    if (!path.startsWith('/') || path.contains('\0'))
        return {};
    return path;
}

} // namespace

QList<std::uint32_t> parseAtoms(QByteArrayView bytes, int maxCount) {
    QList<std::uint32_t> atoms;
    const qsizetype count = bytes.size() / qsizetype{sizeof(std::uint32_t)};
    for (qsizetype i = 0; i < count && atoms.size() < maxCount; ++i) {
        const std::uint32_t atom = atomAt(bytes, i);
        if (atom != 0 && !atoms.contains(atom))
            atoms.append(atom);
    }
    return atoms;
}

QList<std::pair<std::uint32_t, std::uint32_t>> parseAtomPairs(QByteArrayView bytes, int maxCount) {
    QList<std::pair<std::uint32_t, std::uint32_t>> pairs;
    const qsizetype count = bytes.size() / qsizetype{2 * sizeof(std::uint32_t)};
    for (qsizetype i = 0; i < count && pairs.size() < maxCount; ++i)
        pairs.append({atomAt(bytes, 2 * i), atomAt(bytes, 2 * i + 1)});
    return pairs;
}

std::optional<TextEncoding> textEncoding(const QByteArray &target, const QByteArray &replyType) {
    for (const QByteArray &name : {replyType.toLower(), target.toLower()}) {
        if (name == "utf8_string" || name == "text/plain;charset=utf-8")
            return TextEncoding::utf8;
        if (name == "string")
            return TextEncoding::latin1;
        if (name == "compound_text" || name == "c_string")
            return std::nullopt;
        if (name == "text/plain")
            return TextEncoding::unmarked;
    }
    return std::nullopt;
}

QByteArrayView withoutTerminators(QByteArrayView bytes) {
    while (!bytes.isEmpty() && bytes.back() == '\0')
        bytes.chop(1);
    return bytes;
}

std::optional<QString> decodeText(QByteArrayView bytes, TextEncoding encoding) {
    bytes = withoutTerminators(bytes);
    if (bytes.isEmpty())
        return std::nullopt;
    if (encoding == TextEncoding::latin1 || (encoding == TextEncoding::unmarked && !bytes.isValidUtf8()))
        return QString::fromLatin1(bytes);
    // Stateless: a sequence cut off at the end is an error like any other, not the wait for more.
    QStringDecoder decoder(QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    return text.isEmpty() ? std::nullopt : std::optional(std::move(text));
}

QByteArray hostName() {
    char name[256] = {};
    ::gethostname(name, sizeof name - 1);
    return name;
}

QList<QByteArray> parseLocalPaths(QByteArrayView bytes, QByteArrayView hostName, int maxCount) {
    QList<QByteArray> paths;
    bytes = withoutTerminators(bytes);
    while (!bytes.isEmpty() && paths.size() < maxCount) {
        const qsizetype end = bytes.indexOf('\n');
        const QByteArrayView line = (end < 0 ? bytes : bytes.first(end)).trimmed();
        bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
        // Comments, and the "copy" or "cut" of the second form, are no URIs and fall out here.
        if (QByteArray path = localPath(line, hostName); !path.isEmpty())
            paths.append(std::move(path));
    }
    return paths;
}

} // namespace tavrine::selection
