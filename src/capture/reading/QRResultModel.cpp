#include "capture/reading/QRResultModel.h"

namespace tavrine::qrResult {

QString title(qsizetype count) {
    return QString::number(count) + QLatin1String(" QR Code") + (count == 1 ? QString() : QStringLiteral("s")) +
           QLatin1String(" Found");
}

std::optional<QString> header(std::optional<int> index) {
    return index ? std::optional(QStringLiteral("Code %1").arg(*index + 1)) : std::nullopt;
}

std::optional<QUrl> webAddress(const QString &code) {
    const QUrl url(code, QUrl::StrictMode);
    const QString scheme = url.scheme(); // in small letters, however it was written
    const bool isWeb = scheme == QLatin1String("http") || scheme == QLatin1String("https");
    return url.isValid() && isWeb ? std::optional(url) : std::nullopt;
}

} // namespace tavrine::qrResult
