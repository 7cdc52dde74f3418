// TavrineRecorder: encodes the pictures and the sound that it is told on its socket into the movie that it was given
// open. Ends with the movie, or with whoever started it, and then with what has come.
#include "programs/recorder/Recording.h"
#include "programs/recorder/Walls.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace tavrine;
using namespace recorderProtocol;

namespace {

using Clock = Recording::Clock;

/// Without anything written at the end, after which whoever waits has gone.
constexpr unsigned mostSecondsOfEnding = 60;

std::atomic<bool> isEnding = false;

void say(const Report &report) {
    const std::string message = messageOf(report);
    static_cast<void>(::send(recorderProtocol::socket, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
}

[[noreturn]] void leave(const Recording::Error &error, Report::Kind failure = Report::Kind::failed) {
    say(error ? Report{failure, *error} : Report{Report::Kind::finished});
    std::_Exit(error ? EXIT_FAILURE : EXIT_SUCCESS);
}

/// Whoever waits for the end hears that it comes nearer.
void tellProgress() {
    if (!isEnding)
        return;
    ::alarm(mostSecondsOfEnding);
    say({Report::Kind::writing});
}

struct Message {
    enum class Kind { none, message, end };
    Kind kind = Kind::none;
    std::string_view bytes = {};
    Descriptor memory = {};
};

/// The next message, if there is one; every descriptor that comes with it has an owner.
Message receive() {
    static std::array<char, longestMessage> bytes;
    constexpr std::size_t mostDescriptors = 4;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control{};
    iovec part{bytes.data(), bytes.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    const ssize_t count = ::recvmsg(recorderProtocol::socket, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (count < 0)
        return {.kind = errno == EAGAIN || errno == EINTR ? Message::Kind::none : Message::Kind::end};
    if (count == 0)
        return {.kind = Message::Kind::end};
    Message message{.kind = Message::Kind::message, .bytes = {bytes.data(), static_cast<std::size_t>(count)}};
    for (cmsghdr *one = CMSG_FIRSTHDR(&header); one; one = CMSG_NXTHDR(&header, one)) {
        if (one->cmsg_level != SOL_SOCKET || one->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t descriptors = (one->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < descriptors; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(one) + i * sizeof(int), sizeof number);
            message.memory = Descriptor(number);
        }
    }
    if (header.msg_flags & MSG_TRUNC)
        message.bytes = {}; // no message of ours
    return message;
}

void waitForMessage(std::optional<Clock::time_point> until) {
    int milliseconds = -1;
    if (until) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now());
        milliseconds = static_cast<int>(std::max<std::chrono::milliseconds::rep>(rest.count(), 0));
    }
    pollfd socket{recorderProtocol::socket, POLLIN, 0};
    ::poll(&socket, 1, milliseconds);
}

/// Until there is no more to come. What makes no sense, or cannot be written, ends it with words.
Recording::Error record(Recording &recording) {
    while (!recording.isFinished() && !recording.hasDiskFailed()) {
        Message message = receive();
        if (message.kind == Message::Kind::end)
            return std::nullopt;
        if (message.kind == Message::Kind::message) {
            const auto taken = [] { say({Report::Kind::taken}); };
            if (Recording::Error error = recording.take(message.bytes, std::move(message.memory), taken))
                return error;
        }
        const auto next = recording.writeWhatIsDue(Clock::now());
        if (message.kind == Message::Kind::none)
            waitForMessage(next);
    }
    return std::nullopt; // of a full disk the end of the movie tells
}

/// The person's programs come first: this one has its share of the processor, but does not take it from one that has
/// just been woken. One picture at a time on one thread leaves the other processors alone.
void giveWay() {
    const sched_param none{};
    static_cast<void>(sched_setscheduler(0, SCHED_BATCH, &none));
}

} // namespace

int main() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // the write tells
    // Who asks us to end gets a whole movie: it is as if nothing more came.
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        std::signal(signal, [](int) { ::shutdown(recorderProtocol::socket, SHUT_RD); });
    giveWay();
    if (const LockDownError error = lockRecorder())
        leave("the recorder is not locked in: " + *error);
    static Recording recording(recorderProtocol::file, tellProgress);
    const Recording::Error error = record(recording);
    isEnding = true;
    ::alarm(mostSecondsOfEnding);
    const Recording::Error ending = recording.finish(Clock::now());
    leave(error ? error : ending, !error && recording.isDiskFull() ? Report::Kind::diskIsFull : Report::Kind::failed);
}
