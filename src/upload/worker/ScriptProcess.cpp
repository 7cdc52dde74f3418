#include "upload/worker/ScriptProcess.h"

#include "upload/worker/Frames.h"
#include "upload/worker/LockDown.h"
#include "upload/worker/ScriptWorld.h"
#include "upload/worker/WorkerLimits.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// The engine takes its options from the environment, when its first world is made. Nothing of the caller's may reach
/// it.
void setEngineOptions() {
    const auto value = [](const char *name) {
        const char *found = getenv(name);
        return std::string(found ? found : "");
    };
    const std::array kept{std::pair("LANG", value("LANG")), std::pair("LC_ALL", value("LC_ALL")),
                          std::pair("TZ", value("TZ"))};
    clearenv();
    for (const auto &[name, text] : kept) {
        if (!text.empty())
            setenv(name, text.c_str(), 1);
    }
    if (kept.back().second.empty()) {
        // The engine would look this up by reading files, later.
        char target[256];
        const ssize_t length = readlink("/etc/localtime", target, sizeof target);
        const std::string path(target, length > 0 ? static_cast<std::size_t>(length) : 0);
        constexpr std::string_view folder = "/zoneinfo/";
        const std::size_t at = path.find(folder);
        if (at != std::string::npos)
            setenv("TZ", path.substr(at + folder.size()).c_str(), 1);
    }
    tzset();
    // No code is generated, so no memory is ever executable, and it starts sooner. No helper threads, so none need be
    // allowed. The plain allocator and no cage: then nearly all memory is asked of the kernel, which has the limit, and
    // not taken from 70 GB that were reserved before.
    setenv("JSC_useJIT", "0", 1);
    setenv("JSC_useWasm", "0", 1);
    setenv("JSC_useConcurrentGC", "0", 1);
    setenv("JSC_numberOfGCMarkers", "1", 1);
    setenv("JSC_forceRAMSize", std::to_string(limits::scriptMemory).c_str(), 1);
    setenv("Malloc", "1", 1);
    setenv("GIGACAGE_ENABLED", "0", 1);
}

/// None when it is too long or cannot be read.
std::optional<std::string> readStandardInput() {
    std::string input;
    std::size_t filled = 0;
    while (true) {
        if (filled == input.size()) {
            if (filled > limits::inputBytes)
                return std::nullopt;
            input.resize(std::max<std::size_t>(64 * limits::kib, filled * 2));
        }
        const ssize_t count = read(STDIN_FILENO, input.data() + filled, input.size() - filled);
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            return std::nullopt;
        filled += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    input.resize(filled);
    return filled <= limits::inputBytes ? std::optional(std::move(input)) : std::nullopt;
}

class ScriptProcess {
public:
    explicit ScriptProcess(int socket)
        : m_socket(socket), m_world({[this](std::string line) { return log(std::move(line)); },
                                     [this](const ScriptRequest &request) { send(requestFrame(request)); }}) {}

    [[noreturn]] void run() {
        const LockDownError error = lockScriptProcess();
        send(FrameWriter(FrameKind::locked).text(error.value_or("")));
        if (error || !waitForGo())
            _exit(1);
        start();
        while (!m_world.result()) {
            const auto wait = m_world.runTimers();
            if (!m_world.result())
                receive(wait ? static_cast<int>(wait->count()) : -1);
        }
        const WorkerResult &result = *m_world.result();
        send(FrameWriter(FrameKind::result).number(static_cast<std::uint32_t>(result.end)).text(result.text));
        _exit(0); // nothing of the script runs any more, no finalizer either
    }

private:
    static FrameWriter requestFrame(const ScriptRequest &request) {
        FrameWriter frame(FrameKind::request);
        frame.number(request.id).text(request.url).text(request.method);
        frame.number(static_cast<std::uint32_t>(request.headers.size()));
        for (const auto &[name, value] : request.headers)
            frame.text(name).text(value);
        frame.text(request.body);
        return frame;
    }

    void start() {
        std::optional<std::string> input = readStandardInput();
        if (input)
            m_world.start(*input);
        else
            m_world.start({});
    }

    void send(FrameWriter frame) {
        if (!sendWhole(m_socket, frame.take()))
            _exit(1);
    }

    bool log(std::string line) {
        if (m_logs.isFull())
            return true;
        m_logs.add(std::move(line));
        send(FrameWriter(FrameKind::log).text(m_logs.lines().back()));
        return m_logs.isFull();
    }

    [[nodiscard]] bool waitForGo() {
        while (true) {
            if (const auto frame = m_frames.next())
                return frame->kind == FrameKind::go;
            receiveOnce(-1);
        }
    }

    void receive(int waitMilliseconds) {
        receiveOnce(waitMilliseconds);
        while (!m_world.result()) {
            const auto frame = m_frames.next();
            if (!frame)
                return;
            FrameReader reader(frame->payload);
            const auto id = reader.number();
            const auto hasFailed = reader.number();
            const auto error = reader.text();
            const auto status = reader.number();
            const auto body = reader.text();
            if (frame->kind != FrameKind::answer || !body)
                _exit(1);
            m_world.answer({*id, *hasFailed != 0, std::string(*error), *status, std::string(*body)});
        }
    }

    void receiveOnce(int waitMilliseconds) {
        pollfd descriptor{m_socket, POLLIN, 0};
        if (poll(&descriptor, 1, waitMilliseconds) <= 0)
            return;
        std::array<char, 64 * limits::kib> buffer; // filled below
        const ssize_t count = recv(m_socket, buffer.data(), buffer.size(), 0);
        if (count == 0 || (count < 0 && errno != EINTR))
            _exit(1); // the other half has gone, and with it any use of this one
        if (count > 0)
            m_frames.add(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
    }

    int m_socket;
    FrameAssembler m_frames;
    WorkerLogs m_logs;
    ScriptWorld m_world;
};

} // namespace

void runScriptProcess(int socket) {
    setEngineOptions();
    ScriptProcess(socket).run();
}

} // namespace tavrine
