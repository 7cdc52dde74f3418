#include "clipboard/LinkRule.h"

#include <QUrl>

#include <algorithm>

namespace tavrine {
namespace {

/// The name of the host as it is written, with its port. Numbers are hosts too ("1234" is 0.0.4.210), so the dots of a
/// parsed host say nothing about the text.
QStringView writtenHost(QStringView text) {
    const auto *const end =
        std::find_if(text.begin(), text.end(), [](QChar c) { return c == u'/' || c == u'?' || c == u'#'; });
    return text.first(end - text.begin());
}

} // namespace

bool isLink(const ClipboardItem &item) {
    if (item.imageFileName)
        return false;
    if (item.cut)
        return item.cut->isLink;
    const QStringView text = QStringView(item.content).trimmed();
    if (std::ranges::any_of(text, [](QChar c) { return c.isSpace() || c == u'@'; }))
        return false;
    const QString address = text.toString();
    const QUrl url(address, QUrl::StrictMode);
    if (url.isValid() && !url.scheme().isEmpty())
        return true;
    if (!writtenHost(text).contains(u'.'))
        return false;
    const QUrl withScheme(QStringLiteral("https://") + address, QUrl::StrictMode);
    return withScheme.isValid() && !withScheme.host().isEmpty();
}

} // namespace tavrine
