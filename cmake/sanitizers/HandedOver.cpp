// What the toolkit hands from one thread to another, told to the thread sanitizer. The toolkit itself is not built with
// it: its queues lock what nobody sees, and all that a queued call or a queue's work was given would look unguarded.
// These functions stand before the toolkit's own, name the moment of giving and that of taking, and call those. Nothing
// is left out of the look by that: what both threads touch beside it is still a race. In no other build.
//
// And a child that the toolkit starts has memory of its own here. In that of its parent, as the toolkit has it, the
// sanitizer takes the parent for the child, and looks at nothing that the parent's thread does from there on.

#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

#include <cstdarg>
#include <functional>
#include <utility>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>
#include <sched.h>

namespace {

template <class Function>
Function next(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// A queued call: what it was given was whole before it was posted.
class HandedOver final : public QtPrivate::QSlotObjectBase {
public:
    explicit HandedOver(QtPrivate::QSlotObjectBase *inner) : QSlotObjectBase(&HandedOver::act), m_inner(inner) {
        __tsan_release(this);
    }

private:
    static void act(int which, QSlotObjectBase *base, QObject *receiver, void **arguments, bool * /*isEqual*/) {
        __tsan_acquire(base);
        auto *const self = static_cast<HandedOver *>(base);
        if (which == Call) {
            self->m_inner->call(receiver, arguments);
            __tsan_release(base);                     // to who destroys it, or waits for it
            __tsan_release(QThread::currentThread()); // to who waits for the thread's end
        } else if (which == Destroy) {
            self->m_inner->destroyIfLastRef();
            delete self;
        }
    }

    QtPrivate::QSlotObjectBase *const m_inner;
};

/// A queue's work.
class GivenWork final : public QRunnable {
public:
    GivenWork(QThreadPool &pool, std::function<void()> work) : m_pool(pool), m_work(std::move(work)) {
        __tsan_release(this);
    }
    void run() override {
        __tsan_acquire(this);
        const bool isSerial = m_pool.maxThreadCount() == 1; // then each piece of work sees what those before it did
        if (isSerial)
            __tsan_acquire(&m_pool);
        m_work();
        m_work = nullptr;
        __tsan_release(&m_pool); // to who waits for all
    }

private:
    QThreadPool &m_pool;
    std::function<void()> m_work;
};

} // namespace

bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type,
                                   void *result) {
    static const auto own = next<decltype(&QMetaObject::invokeMethodImpl)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    return own(object, new HandedOver(slot), type, result);
}

void QThreadPool::start(std::function<void()> work, int priority) {
    using Own = void (*)(QThreadPool *, QRunnable *, int);
    static const auto own = next<Own>("_ZN11QThreadPool5startEP9QRunnablei");
    own(this, new GivenWork(*this, std::move(work)), priority);
}

bool QThreadPool::waitForDone(int milliseconds) {
    using Own = bool (*)(QThreadPool *, int);
    static const auto own = next<Own>("_ZN11QThreadPool11waitForDoneEi");
    const bool isDone = own(this, milliseconds);
    if (isDone)
        __tsan_acquire(this);
    return isDone;
}

void QSemaphore::acquire(int count) {
    using Own = void (*)(QSemaphore *, int);
    static const auto own = next<Own>("_ZN10QSemaphore7acquireEi");
    own(this, count);
    __tsan_acquire(this);
}

void QSemaphore::release(int count) {
    using Own = void (*)(QSemaphore *, int);
    static const auto own = next<Own>("_ZN10QSemaphore7releaseEi");
    __tsan_release(this);
    own(this, count);
}

bool QThread::wait(QDeadlineTimer deadline) {
    using Own = bool (*)(QThread *, QDeadlineTimer);
    static const auto own = next<Own>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool hasEnded = own(this, deadline);
    if (hasEnded)
        __tsan_acquire(this);
    return hasEnded;
}

extern "C" int clone(int (*run)(void *), void *stack, int flags, void *argument, ...) {
    va_list list;
    va_start(list, argument);
    auto *const parentNumber = va_arg(list, pid_t *);
    auto *const storage = va_arg(list, void *);
    auto *const childNumber = va_arg(list, pid_t *);
    va_end(list);
    static const auto own = next<decltype(&clone)>("clone");
    if ((flags & CLONE_VFORK) != 0)
        flags &= ~(CLONE_VFORK | CLONE_VM);
    return own(run, stack, flags, argument, parentNumber, storage, childNumber);
}
