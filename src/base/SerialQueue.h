#pragma once

#include <QString>
#include <QThreadPool>

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace tavrine {

/// A queue that runs one piece of work at a time, in the order of arrival, on a thread of its own.
///
/// The thread carries the queue's label, as far as the kernel's 15 characters reach, and stays while the queue lives.
/// The destructor waits for the work that was handed in.
class SerialQueue {
public:
    explicit SerialQueue(QString label);
    ~SerialQueue();
    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;

    [[nodiscard]] const QString &label() const { return m_label; }

    /// Hands `work` in and returns at once.
    void async(std::function<void()> work);

    /// Runs `work` on the queue and waits for it; its result is the call's result. Calling this from the queue's own
    /// thread could never end, so it ends the process.
    template <class Work>
    auto sync(Work &&work) -> std::invoke_result_t<Work> {
        using Result = std::invoke_result_t<Work>;
        if constexpr (std::is_void_v<Result>) {
            runAndWait([&] { work(); });
        } else {
            std::optional<Result> result;
            runAndWait([&] { result.emplace(work()); });
            return std::move(*result);
        }
    }

    /// True on the queue's own thread.
    [[nodiscard]] bool isCurrent() const;

private:
    void runAndWait(const std::function<void()> &work);

    QString m_label;
    QThreadPool m_pool;
};

} // namespace tavrine
