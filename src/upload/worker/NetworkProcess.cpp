#include "upload/worker/NetworkProcess.h"

#include "upload/worker/Frames.h"
#include "upload/worker/HttpLoader.h"
#include "upload/worker/LockDown.h"
#include "upload/worker/WorkerLimits.h"
#include "upload/worker/WorkerRecord.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// What was sent is kept up to here.
constexpr std::size_t largestSentPart = 16 * limits::mib;
constexpr const char *endedAbnormally = "The script's process ended abnormally. It may have run out of memory.";

class NetworkProcess {
public:
    NetworkProcess(int socket, pid_t scriptProcess)
        : m_socket(socket), m_script(static_cast<int>(syscall(SYS_pidfd_open, scriptProcess, 0))),
          m_memory(open(("/proc/" + std::to_string(scriptProcess) + "/statm").c_str(), O_RDONLY | O_CLOEXEC)) {}

    NetworkProcess(const NetworkProcess &) = delete;
    NetworkProcess &operator=(const NetworkProcess &) = delete;

    /// False when nobody waits for a record any more.
    bool run() {
        if (m_script < 0 || m_memory < 0)
            end("The upload worker could not watch over the script.");
        if (const auto error = m_result ? std::nullopt : lockNetworkProcess(m_http.places()))
            end("The upload worker could not lock itself down: " + *error);
        while (!m_result) {
            wait();
            if (m_isUnread)
                return false;
            receive();
            if (m_http.isLoaded())
                passAnswers();
            send();
            watchMemory();
        }
        return true;
    }

    void endScript() const {
        if (m_script >= 0)
            syscall(SYS_pidfd_send_signal, m_script, SIGKILL, nullptr, 0);
    }

    [[nodiscard]] std::string record() const { return workerRecord(*m_result, m_logs); }
    [[nodiscard]] const WorkerLogs &logs() const { return m_logs; }

private:
    void end(std::string message) {
        if (!m_result)
            m_result = WorkerResult{WorkerEnd::runtimeError, std::move(message)};
    }

    void wait() {
        const short wanted = m_sent == m_toSend.size() ? POLLIN : POLLIN | POLLOUT;
        std::vector<pollfd> descriptors{{m_socket, wanted, 0}, {STDOUT_FILENO, 0, 0}};
        if (m_http.isLoaded())
            m_http.get()->wait(descriptors, limits::memoryWatch);
        else
            poll(descriptors.data(), descriptors.size(), static_cast<int>(limits::memoryWatch.count()));
        m_isUnread = (descriptors[1].revents & POLLERR) != 0;
    }

