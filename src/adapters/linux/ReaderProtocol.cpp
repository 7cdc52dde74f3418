#include "adapters/linux/ReaderProtocol.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstring>

namespace tavrine::readerProtocol {
namespace {

constexpr QLatin1String linesKey("lines");
constexpr QLatin1String failureKey("failure");
constexpr QLatin1String codesKey("codes");
constexpr QLatin1String payloadKey("payload");
constexpr QLatin1String boxKey("box");

QByteArray json(QLatin1String key, const QJsonValue &value) {
    return QJsonDocument(QJsonObject{{key, value}}).toJson(QJsonDocument::Compact);
}

std::optional<QRectF> boxIn(const QJsonValue &value) {
    const QJsonArray numbers = value.toArray();
    if (numbers.size() != 4)
        return std::nullopt;
    const QRectF box(numbers.at(0).toDouble(-1), numbers.at(1).toDouble(-1), numbers.at(2).toDouble(-1),
                     numbers.at(3).toDouble(-1));
    constexpr double slack = 1e-9; // of adding up fractions
    const bool isInside = box.x() >= 0 && box.y() >= 0 && box.width() >= 0 && box.height() >= 0 &&
                          box.x() + box.width() <= 1 + slack && box.y() + box.height() <= 1 + slack;
    return isInside ? std::optional(box) : std::nullopt;
}

} // namespace

QImage transferable(const QImage &image) {
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

QImage pictureIn(const uchar *bytes, qsizetype size) {
    Header header;
    if (size < qsizetype(sizeof(header)))
        return {};
    std::memcpy(&header, bytes, sizeof(header));
    constexpr quint32 longest = 1U << 20;
    const bool isSane = header.magic == magic && header.width > 0 && header.width < longest && header.height > 0 &&
                        header.height < longest && header.hasAlpha <= 1 && header.bytesPerLine % 4 == 0 &&
                        header.bytesPerLine >= header.width * 4 && header.bytesPerLine < longest * 8;
    if (!isSane || quint64(size) - sizeof(header) < quint64(header.bytesPerLine) * header.height)
        return {};
    return {bytes + sizeof(header), static_cast<int>(header.width), static_cast<int>(header.height),
            static_cast<qsizetype>(header.bytesPerLine),
            header.hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32};
}

QByteArray answerOf(const Recognizer::Result &result) {
    if (const auto *failure = std::get_if<Recognizer::Failure>(&result))
        return json(failureKey, failure->reason);
    return json(linesKey, QJsonArray::fromStringList(std::get<QStringList>(result)));
}

QByteArray answerOf(const CodeDetector::Result &result) {
    if (const auto *failure = std::get_if<CodeDetector::Failure>(&result))
        return json(failureKey, failure->reason);
    QJsonArray array;
    const auto &codes = std::get<QList<DetectedCode>>(result);
    for (const DetectedCode &code : codes) {
        const QRectF &box = code.boundingBox;
        array.append(
            QJsonObject{{payloadKey, code.payload}, {boxKey, QJsonArray{box.x(), box.y(), box.width(), box.height()}}});
    }
    return json(codesKey, array);
}

std::optional<Recognizer::Result> textIn(const QByteArray &answer) {
    const QJsonObject object = QJsonDocument::fromJson(answer).object();
    if (const QJsonValue failure = object.value(failureKey); failure.isString())
        return Recognizer::Failure{failure.toString()};
    if (!object.value(linesKey).isArray())
        return std::nullopt;
    QStringList lines;
    const QJsonArray array = object.value(linesKey).toArray();
    for (const QJsonValue &line : array) {
        if (!line.isString())
            return std::nullopt;
        lines.append(line.toString());
    }
    return lines;
}

std::optional<CodeDetector::Result> codesIn(const QByteArray &answer) {
    const QJsonObject object = QJsonDocument::fromJson(answer).object();
    if (const QJsonValue failure = object.value(failureKey); failure.isString())
        return CodeDetector::Failure{failure.toString()};
    if (!object.value(codesKey).isArray())
        return std::nullopt;
    QList<DetectedCode> codes;
    const QJsonArray array = object.value(codesKey).toArray();
    for (const QJsonValue &value : array) {
        const QJsonValue payload = value.toObject().value(payloadKey);
        const auto box = boxIn(value.toObject().value(boxKey));
        if (!payload.isString() || !box)
            return std::nullopt;
        codes.append({payload.toString(), *box});
    }
    return codes;
}

} // namespace tavrine::readerProtocol
