#include "clipboard/ClipboardItem.h"

namespace tavrine {

bool isRecordingFileName(const QString &fileName) {
    return fileName.endsWith(QLatin1String(".mp4")) || fileName.endsWith(QLatin1String(".mov"));
}

QString contentOrImage(const QString &content, const std::optional<QString> &imageFileName) {
    return content.isEmpty() && imageFileName ? QStringLiteral("Image") : content;
}

} // namespace tavrine
