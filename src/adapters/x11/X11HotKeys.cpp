#include "adapters/x11/X11HotKeys.h"

#include "adapters/x11/OwnWindows.h"
#include "adapters/x11/X11KeyGrabs.h"
#include "base/VirtualKeys.h"

#include <QGuiApplication>

#include <future>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// Twice what the thread waits for the server's answer; the registration goes on without the main thread.
constexpr auto longestWaitForKeys = 400ms;

} // namespace

X11HotKeys::X11HotKeys(std::shared_ptr<const KeyboardSilence> silence) : m_onThread(new QObject) {
    m_thread.setObjectName(QStringLiteral("hot keys"));
    m_onThread->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_onThread, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(
        m_onThread,
        [this, windows = ownWindows(), silence = std::move(silence)] {
            const auto tell = [this](HotKeyRef ref, quint32 press) {
                QMetaObject::invokeMethod(
                    &m_mainThread, [this, ref, press] { onPress(ref, press); }, Qt::QueuedConnection);
            };
            m_grabs = new X11KeyGrabs(windows, silence, tell, m_onThread);
        },
        Qt::QueuedConnection);
}

X11HotKeys::~X11HotKeys() {
    m_thread.quit();
    m_thread.wait(); // its own waits for the server are bounded
}

void X11HotKeys::post(std::function<void(X11KeyGrabs &)> work) {
    QMetaObject::invokeMethod(
        m_onThread, [this, work = std::move(work)] { work(*m_grabs); }, Qt::QueuedConnection);
}

std::optional<HotKeyRef> X11HotKeys::registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) {
    const auto keycode = xKeycode(keyCode);
    if (!keycode || *keycode > 255)
        return std::nullopt;
    const Registration registration{static_cast<quint8>(*keycode), modifiers, id};
    for (const auto &[ref, other] : m_registrations)
        if (other.keycode == registration.keycode && other.modifiers == modifiers)
            return std::nullopt; // the server would let the same connection grab twice
    const HotKeyRef ref = ++m_lastRef;
    const auto result = std::make_shared<std::promise<X11KeyGrabs::Result>>();
    auto answer = result->get_future();
    post([ref, registration, result](X11KeyGrabs &grabs) {
        result->set_value(grabs.add(ref, registration.keycode, registration.modifiers));
    });
    // A server that is slow to answer gets the grabs all the same.
    if (answer.wait_for(longestWaitForKeys) == std::future_status::ready && answer.get() == X11KeyGrabs::Result::taken)
        return std::nullopt;
    m_registrations[ref] = registration;
    return ref;
}

void X11HotKeys::unregisterHotKey(HotKeyRef ref) {
    if (m_registrations.erase(ref) > 0)
        post([ref](X11KeyGrabs &grabs) { grabs.remove(ref); });
}

void X11HotKeys::onPress(HotKeyRef ref, quint32 press) {
    auto next = KeyboardNext::asBefore;
    if (const auto found = m_registrations.find(ref); found != m_registrations.end())
        if (const Handler handler = m_handler) // a copy: it may register anew
            next = handler(HotKeyId(found->second.id));
    const auto told = next == KeyboardNext::ourWindow ? X11KeyGrabs::Next::ourWindow : X11KeyGrabs::Next::asBefore;
    post([press, told](X11KeyGrabs &grabs) { grabs.letGo(press, told); });
}

} // namespace tavrine
