#include "adapters/wayland/DataControlThread.h"

#include "adapters/pasteboard/ReaderThread.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

/// So much later a notice may be heard than what it tells of: this thread had no processor.
constexpr std::chrono::milliseconds hearing{100};
constexpr std::chrono::hours noDeadline{1};

} // namespace

DataControlThread::DataControlThread(const SelectionLimits &limits, ImageFileReader &files, Publish publish,
                                     std::function<void(const std::string &reason)> onLost)
    : m_limits(limits), m_files(files), m_onLost(std::move(onLost)), m_mailbox(std::make_shared<Mailbox<Message>>()),
      m_news(std::move(publish)), m_pipes(m_descriptors, m_limits.outgoingStall, m_limits.outgoingTransfers) {
    m_maker.setMaxThreadCount(1);
    if (!m_mailbox->isUsable() || !m_descriptors.add(m_mailbox->wakeUp(), EPOLLIN))
        return;
    m_mailbox->setRead(true);
    m_thread = startReaderThread([this] { open(); }, [this] { run(); }, m_limits.start);
}

DataControlThread::~DataControlThread() {
    m_isEnding = true;
    m_mailbox->post(Stop{});
    if (m_thread.joinable())
        m_thread.join();
    m_maker.waitForDone();
}

void DataControlThread::claim(OwnContents contents, int serial, TimePoint writtenAt) {
    m_mailbox->post(Claim{std::move(contents), serial, writtenAt});
}

void DataControlThread::open() {
    m_link.emplace(WaylandLink::usualWait, &m_isEnding);
    if (!m_link->isOpen())
        return;
    m_control.emplace(*m_link, m_limits.targets,
                      DataControl::Hooks{[this](std::unique_ptr<DataOffer> offer) { onSelection(std::move(offer)); }});
    static_cast<void>(m_link->finish());
    m_isOpening = false;
}

void DataControlThread::run() {
    const bool wasOpen = m_control && m_control->isUsable();
    while (wasOpen && !m_isStopping && m_link->dispatch(untilDue(), m_descriptors.descriptor())) {
        m_descriptors.forEachReady([this](int descriptor) {
            if (m_fetch)
                m_fetch->read(descriptor);
            m_pipes.proceed(descriptor);
        });
        for (Message &message : m_mailbox->takeAll())
            receive(std::move(message));
        expire();
        if (std::exchange(m_hasNobodyFollowed, false))
            reclaim();
        askWhoFollowed();
        m_link->flush();
    }
    m_mailbox->setRead(false);
    if (wasOpen && !m_isStopping)
        m_onLost(m_link->whyClosed());
    m_barrier.reset();
    m_fetch.reset();
    m_offered.reset();
    m_control.reset();
    m_link.reset();
}

WaylandLink::Wait DataControlThread::untilDue() const {
    std::optional<TimePoint> due = m_pipes.deadline();
    const auto consider = [&due](std::optional<TimePoint> other) {
        if (other)
            due = std::min(due.value_or(*other), *other);
    };
    if (m_fetch)
        consider(m_fetch->contents().deadline());
    if (!m_barrier)
        consider(reclaimTime());
    if (!due)
        return noDeadline;
    const auto left = std::chrono::ceil<WaylandLink::Wait>(*due - std::chrono::steady_clock::now());
    return std::max(left, WaylandLink::Wait{0});
}

void DataControlThread::expire() {
    const TimePoint now = std::chrono::steady_clock::now();
    m_pipes.expire(now);
    if (m_fetch)
        m_fetch->expire(now);
    if (m_fetch && !m_fetch->contents().isRunning() && m_offered)
        m_fetch.reset(); // what it holds is offered
}

void DataControlThread::receive(Message message) {
    if (const auto *claim = std::get_if<Claim>(&message)) {
        claimNow(*claim);
    } else if (const auto *made = std::get_if<Made>(&message)) {
        if (m_offered && made->source == m_offeredNumber)
            m_offered->onMade(made->target, made->bytes);
    } else if (auto *file = std::get_if<ImageFile>(&message)) {
        if (m_fetch && file->fetch == m_fetchNumber)
            m_fetch->contents().onImageFile(std::move(file->bytes));
    } else {
        m_isStopping = true;
    }
}

void DataControlThread::onSelection(std::unique_ptr<DataOffer> offer) {
    if (m_offered)
        return;
    const bool wasOurs = std::exchange(m_wasReplaced, false);
    if (!offer && wasOurs) // emptied on purpose: we have not ended
        m_news.publishNothing();
    if (!offer) {
        ownerEnded();
        return;
    }
    m_foreignTime = std::chrono::steady_clock::now();
    m_brake.ownershipChanged(m_foreignTime);
    dropForeign();
    m_news.begin(!m_isOpening);
    startFetch(std::move(offer));
}

