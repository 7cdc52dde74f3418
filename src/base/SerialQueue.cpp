#include "base/SerialQueue.h"

#include <QSemaphore>

#include <sys/prctl.h>

namespace tavrine {
namespace {

thread_local const SerialQueue *currentQueue = nullptr;

} // namespace

SerialQueue::SerialQueue(QString label) : m_label(std::move(label)) {
    m_pool.setMaxThreadCount(1);
    m_pool.setExpiryTimeout(-1);
}

SerialQueue::~SerialQueue() {
    m_pool.waitForDone();
}

void SerialQueue::async(std::function<void()> work) {
    m_pool.start([this, work = std::move(work)] {
        if (currentQueue != this) {
            currentQueue = this;
            prctl(PR_SET_NAME, m_label.toUtf8().constData());
        }
        work();
    });
}

void SerialQueue::runAndWait(const std::function<void()> &work) {
    if (isCurrent())
        qFatal("a queue was asked to wait for itself: %s", qUtf8Printable(m_label));
    QSemaphore done;
    async([&] {
        work();
        done.release();
    });
    done.acquire();
}

bool SerialQueue::isCurrent() const {
    return currentQueue == this;
}

} // namespace tavrine
