#include "upload/ConcurrentQueue.h"

#include <sys/prctl.h>

namespace tavrine {

ConcurrentQueue::ConcurrentQueue(QString label) : m_label(std::move(label)) {
    m_pool.setMaxThreadCount(64); // its work waits and does not compute, so the cores are no measure
}

ConcurrentQueue::~ConcurrentQueue() {
    m_pool.waitForDone();
}

void ConcurrentQueue::async(std::function<void()> work) {
    m_pool.start([this, work = std::move(work)] {
        prctl(PR_SET_NAME, m_label.toUtf8().constData());
        work();
    });
}

} // namespace tavrine
