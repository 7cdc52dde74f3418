#pragma once

#include <QString>

namespace tavrine {

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

} // namespace tavrine
