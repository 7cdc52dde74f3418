#include "recording/RecordingTexts.h"

#include <QDateTime>
#include <QLocale>

#include <cmath>

namespace tavrine {
namespace {

struct Unit {
    const char *name;
    int decimals;
};

constexpr Unit units[] = {{"KB", 0}, {"MB", 1}, {"GB", 2}, {"TB", 2}};

} // namespace

QString clockText(Seconds duration) {
    const auto whole = static_cast<qint64>(duration.count());
    return QStringLiteral("%1:%2").arg(whole / 60, 2, 10, QLatin1Char('0')).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString fileSizeText(qint64 bytes) {
    if (bytes <= 0)
        return QStringLiteral("Zero KB");
    if (bytes < 1000)
        return bytes == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(bytes);
    double value = double(bytes);
    const Unit *shown = nullptr;
    for (const Unit &unit : units) {
        value /= 1000;
        shown = &unit;
        const double step = std::pow(10.0, unit.decimals);
        if (std::round(value * step) / step < 1000) // what rounds up to a thousand is one of the next
            break;
    }
    // No zeros behind the point.
    const double step = std::pow(10.0, shown->decimals);
    return QLocale::c().toString(std::round(value * step) / step, 'g', 7) + QLatin1Char(' ') +
           QLatin1String(shown->name);
}

QString recordingName(Date now) {
    const auto moment = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(now.secondsSince1970)));
    return QStringLiteral("recording_") + QLocale::c().toString(moment, QStringLiteral("yyyy-MM-dd_HH.mm.ss"));
}

QString endNotice(RecordingEnd end, std::optional<MovieWriterFailure> failure, bool isThere) {
    const bool isDiskFull = failure == MovieWriterFailure::diskIsFull;
    if (end == RecordingEnd::byItself)
        return isDiskFull ? QStringLiteral("Recording stopped: the disk is full")
                          : QStringLiteral("Recording stopped unexpectedly");
    if (!failure)
        return {};
    if (!isThere)
        return QStringLiteral("The recording couldn't be written");
    return isDiskFull ? QStringLiteral("The disk is full: the recording lacks its end")
                      : QStringLiteral("The recording may lack its end");
}

} // namespace tavrine
