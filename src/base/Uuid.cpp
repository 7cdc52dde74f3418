#include "base/Uuid.h"

namespace tavrine {

QString uuidString(const QUuid &id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QString freshUuidString() {
    return uuidString(QUuid::createUuid());
}

std::optional<QUuid> uuidFromString(const QString &text) {
    constexpr qsizetype textLength = 36;
    if (text.size() != textLength)
        return std::nullopt;
    const QUuid id = QUuid::fromString(text);
    // QUuid answers a text that it cannot read with the null UUID, which is also a text of its own.
    if (id.isNull() && text != QUuid().toString(QUuid::WithoutBraces))
        return std::nullopt;
    return id;
}

} // namespace tavrine
