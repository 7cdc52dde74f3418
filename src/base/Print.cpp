#include "base/Print.h"

#include <cstdio>

namespace tavrine {

void printLine(const QString &line) {
    const QByteArray text = line.toUtf8() + '\n';
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    std::fflush(stdout);
}

} // namespace tavrine
