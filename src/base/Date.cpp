#include "base/Date.h"

#include <QDateTime>
#include <QTimeZone>

#include <cmath>

namespace tavrine {

QString description(Date date) {
    const auto whole = static_cast<qint64>(std::floor(date.secondsSince1970));
    return QDateTime::fromSecsSinceEpoch(whole, Qt::UTC).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
           QStringLiteral(" +0000");
}

} // namespace tavrine