    void receive() {
        while (!m_result) {
            std::array<char, 64 * limits::kib> buffer; // filled below
            const ssize_t count = recv(m_socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0 && errno == EAGAIN)
                return;
            if (count <= 0)
                return end(endedAbnormally);
            m_frames.add(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
            while (const auto frame = m_result ? std::nullopt : m_frames.next())
                take(*frame);
            if (m_frames.isBroken())
                end(endedAbnormally);
        }
    }

    void take(const Frame &frame) {
        FrameReader reader(frame.payload);
        bool isUnderstood = false;
        switch (frame.kind) {
        case FrameKind::locked:
            isUnderstood = takeLocked(reader);
            break;
        case FrameKind::log:
            if (const auto line = reader.text()) {
                m_logs.add(std::string(*line));
                isUnderstood = true;
            }
            break;
        case FrameKind::request:
            isUnderstood = takeRequest(reader);
            break;
        case FrameKind::result:
            isUnderstood = takeResult(reader);
            break;
        case FrameKind::go:
        case FrameKind::answer:
            break;
        }
        if (!isUnderstood)
            end(endedAbnormally);
    }

    bool takeLocked(FrameReader &reader) {
        const auto error = reader.text();
        if (!error)
            return false;
        if (!error->empty())
            end("The upload worker could not lock the script in: " + std::string(*error));
        m_toSend += FrameWriter(FrameKind::go).take();
        return true;
    }

    bool takeResult(FrameReader &reader) {
        const auto kind = reader.number();
        const auto text = reader.text();
        if (!text || *kind > static_cast<std::uint32_t>(WorkerEnd::runtimeError) || text->size() > limits::urlBytes)
            return false;
        const auto kindOfEnd = static_cast<WorkerEnd>(*kind);
        if (kindOfEnd == WorkerEnd::url && text->empty())
            return false;
        m_result = WorkerResult{kindOfEnd, std::string(*text)};
        return true;
    }

    bool takeRequest(FrameReader &reader) {
        HttpRequest request;
        const auto id = reader.number();
        const auto url = reader.text();
        const auto method = reader.text();
        const auto count = reader.number();
        if (!count)
            return false;
        for (std::uint32_t i = 0; i < *count; ++i) {
            const auto name = reader.text();
            const auto value = reader.text();
            if (!value)
                return false;
            request.headers.emplace_back(*name, *value);
        }
        const auto body = reader.text();
        if (!body)
            return false;
        request.id = *id;
        request.url = *url;
        request.method = *method;
        request.body = *body;
        if (Http *http = m_http.get())
            http->start(std::move(request));
        else
            answer({*id, "HTTP is not available.", 0, {}});
        return true;
    }

    void passAnswers() {
        for (const HttpAnswer &ended : m_http.get()->takeEnded())
            answer(ended);
    }

    void answer(const HttpAnswer &answer) {
        const std::uint32_t hasFailed = answer.failure.empty() ? 0 : 1;
        m_toSend += FrameWriter(FrameKind::answer)
                        .number(answer.id)
                        .number(hasFailed)
                        .text(answer.failure)
                        .number(answer.status)
                        .text(answer.body)
                        .take();
    }

    void send() {
        while (m_sent < m_toSend.size() && !m_result) {
            const ssize_t sent =
                ::send(m_socket, m_toSend.data() + m_sent, m_toSend.size() - m_sent, MSG_DONTWAIT | MSG_NOSIGNAL);
            if (sent < 0 && errno == EINTR)
                continue;
            if (sent < 0)
                break; // full for now; a dead reader shows itself in receive()
            m_sent += static_cast<std::size_t>(sent);
        }
        // Not after each piece: the rest is moved each time, and may be a hundred times as long.
        if (m_sent == m_toSend.size() || m_sent > largestSentPart) {
            m_toSend.erase(0, m_sent);
            m_sent = 0;
        }
    }

    void watchMemory() {
        char text[128];
        const ssize_t length = pread(m_memory, text, sizeof text, 0);
        if (m_result || length <= 0)
            return;
        const std::string_view statm(text, static_cast<std::size_t>(length));
        const std::size_t space = statm.find(' ');
        std::size_t pages = 0;
        if (space != std::string_view::npos)
            std::from_chars(statm.data() + space + 1, statm.data() + statm.size(), pages);
        if (pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) > limits::scriptMemory)
            end("The script used more than 1 GiB of memory.");
    }

    int m_socket;
    int m_script;
    int m_memory;
    bool m_isUnread = false;
    FrameAssembler m_frames;
    std::string m_toSend;
    std::size_t m_sent = 0; ///< of that
    WorkerLogs m_logs;
    HttpLoader m_http;
    std::optional<WorkerResult> m_result;
};

} // namespace

void writeRecord(std::string_view record) {
    while (!record.empty()) {
        const ssize_t written = write(STDOUT_FILENO, record.data(), record.size());
        if (written > 0)
            record.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            continue; // a pipe that somebody set to non-blocking
        else if (errno != EINTR)
            return;
    }
}

int runNetworkProcess(int socket, pid_t scriptProcess) {
    auto process = std::make_unique<NetworkProcess>(socket, scriptProcess);
    std::string record;
    try {
        if (!process->run()) {
            process->endScript();
            _exit(1);
        }
        record = process->record();
    } catch (const std::bad_alloc &) {
        record = workerRecord({WorkerEnd::runtimeError, "The upload worker ran out of memory."}, {});
    }
    writeRecord(record);
    process->endScript();
    // Connections are not closed in order, and a name that is looked up is not waited for: nobody else does.
    _exit(0);
}

} // namespace tavrine
