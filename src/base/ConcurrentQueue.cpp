#include "base/ConcurrentQueue.h"

#include <sys/prctl.h>

namespace tavrine {

ConcurrentQueue::ConcurrentQueue(QString label, int mostAtOnce) : m_label(std::move(label)) {
    m_pool.setMaxThreadCount(mostAtOnce);
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