void DataControlThread::onReplaced() {
    m_offered.reset();
    m_fetch.reset();
    m_wasReplaced = true; // by whom is told next
}

void DataControlThread::startFetch(std::unique_ptr<DataOffer> offer) {
    const int number = ++m_fetchNumber;
    m_fetch = std::make_unique<OfferFetch>(
        *m_link, m_descriptors, m_limits, m_secrets, std::move(offer),
        PasteboardFetch::Hooks{[this](ForeignContents contents) { m_news.publish(std::move(contents)); },
                               [this, number](const QList<QByteArray> &paths) {
                                   m_files.read(paths, [number, mailbox = m_mailbox](std::optional<QByteArray> bytes) {
                                       mailbox->post(ImageFile{number, std::move(bytes)});
                                   });
                               }});
    m_fetch->start();
}

void DataControlThread::dropForeign() {
    m_fetch.reset();
    m_calmEnd.reset();
    m_barrier.reset();
    m_hasNobodyFollowed = false;
}

void DataControlThread::ownerEnded() {
    if (!m_fetch)
        return;
    m_fetch->contents().ownerEnded();
    if (m_fetch->contents().hasReceived()) {
        m_calmEnd = std::chrono::steady_clock::now() + m_limits.calm;
        return;
    }
    m_fetch.reset();
    m_news.ownerLeftNothing();
}

std::optional<PasteboardReader::TimePoint> DataControlThread::reclaimTime() const {
    if (!m_calmEnd)
        return std::nullopt;
    return std::max(*m_calmEnd, m_brake.releaseTime().value_or(*m_calmEnd));
}

void DataControlThread::askWhoFollowed() {
    const auto due = reclaimTime();
    if (!due || m_barrier || std::chrono::steady_clock::now() < *due)
        return;
    m_barrier = std::make_unique<WaylandBarrier>(*m_link, [this, latest = *due + m_limits.calm] {
        m_barrier.reset();
        const TimePoint now = std::chrono::steady_clock::now();
        m_hasNobodyFollowed = now <= latest && m_brake.isReleased(now);
        if (!m_hasNobodyFollowed) // the machine stood still, and with it whoever is about to follow
            m_calmEnd = now + m_limits.calm;
    });
}

void DataControlThread::reclaim() {
    m_calmEnd.reset();
    std::vector<OfferedForm> forms = m_fetch->contents().receivedForms();
    if (const QByteArray mark = m_control->onlyWhenFreeMark(); !mark.isEmpty())
        forms.push_back({.target = mark, .type = mark, .bytes = {}, .recipe = {}});
    m_offered = offer(std::move(forms), [this] { onReplaced(); });
    m_offeredNumber = m_sourceNumber;
    m_control->setSelection(m_offered->source());
    m_brake.ownershipChanged(std::chrono::steady_clock::now());
    // A file manager may end right after the copy; the picture in the copied file is still to be told of.
    if (!m_fetch->contents().isRunning())
        m_fetch.reset();
}

void DataControlThread::claimNow(const Claim &claim) {
    static_cast<void>(m_link->finish()); // who was here until now is heard of first
    m_news.setOwnSerial(claim.serial);
    if (m_foreignTime > claim.writtenAt + hearing)
        return m_news.tellAgain();
    // Everything up to here has been replaced by this write.
    dropForeign();
    m_news.wasReplaced();
    // What was offered before goes when the new one stands: else the clipboard is empty between them, and whoever keeps
    // clipboards alive takes it.
    const auto before = std::exchange(m_offered, offer(formsOf(claim.contents), [this] { onReplaced(); }));
    m_offeredNumber = m_sourceNumber;
    m_wasReplaced = false;
    m_control->setSelection(m_offered->source());
}

std::unique_ptr<OfferedSource> DataControlThread::offer(std::vector<OfferedForm> forms,
                                                        std::function<void()> onReplaced) {
    const int number = ++m_sourceNumber;
    const auto make = [this, number](const QByteArray &target, const OfferedForm::Recipe &recipe) {
        m_maker.start([number, target, recipe, mailbox = m_mailbox] { mailbox->post(Made{number, target, recipe()}); });
    };
    return std::make_unique<OfferedSource>(*m_control, m_pipes, std::move(forms),
                                           OfferedSource::Hooks{make, std::move(onReplaced)});
}

} // namespace tavrine
