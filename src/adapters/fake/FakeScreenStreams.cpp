#include "adapters/fake/FakeScreenStreams.h"

#include "base/Descriptor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <sys/mman.h>

namespace tavrine {
namespace {

/// Memory of a picture that other processes can map.
struct Memory {
    explicit Memory(const QImage &picture) : descriptor(::memfd_create("frame", MFD_CLOEXEC)) {
        const QImage plain = picture.convertToFormat(QImage::Format_RGB32);
        const auto bytes = static_cast<size_t>(plain.sizeInBytes());
        if (::ftruncate(descriptor.number(), static_cast<off_t>(bytes)) != 0 ||
            ::pwrite(descriptor.number(), plain.constBits(), bytes, 0) != static_cast<ssize_t>(bytes))
            std::abort(); // the machine has no memory left for a test
    }
    Descriptor descriptor;
};

} // namespace

struct FakeScreenStreams::State : Stream {
    Handlers handlers;
    QRegion pending;    ///< since the last frame, in pixels of the frame
    bool isDue = false; ///< a frame is on its way
    std::optional<MediaTime> last;
    std::vector<std::weak_ptr<const ScreenFrame>> out; ///< by number of the buffer
};

class FakeScreenStreams::FakeStream final : public ScreenStream {
public:
    FakeStream(FakeScreenStreams &owner, std::shared_ptr<State> state) : m_owner(owner), m_state(std::move(state)) {}
    ~FakeStream() override {
        m_state->isDropped = true;
        m_state->isRunning = false;
        m_state->handlers = {};
    }
    void startCapture(Completion completion) override {
        ++m_state->starts;
        const auto error = failureOfStart();
        m_state->isRunning = m_owner.m_runsBeforeItAnswers && !error;
        m_owner.answerLater([&owner = m_owner, state = m_state, error, completion = std::move(completion)] {
            if (state->isDropped)
                return;
            if (!error) {
                state->isRunning = true;
                owner.change(*state, QRect({}, QSize(state->configuration.width, state->configuration.height)));
                owner.emitLater(state);
            }
            completion(error);
        });
    }
    void stopCapture(Completion completion) override {
        ++m_state->stops;
        auto error = std::exchange(m_owner.m_nextStopError, std::nullopt);
        if (!std::exchange(m_state->isRunning, false) && !error)
            error = QStringLiteral("The stream does not run.");
        m_owner.answerLater([state = m_state, error, completion = std::move(completion)] {
            if (!state->isDropped)
                completion(error);
        });
    }

private:
    [[nodiscard]] std::optional<QString> failureOfStart() {
        if (auto error = std::exchange(m_owner.m_nextStartError, std::nullopt))
            return error;
        if (m_state->starts > 1)
            return QStringLiteral("The stream was started before.");
        const auto &displays = m_owner.m_content.displays;
        if (!displays.contains(ShareableDisplay{m_state->filter.displayID}))
            return QStringLiteral("There is no such display.");
        return std::nullopt;
    }

    FakeScreenStreams &m_owner;
    std::shared_ptr<State> m_state;
};

FakeScreenStreams::FakeScreenStreams(Time &time) : m_time(time), m_screen(1440, 900, QImage::Format_RGB32) {
    m_screen.fill(Qt::black);
}
FakeScreenStreams::~FakeScreenStreams() = default;

void FakeScreenStreams::answerLater(std::function<void()> work) {
    if (m_isSlow)
        m_waiting.push_back(std::move(work));
    else
        m_time.async(std::move(work));
}

void FakeScreenStreams::answerAll() {
    m_isSlow = false;
    for (auto &work : std::exchange(m_waiting, {}))
        m_time.async(std::move(work));
}

void FakeScreenStreams::getShareableContent(ContentAnswer answer) {
    answerLater(
        [content = m_content, error = std::exchange(m_nextContentError, std::nullopt), answer = std::move(answer)] {
            if (error)
                answer(*error);
            else
                answer(content);
        });
}

std::unique_ptr<ScreenStream> FakeScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                            const ScreenStreamConfiguration &configuration,
                                                            Handlers handlers) {
    auto state = std::make_shared<State>();
    state->filter = filter;
    state->configuration = configuration;
    state->handlers = std::move(handlers);
    state->out.resize(static_cast<size_t>(configuration.queueDepth));
    m_streams.push_back(state);
    return std::make_unique<FakeStream>(*this, std::move(state));
}

