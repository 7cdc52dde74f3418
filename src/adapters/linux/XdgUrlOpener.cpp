#include "adapters/linux/XdgUrlOpener.h"

#include <QProcess>

namespace tavrine {

void XdgUrlOpener::openUrl(const QUrl &url) {
    if (url.isValid() && url.scheme() != QLatin1String("x-apple.systempreferences"))
        QProcess::startDetached(QStringLiteral("xdg-open"), {QString::fromLatin1(url.toEncoded())});
}

} // namespace tavrine
