#include "adapters/linux/NarratedWords.h"

#include "base/DesktopWords.h"

namespace tavrine {

QString narratedWords(const NarratedPlace &place) {
    const auto withSize = [&place](const QString &text) {
        return text.arg(place.picture[0]).arg(place.picture[1]).arg(place.area[0]).arg(place.area[1]);
    };
    switch (place.kind) {
    case NarratedPlace::Kind::screen:
        return {};
    case NarratedPlace::Kind::cross:
        return inDesktopWords(QStringLiteral("Cross at %1, %2").arg(place.area[0]).arg(place.area[1]));
    case NarratedPlace::Kind::area:
        return inDesktopWords(withSize(QStringLiteral("Area of %1 × %2 at %3, %4")));
    case NarratedPlace::Kind::window:
        return inDesktopWords(withSize(QStringLiteral("Window of %1 × %2 at %3, %4")));
    }
    return {};
}

QString narratedKeys() {
    return inDesktopWords(QStringLiteral("Arrow keys move the cross, Return sets a corner and takes the area, Space "
                                         "takes a window, Escape cancels"));
}

} // namespace tavrine
