#pragma once

#include <QCoreApplication>
#include <QMetaObject>

#include <memory>
#include <utility>

namespace tavrine {

/// Runs `work` in a later turn of the main thread's event loop. Any thread; dropped once the program has ended.
template <class Work>
void onMainThread(Work work) {
    if (auto *const application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, std::move(work), Qt::QueuedConnection);
}

/// A handler that is called with the first answer that comes, and with no other: a thread's, or the clock's that did
/// not wait for it. Main thread; copies are one and the same.
template <class Handler>
class FirstAnswer {
public:
    explicit FirstAnswer(Handler handler) : m_handler(std::make_shared<Handler>(std::move(handler))) {}

    template <class Answer>
    void operator()(const Answer &answer) const {
        if (const auto handler = std::exchange(*m_handler, nullptr))
            handler(answer);
    }

private:
    std::shared_ptr<Handler> m_handler;
};

} // namespace tavrine
