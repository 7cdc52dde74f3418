// TavrineDownloader ADDRESS SECONDS BYTES SCHEMES: fetches what is behind an address into the file that it was given
// open, and says how far it is; a server from which nothing comes for so long is given up, and one that sends more.
// SCHEMES is "all" or "secure". Ends with its last line, or with whoever started it.
#include "adapters/linux/DownloadProtocol.h"
#include "base/ErrorText.h"
#include "walls/NetworkWalls.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include <curl/curl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace tavrine;
using downloadProtocol::Report;

namespace {

constexpr std::size_t mostMemory = std::size_t(512) << 20;
constexpr long mostRedirects = 10;
constexpr long nanosecondsOfSecond = 1'000'000'000;
constexpr long nanosecondsBetweenReports = 100'000'000;

void say(const Report &report) {
    const std::string line = downloadProtocol::lineOf(report);
    static_cast<void>(::write(STDOUT_FILENO, line.data(), line.size()));
}

[[noreturn]] void fail(const std::string &words) {
    say({.kind = Report::Kind::failed, .words = words});
    std::_Exit(EXIT_FAILURE);
}

/// What one part of the address says; empty when it has none.
std::string part(const char *address, CURLUPart which) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
    char *text = nullptr;
    if (!url || curl_url_set(url.get(), CURLUPART_URL, address, 0) != CURLUE_OK ||
        curl_url_get(url.get(), which, &text, CURLU_URLDECODE) != CURLUE_OK)
        return {};
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return text;
}

struct Wanted {
    const char *address;
    long mostSecondsOfSilence;
    std::int64_t mostBytes;
    bool isSecure;
};

/// None for what nobody of ours wants.
std::optional<Wanted> wantedIn(int count, char **arguments) {
    constexpr int arity = 5;
    if (count != arity)
        return std::nullopt;
    const std::string schemes = arguments[4];
    const Wanted wanted{.address = arguments[1],
                        .mostSecondsOfSilence = std::strtol(arguments[2], nullptr, 10),
                        .mostBytes = std::strtoll(arguments[3], nullptr, 10),
                        .isSecure = schemes != downloadProtocol::allSchemes};
    const bool isSense = wanted.mostSecondsOfSilence > 0 && wanted.mostBytes > 0 &&
                         wanted.mostBytes <= downloadProtocol::mostBytes &&
                         (!wanted.isSecure || schemes == downloadProtocol::secureSchemes);
    return isSense ? std::optional(wanted) : std::nullopt;
}

class Download {
public:
    explicit Download(const Wanted &wanted)
        : m_curl(curl_easy_init(), &curl_easy_cleanup), m_mostBytes(wanted.mostBytes) {
        set(CURLOPT_URL, wanted.address);
        set(CURLOPT_PROTOCOLS_STR, wanted.isSecure ? "https" : "http,https,file"); // a redirect's, too
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_MAXREDIRS, mostRedirects);
        set(CURLOPT_FAILONERROR, 1L); // the page that says why is no music
        set(CURLOPT_CONNECTTIMEOUT, wanted.mostSecondsOfSilence);
        set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        set(CURLOPT_LOW_SPEED_TIME, wanted.mostSecondsOfSilence);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_USERAGENT, "Tavrine/" TAVRINE_VERSION);
        set(CURLOPT_ERRORBUFFER, m_words);
        set(CURLOPT_WRITEFUNCTION, &Download::receive);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &Download::look);
        set(CURLOPT_XFERINFODATA, this);
    }

    [[noreturn]] void run() {
        const CURLcode code = curl_easy_perform(m_curl.get());
        if (code != CURLE_OK)
            fail(m_failure ? m_failure : m_words[0] ? m_words : curl_easy_strerror(code));
        if (fsync(downloadProtocol::file) != 0) // a file that has a name is whole, also after a crash of the machine
            fail(errorText(errno));
        say({Report::Kind::progress, m_written, m_written});
        say({Report::Kind::done});
        std::_Exit(EXIT_SUCCESS);
    }

private:
    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(m_curl.get(), option, value);
    }

    static std::size_t receive(const char *bytes, std::size_t, std::size_t count, void *self) {
        auto *const download = static_cast<Download *>(self);
        download->m_written += static_cast<std::int64_t>(count);
        if (download->m_written > download->m_mostBytes) {
            download->m_failure = "the file is too large";
            return 0;
        }
        for (std::size_t done = 0; done < count;) {
            const ssize_t written = ::write(downloadProtocol::file, bytes + done, count - done);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0) {
                download->m_failure = errorText(written < 0 ? errno : EIO);
                return 0;
            }
            done += static_cast<std::size_t>(written);
        }
        return count;
    }

    /// Called for every piece, and about once a second while none comes.
    static int look(void *self, curl_off_t expected, curl_off_t, curl_off_t, curl_off_t) {
        auto *const download = static_cast<Download *>(self);
        pollfd parent{STDIN_FILENO, POLLIN, 0};
        if (poll(&parent, 1, 0) > 0)
            std::_Exit(EXIT_FAILURE);
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const long passed = (now.tv_sec - download->m_reported.tv_sec) * nanosecondsOfSecond + now.tv_nsec -
                            download->m_reported.tv_nsec;
        if (passed >= nanosecondsBetweenReports) {
            download->m_reported = now;
            say({Report::Kind::progress, download->m_written, expected > 0 ? expected : 0});
        }
        return 0;
    }

    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_curl;
    char m_words[CURL_ERROR_SIZE] = {};
    const char *m_failure = nullptr;
    std::int64_t m_mostBytes;
    std::int64_t m_written = 0;
    timespec m_reported{};
};

} // namespace

int main(int count, char **arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // also when it is killed
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // the write tells
    const auto wanted = wantedIn(count, arguments);
    if (!wanted)
        return EXIT_FAILURE;
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::vector<std::string> places = placesOfNetwork();
    if (part(wanted->address, CURLUPART_SCHEME) == "file")
        places = {part(wanted->address, CURLUPART_PATH)};
    if (const LockDownError error = lockNetworkProcess(places, {.memory = mostMemory, .calls = {"fsync"}}))
        fail("the downloader is not locked in: " + *error);
    Download(*wanted).run();
}
