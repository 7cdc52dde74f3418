#include "adapters/wayland/PrimaryText.h"

#include "adapters/wayland/DataControl.h"
#include "adapters/wayland/WaylandClient.h"
#include "base/Descriptor.h"

#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wayland/wlr-data-control-unstable-v1.h>

namespace tavrine {
namespace {

constexpr int firstWithPrimary = 2; // of the older form; every one of the newer has it
constexpr int mostAnswers = 8;
constexpr std::chrono::seconds longestAnswer{10};
constexpr const char *types[] = {"text/plain;charset=utf-8", "UTF8_STRING", "text/plain", "TEXT", "STRING"};

struct Owned {
    PrimaryText *owner;
    QByteArray text;
};

/// Writes what the reader takes, without waiting for it, and ends itself: at the latest when the time is over.
class Answer final : public QObject {
public:
    Answer(QObject *parent, QByteArray text, Descriptor file)
        : QObject(parent), m_text(std::move(text)), m_file(std::move(file)),
          m_notifier(m_file.number(), QSocketNotifier::Write) {
        fcntl(m_file.number(), F_SETFL, fcntl(m_file.number(), F_GETFL) | O_NONBLOCK);
        connect(&m_notifier, &QSocketNotifier::activated, this, &Answer::go);
        QTimer::singleShot(longestAnswer, this, &Answer::end);
    }

private:
    void go() {
        const auto written = write(m_file.number(), m_text.constData() + m_sent, m_text.size() - m_sent);
        if (written < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        m_sent += written;
        if (written > 0 && m_sent < m_text.size())
            return;
        end();
    }
    void end() {
        m_notifier.setEnabled(false);
        m_file.close();
        deleteLater();
    }

    const QByteArray m_text;
    Descriptor m_file;
    QSocketNotifier m_notifier;
    qsizetype m_sent = 0;
};

} // namespace

PrimaryText::PrimaryText(WaylandClient &client) : m_client(client) {
    WaylandLink &link = client.link();
    m_manager = bindDataControl(link, firstWithPrimary);
    const auto isOlder = [this] {
        const char *const bound = wl_proxy_get_class(reinterpret_cast<wl_proxy *>(m_manager));
        return std::strcmp(bound, zwlr_data_control_manager_v1_interface.name) == 0;
    };
    if (m_manager && isOlder() && zwlr_data_control_manager_v1_get_version(m_manager) < firstWithPrimary)
        zwlr_data_control_manager_v1_destroy(std::exchange(m_manager, nullptr));
    m_seat = link.bind<wl_seat>(wl_seat_interface, 1);
    if (!m_manager || !m_seat)
        return;
    using Device = zwlr_data_control_device_v1;
    using Offer = zwlr_data_control_offer_v1;
    static constexpr zwlr_data_control_device_v1_listener listener{
        .data_offer = [](void *, Device *, Offer *) {},
        .selection =
            [](void *, Device *, Offer *offer) {
                if (offer)
                    zwlr_data_control_offer_v1_destroy(offer);
            },
        .finished = [](void *, Device *) {},
        .primary_selection =
            [](void *, Device *, Offer *offer) {
                if (offer)
                    zwlr_data_control_offer_v1_destroy(offer);
            }};
    m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, m_seat);
    zwlr_data_control_device_v1_add_listener(m_device, &listener, nullptr);
}

PrimaryText::~PrimaryText() {
    if (m_device)
        zwlr_data_control_device_v1_destroy(m_device);
    if (m_seat)
        wl_seat_destroy(m_seat);
    if (m_manager)
        zwlr_data_control_manager_v1_destroy(m_manager);
}

bool PrimaryText::own(const QByteArray &text) {
    if (!m_device)
        return false;
    using Source = zwlr_data_control_source_v1;
    static constexpr zwlr_data_control_source_v1_listener listener{
        .send =
            [](void *data, Source *, const char *, std::int32_t file) {
                const auto *const owned = static_cast<Owned *>(data);
                owned->owner->answer(owned->text, file);
            },
        .cancelled =
            [](void *data, Source *source) {
                delete static_cast<Owned *>(data);
                zwlr_data_control_source_v1_destroy(source);
            }};
    auto *const source = zwlr_data_control_manager_v1_create_data_source(m_manager);
    zwlr_data_control_source_v1_add_listener(source, &listener, new Owned{this, text});
    for (const char *type : types)
        zwlr_data_control_source_v1_offer(source, type);
    zwlr_data_control_device_v1_set_primary_selection(m_device, source);
    m_client.flush();
    return true;
}

void PrimaryText::answer(const QByteArray &text, int file) {
    Descriptor end(file);
    struct stat kind {};
    const bool isPipe = ::fstat(file, &kind) == 0 && (S_ISFIFO(kind.st_mode) || S_ISSOCK(kind.st_mode));
    if (isPipe && children().size() < mostAnswers)
        new Answer(this, text, std::move(end));
}

} // namespace tavrine
