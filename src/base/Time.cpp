#include "base/Time.h"

#include <QObject>
#include <QPointer>

namespace tavrine {
namespace {

Time::Work whileAlive(QObject *owner, Time::Work work) {
    return [guard = QPointer<QObject>(owner), work = std::move(work)] {
        if (guard)
            work();
    };
}

} // namespace

Time::~Time() = default;

void Time::async(QObject *owner, Work work) {
    async(whileAlive(owner, std::move(work)));
}

void Time::asyncAfter(Seconds delay, QObject *owner, Work work) {
    asyncAfter(delay, whileAlive(owner, std::move(work)));
}

} // namespace tavrine