std::vector<const FakeScreenStreams::Stream *> FakeScreenStreams::streams() const {
    std::vector<const Stream *> all;
    for (const auto &state : m_streams)
        all.push_back(state.get());
    return all;
}

void FakeScreenStreams::paint(const QRect &area, quint32 colour) {
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (m_screen.rect().contains(x, y))
                m_screen.setPixel(x, y, colour);
    for (const auto &state : m_streams)
        if (state->isRunning) {
            change(*state, area.translated(-state->configuration.sourceRect.topLeft().toPoint()));
            emitLater(state);
        }
}

void FakeScreenStreams::goOn() {
    m_isWithholding = false;
    for (const auto &state : m_streams)
        emitLater(state);
}

void FakeScreenStreams::change(State &state, const QRect &area) {
    state.pending += area & QRect(0, 0, state.configuration.width, state.configuration.height);
}

/// As soon as the interval since the last frame is over.
void FakeScreenStreams::emitLater(const std::shared_ptr<State> &state) {
    if (!state->isRunning || state->pending.isEmpty() || std::exchange(state->isDue, true))
        return;
    const MediaTime now(std::llround(m_time.systemUptime().count() * 1e9));
    const MediaTime due = state->last ? *state->last + state->configuration.minimumFrameInterval : now;
    const std::chrono::duration<double> wait = std::max(due - now, MediaTime(0));
    m_time.asyncAfter(Seconds{wait.count()}, [this, state] {
        state->isDue = false;
        emitFrame(state);
    });
}

void FakeScreenStreams::emitFrame(const std::shared_ptr<State> &state) {
    const auto buffer =
        std::find_if(state->out.begin(), state->out.end(), [](const auto &frame) { return frame.expired(); });
    if (!state->isRunning || state->pending.isEmpty() || m_isWithholding)
        return;
    if (buffer == state->out.end()) {
        // Others hold them all: looked at again, as if the last one to let go had told.
        state->last = MediaTime(std::llround(m_time.systemUptime().count() * 1e9));
        return emitLater(state);
    }
    const MediaTime now(std::llround(m_time.systemUptime().count() * 1e9));
    const QSize size(state->configuration.width, state->configuration.height);
    const QImage picture = m_screen.copy(QRect(state->configuration.sourceRect.topLeft().toPoint(), size));
    auto memory = std::make_shared<Memory>(picture);
    auto frame = std::make_unique<ScreenFrame>(ScreenFrame{.memory = memory->descriptor.number(),
                                                           .buffer = static_cast<int>(buffer - state->out.begin()),
                                                           .size = size,
                                                           .bytesPerLine = size.width() * 4,
                                                           .number = ++state->frames,
                                                           .changed = {state->pending.begin(), state->pending.end()}});
    state->pending = {};
    state->last = now;
    const std::shared_ptr<const ScreenFrame> shared(frame.release(),
                                                    [memory](const ScreenFrame *each) { delete each; });
    *buffer = shared;
    if (const auto handler = state->handlers.didOutputSample)
        handler({static_cast<int>(ScreenFrameStatus::complete), now, shared});
}

void FakeScreenStreams::deliver(const ScreenSample &sample) {
    for (const auto &state : std::vector(m_streams))
        if (state->isRunning)
            if (const auto handler = state->handlers.didOutputSample)
                handler(sample);
}

std::shared_ptr<const ScreenFrame> FakeScreenStreams::makeFrame(QSize size, std::uint64_t number) const {
    auto memory = std::make_shared<Memory>(m_screen.copy(QRect({}, size)));
    auto frame = std::make_unique<ScreenFrame>(ScreenFrame{.memory = memory->descriptor.number(),
                                                           .buffer = 0,
                                                           .size = size,
                                                           .bytesPerLine = size.width() * 4,
                                                           .number = number,
                                                           .changed = {QRect({}, size)}});
    return {frame.release(), [memory](const ScreenFrame *each) { delete each; }};
}

void FakeScreenStreams::endStreams(const QString &error) {
    for (const auto &state : std::vector(m_streams))
        if (std::exchange(state->isRunning, false))
            m_time.async([state, error] {
                if (const auto handler = state->handlers.didStopWithError)
                    handler(error);
            });
}

} // namespace tavrine
