#pragma once

#include <QString>
#include <QThreadPool>

#include <functional>

namespace tavrine {

/// A queue that runs its work side by side, begun in the order of arrival, each on a thread that carries the label, as
/// far as the kernel's 15 characters reach. The destructor waits for the work that was handed in.
class ConcurrentQueue {
public:
    /// `mostAtOnce` pieces of work run at a time; what comes beyond them waits for its turn.
    ConcurrentQueue(QString label, int mostAtOnce);
    ~ConcurrentQueue();
    ConcurrentQueue(const ConcurrentQueue &) = delete;
    ConcurrentQueue &operator=(const ConcurrentQueue &) = delete;

    [[nodiscard]] const QString &label() const { return m_label; }

    /// Hands `work` in and returns at once.
    void async(std::function<void()> work);

private:
    QString m_label;
    QThreadPool m_pool;
};

} // namespace tavrine
