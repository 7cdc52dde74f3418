#pragma once

#include <QDBusArgument>
#include <QVariant>

namespace tavrine {

/// What a peer on a bus has told, where it is of that D-Bus signature (one complete type that is no basic one); else an
/// empty one. The toolkit reads whatever there is as what it is asked for, and past it.
template <class T>
[[nodiscard]] T busValue(const QVariant &told, QLatin1String signature) {
    if (told.userType() != qMetaTypeId<QDBusArgument>() || told.value<QDBusArgument>().currentSignature() != signature)
        return {};
    return qdbus_cast<T>(told);
}

inline constexpr QLatin1String busMap("a{sv}"); ///< of names to values of any type

} // namespace tavrine
