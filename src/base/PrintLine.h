#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>

namespace tavrine {

/// Writes `line` to standard output as a diagnostic, at once, so that the lines stand in order whoever reads them.
inline void printLine(const QString &line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace tavrine
