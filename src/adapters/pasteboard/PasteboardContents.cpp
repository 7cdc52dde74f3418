#include "adapters/pasteboard/PasteboardContents.h"

#include "ports/Pasteboard.h"

namespace tavrine {

QString OwnContents::textOrPaths() const {
    if (!text.isEmpty())
        return text;
    QStringList paths;
    for (const QUrl &url : urls)
        paths.append(url.isLocalFile() ? url.toLocalFile() : url.toString());
    return paths.join(QLatin1Char('\n'));
}

QStringList OwnContents::types() const {
    QStringList types;
    if (!urls.isEmpty())
        types.append(QLatin1String(pasteboardType::fileUrl));
    if (!text.isEmpty())
        types.append(QLatin1String(pasteboardType::string));
    if (!image.isNull())
        types.append(QLatin1String(pasteboardType::png));
    return types;
}

} // namespace tavrine
