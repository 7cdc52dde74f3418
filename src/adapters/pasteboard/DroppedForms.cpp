#include "adapters/pasteboard/DroppedForms.h"

#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/pasteboard/PasteboardTypes.h"
#include "adapters/pasteboard/SelectionParser.h"
#include "adapters/pasteboard/SelectionSiblings.h"

#include <QMimeData>
#include <QStringDecoder>
#include <QTextDocumentFragment>

namespace tavrine {
namespace {

constexpr auto directSave = "XdndDirectSave0"; ///< the dragging program would write a file where it is told to
constexpr auto unnamedBytes = "application/octet-stream"; ///< beside that, the file's content
constexpr auto browserUrl = "text/x-moz-url";             ///< an address and its title on two lines, in UTF-16
constexpr auto oldBrowserUrl = "_NETSCAPE_URL";           ///< the same in UTF-8
constexpr auto webPage = "text/html";

/// The file as a URL that keeps its bytes, whatever encoding its name is in.
QUrl urlOf(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    if (path.isValidUtf8())
        return QUrl::fromLocalFile(QString::fromUtf8(path));
    return QUrl::fromEncoded("file://" + path.toPercentEncoding("/"), QUrl::StrictMode);
}

/// Wide where every other byte is nothing, as it is in an address.
QString wideOrNarrow(const QByteArray &bytes) {
    if (bytes.size() < 2 || (bytes[1] != '\0' && !bytes.startsWith("\xFF\xFE")))
        return QString::fromUtf8(bytes);
    return QStringDecoder(QStringConverter::Utf16LE).decode(bytes);
}

class Reading {
public:
    Reading(const QList<QByteArray> &targets, const DropLimits &limits,
            const std::function<std::optional<DroppedForm>(const QByteArray &)> &fetch)
        : m_targets(targets), m_limits(limits), m_fetch(fetch) {}

    DroppedContent read() {
        DroppedContent content;
        for (const QByteArray &target : m_targets)
            content.types.append(QString::fromLatin1(target));
        content.fileUrls = files();
        if (!content.fileUrls.isEmpty())
            return content;
        const QString address = browserAddress();
        if (const auto paths = selection::parseLocalPaths(address.toUtf8(), selection::hostName(), 1); !paths.isEmpty())
            content.fileUrlString = urlOf(paths.first()).toString(QUrl::FullyEncoded);
        const QList<QByteArray> pictures = picture();
        content.string = text();
        if (!content.string && !address.isEmpty() && !address.startsWith(QLatin1String("file:"), Qt::CaseInsensitive))
            content.string = address;
        if (!content.string)
            content.string = textOfPage();
        for (const QByteArray &bytes : pictures)
            if (auto image = pasteboardImage::decode(bytes, m_limits.imagePixels))
                content.images = {std::move(*image)}; // all are forms of one
        return content;
    }

private:
    [[nodiscard]] std::optional<QByteArray> get(const QByteArray &target) const {
        if (!m_targets.contains(target))
            return std::nullopt;
        auto form = m_fetch(target);
        return form && !form->bytes.isEmpty() ? std::optional(std::move(form->bytes)) : std::nullopt;
    }

    QList<QUrl> files() {
        QList<QUrl> urls;
        for (const QByteArray &target : fileTargets()) {
            const auto list = get(target);
            if (!list)
                continue;
            const auto paths = selection::parseLocalPaths(*list, selection::hostName(), m_limits.files);
            for (const QByteArray &path : paths)
                urls.append(urlOf(path));
            if (!urls.isEmpty())
                break;
            noteAddresses(*list);
        }
        return urls;
    }

    /// Of a list without files: the places elsewhere, one a line.
    void noteAddresses(const QByteArray &list) {
        const auto lines = list.split('\n');
        for (const QByteArray &line : lines) {
            const QUrl url = QUrl::fromEncoded(line.trimmed(), QUrl::StrictMode);
            if (url.isValid() && !url.isRelative() && url.scheme() != QLatin1String("file") &&
                m_addresses.size() < m_limits.files)
                m_addresses.append(url.toString(QUrl::FullyEncoded));
        }
    }

    QString browserAddress() const {
        for (const char *target : {browserUrl, oldBrowserUrl})
            if (const auto bytes = get(target))
                return wideOrNarrow(*bytes).section(QLatin1Char('\n'), 0, 0).trimmed();
        return {};
    }

    /// The forms of the one picture that are worth decoding, still encoded.
    QList<QByteArray> picture() const {
        QList<QByteArray> wanted;
        for (const QByteArray &target : imageTargets())
            if (m_targets.contains(target))
                wanted.append(target);
        for (const QByteArray &target : m_targets)
            if (!wanted.contains(target) && selection::isPictureForm(target))
                wanted.append(target);
        if (m_targets.contains(directSave) && m_targets.contains(unnamedBytes))
            wanted.append(unnamedBytes);
        for (const QByteArray &target : wanted.first(std::min<qsizetype>(wanted.size(), m_limits.pictureForms)))
            if (const auto bytes = get(target); bytes && pasteboardImage::seemsWhole(*bytes) &&
                                                pasteboardImage::hasUsableHeader(*bytes, m_limits.imagePixels))
                return {*bytes};
        return {};
    }

    std::optional<QString> text() const {
        for (const QByteArray &target : textTargets()) {
            if (!m_targets.contains(target))
                continue;
            const auto form = m_fetch(target);
            const auto encoding = form ? selection::textEncoding(target, form->type) : std::nullopt;
            if (!encoding)
                continue;
            if (auto decoded = selection::decodeText(form->bytes, *encoding))
                return decoded;
        }
        return m_addresses.isEmpty() ? std::nullopt : std::optional(m_addresses.join(QLatin1Char('\n')));
    }

    std::optional<QString> textOfPage() const {
        const auto page = get(webPage);
        if (!page || page->size() > m_limits.htmlBytes)
            return std::nullopt;
        const QString text = QTextDocumentFragment::fromHtml(wideOrNarrow(*page)).toPlainText();
        return text.trimmed().isEmpty() ? std::nullopt : std::optional(text);
    }

    const QList<QByteArray> &m_targets;
    const DropLimits &m_limits;
    const std::function<std::optional<DroppedForm>(const QByteArray &)> &m_fetch;
    QStringList m_addresses;
};

} // namespace

DroppedContent readDroppedForms(const QList<QByteArray> &targets, const DropLimits &limits,
                                const std::function<std::optional<DroppedForm>(const QByteArray &)> &fetch) {
    return Reading(targets, limits, fetch).read();
}

DroppedContent readDroppedForms(const QMimeData &data, const DropLimits &limits) {
    QList<QByteArray> targets;
    const auto formats = data.formats();
    for (const QString &format : formats)
        targets.append(format.toLatin1());
    return readDroppedForms(targets, limits, [&data](const QByteArray &target) {
        return std::optional(DroppedForm{target, data.data(QString::fromLatin1(target))});
    });
}

} // namespace tavrine
