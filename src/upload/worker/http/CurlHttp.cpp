#include "upload/worker/AddressRules.h"
#include "upload/worker/Http.h"
#include "upload/worker/HttpRules.h"
#include "upload/worker/WorkerLimits.h"
#include "upload/worker/http/NameLookup.h"

#include <algorithm>
#include <cstdlib>
#include <list>
#include <memory>
#include <new>
#include <optional>

#include <curl/curl.h>
#include <sys/eventfd.h>

namespace tavrine {
namespace {

/// One exchange, over all its redirects.
class Exchange {
public:
    explicit Exchange(HttpRequest request)
        : m_request(std::move(request)), m_end(Clock::now() + limits::exchangeTimeOut) {}
    ~Exchange() { release(); }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

    [[nodiscard]] CURL *handle() const { return m_handle; }

    /// Begins with the name, which the library would look up by itself and then wait for, whatever its limits: false
    /// when nobody can look it up now. Nothing for an address, or where a proxy looks names up.
    [[nodiscard]] bool lookUp(int wake) {
        m_connected = std::min(m_end, Clock::now() + limits::connectTimeOut);
        m_addresses.clear();
        const std::string host = part(CURLUPART_HOST);
        if (host.empty() || isAddress(host) || hasProxy())
            return true;
        m_lookup = NameLookup::start(host, wake);
        return m_lookup != nullptr;
    }
    /// Whether the name is still on its way.
    [[nodiscard]] bool isLookingUp() const { return m_lookup && !m_lookup->outcome() && Clock::now() < m_connected; }
    [[nodiscard]] bool isReady() const { return m_lookup && !isLookingUp(); }
    /// A failure when the name has no address, or none in time.
    [[nodiscard]] std::optional<HttpAnswer> takeAddresses() {
        const auto outcome = std::exchange(m_lookup, nullptr)->outcome();
        const std::string host = part(CURLUPART_HOST);
        if (!outcome)
            return failed("The name " + host + " could not be looked up in time.");
        if (outcome->addresses.empty())
            return failed("The name " + host + " could not be looked up: " + outcome->failure);
        m_addresses = outcome->addresses;
        return std::nullopt;
    }
    /// When to look again at a name that does not come.
    [[nodiscard]] std::chrono::milliseconds patience() const {
        return std::max(std::chrono::ceil<std::chrono::milliseconds>(m_connected - Clock::now()),
                        std::chrono::milliseconds(0));
    }
    [[nodiscard]] HttpAnswer failed(std::string words) const { return {m_request.id, std::move(words), 0, {}}; }

    /// A handle for the request as it is now; null when memory is wanting.
    [[nodiscard]] CURL *prepare() {
        release();
        m_body.clear();
        m_headerBytes = 0;
        m_failure = nullptr;
        m_words[0] = '\0';
        m_handle = curl_easy_init();
        if (!m_handle)
            return nullptr;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now());
        set(CURLOPT_URL, m_request.url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 0L); // redirects are followed by our own rules
        set(CURLOPT_SSL_VERIFYPEER, 1L);
        set(CURLOPT_SSL_VERIFYHOST, 2L);
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(std::max<std::int64_t>(patience().count(), 1)));
        set(CURLOPT_OPENSOCKETFUNCTION, &Exchange::openSocket);
        set(CURLOPT_OPENSOCKETDATA, this);
        if (!m_addresses.empty()) {
            m_resolved = curl_slist_append(
                nullptr, (part(CURLUPART_HOST) + ":" + part(CURLUPART_PORT) + ":" + m_addresses).c_str());
            set(CURLOPT_RESOLVE, m_resolved);
        }
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(std::max<std::int64_t>(left.count(), 1)));
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
        set(CURLOPT_ACCEPT_ENCODING, ""); // what the library can unpack; the script gets the contents
        set(CURLOPT_ERRORBUFFER, m_words);
        set(CURLOPT_PRIVATE, this);
        set(CURLOPT_WRITEFUNCTION, &Exchange::receive);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &Exchange::receiveHeader);
        set(CURLOPT_HEADERDATA, this);
        setMethodAndBody();
        setHeaders();
        return m_handle;
    }

    /// The answer, or none when the exchange goes on with a redirect.
    [[nodiscard]] std::optional<HttpAnswer> end(CURLcode code) {
        HttpAnswer answer{m_request.id, {}, 0, {}};
        if (code != CURLE_OK) {
            answer.failure = m_failure ? m_failure : m_words[0] ? m_words : curl_easy_strerror(code);
            return answer;
        }
        long status = 0;
        curl_easy_getinfo(m_handle, CURLINFO_RESPONSE_CODE, &status);
        const char *location = nullptr;
        curl_easy_getinfo(m_handle, CURLINFO_REDIRECT_URL, &location);
        const bool isRedirect = status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
        if (isRedirect && location) {
            const char *address = nullptr;
            curl_easy_getinfo(m_handle, CURLINFO_PRIMARY_IP, &address);
            m_isFromOutside = m_isFromOutside || (address && isPublicAddress(std::string(address)));
            if (++m_redirects > limits::redirects)
                answer.failure = "There were too many redirects.";
            else if (const auto refused = followRedirect(m_request, status, location))
                answer.failure = *refused;
            else
                return std::nullopt;
            return answer;
        }
        answer.status = static_cast<std::uint32_t>(status);
        answer.body = std::move(m_body);
        return answer;
    }

private:
    using Clock = std::chrono::steady_clock;

    void release() {
        curl_easy_cleanup(m_handle);
        curl_slist_free_all(m_headers);
        curl_slist_free_all(m_resolved);
        m_handle = nullptr;
        m_headers = m_resolved = nullptr;
    }

    /// Of the URL, as the library reads it and as it looks it up.
    [[nodiscard]] std::string part(CURLUPart which) const {
        const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
        char *text = nullptr;
        if (!url || curl_url_set(url.get(), CURLUPART_URL, m_request.url.c_str(), 0) != CURLUE_OK ||
            curl_url_get(url.get(), which, &text, CURLU_DEFAULT_PORT | CURLU_PUNYCODE) != CURLUE_OK)
            return {};
        const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
        return text;
    }

    /// By the names that the library itself goes by.
    [[nodiscard]] static bool hasProxy() {
        for (const char *name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
            const char *value = std::getenv(name);
            if (value && *value)
                return true;
        }
        return false;
    }

    /// A server of the internet must not send a request of ours into the network that this machine stands in.
    static curl_socket_t openSocket(void *self, curlsocktype, curl_sockaddr *address) {
        auto *exchange = static_cast<Exchange *>(self);
        if (exchange->m_isFromOutside && !isPublicAddress(address->addr)) {
            exchange->m_failure = "The server redirects into a private network.";
            return CURL_SOCKET_BAD;
        }
        return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    }

    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(m_handle, option, value);
    }

    void setMethodAndBody() {
        if (m_request.method == "HEAD") {
            set(CURLOPT_NOBODY, 1L);
            return;
        }
        const bool hasBody = !m_request.body.empty() || m_request.method == "POST";
        if (hasBody) {
            set(CURLOPT_POST, 1L);
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
            set(CURLOPT_POSTFIELDS, m_request.body.data());
        }
        set(CURLOPT_CUSTOMREQUEST, m_request.method.c_str());
    }

    void setHeaders() {
        // Only what the script names, beside what every request must have. "Expect" would cost a round trip.
        bool hasType = false;
        for (const auto &[name, value] : m_request.headers) {
            if (isFraming(name))
                continue;
            hasType = hasType || curl_strequal(name.c_str(), "content-type");
            // A header without a value is spelled with a semicolon, for with a colon the library drops it.
            add(value.find_first_not_of(" \t") == std::string::npos ? name + ";" : name + ": " + value);
        }
        add("Expect:");
        if (!hasType)
            add(m_request.body.empty() ? "Content-Type:" : "Content-Type: text/plain;charset=UTF-8");
        set(CURLOPT_HTTPHEADER, m_headers);
    }

    void add(const std::string &line) {
        if (curl_slist *longer = curl_slist_append(m_headers, line.c_str()))
            m_headers = longer;
    }

    static std::size_t receive(char *data, std::size_t size, std::size_t count, void *self) {
        auto *exchange = static_cast<Exchange *>(self);
        const std::size_t bytes = size * count;
        if (exchange->m_body.size() + bytes > limits::responseBytes)
            return exchange->giveUp("The response is larger than 8 MiB.");
        try {
            exchange->m_body.append(data, bytes);
        } catch (const std::bad_alloc &) { // must not fly through the library
            return exchange->giveUp("There is no memory for the response.");
        }
        return bytes;
    }

    static std::size_t receiveHeader(char *, std::size_t size, std::size_t count, void *self) {
        auto *exchange = static_cast<Exchange *>(self);
        exchange->m_headerBytes += size * count;
        if (exchange->m_headerBytes > limits::responseHeaderBytes)
            return exchange->giveUp("The response's headers are larger than 256 KiB.");
        return size * count;
    }

    /// What a callback of the library gives to end its exchange.
    std::size_t giveUp(const char *failure) {
        m_failure = failure;
        return 0;
    }

    HttpRequest m_request;
    Clock::time_point m_end;
    Clock::time_point m_connected; ///< by then, this hop
    std::unique_ptr<NameLookup> m_lookup;
    std::string m_addresses; ///< of the host, where it is a name
    bool m_isFromOutside = false;
    curl_slist *m_resolved = nullptr;
    CURL *m_handle = nullptr;
    curl_slist *m_headers = nullptr;
    std::string m_body;
    std::size_t m_headerBytes = 0;
    const char *m_failure = nullptr; ///< ours, before the library's words
    int m_redirects = 0;
    char m_words[CURL_ERROR_SIZE] = {};
};

class CurlHttp final : public Http {
public:
    CurlHttp() {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        m_multi = curl_multi_init();
    }
    ~CurlHttp() override {
        for (const auto &exchange : m_running) {
            if (exchange->handle())
                curl_multi_remove_handle(m_multi, exchange->handle());
        }
        m_running.clear();
        curl_multi_cleanup(m_multi);
    }
    CurlHttp(const CurlHttp &) = delete;
    CurlHttp &operator=(const CurlHttp &) = delete;

    void start(HttpRequest request) override {
        if (m_running.size() >= limits::requestsAtOnce) {
            m_ended.push_back({request.id, "There are too many requests at once.", 0, {}});
            return;
        }
        if (const auto refused = refusal(request)) {
            m_ended.push_back({request.id, *refused, 0, {}});
            return;
        }
        m_running.push_back(std::make_unique<Exchange>(std::move(request)));
        begin(m_running.back());
        std::erase(m_running, nullptr);
    }

    void wait(std::vector<pollfd> &others, std::chrono::milliseconds longest) override {
        std::vector<curl_waitfd> waited;
        for (const pollfd &other : others)
            waited.push_back({other.fd,
                              static_cast<short>((other.events & POLLIN ? CURL_WAIT_POLLIN : 0) |
                                                 (other.events & POLLOUT ? CURL_WAIT_POLLOUT : 0)),
                              0});
        waited.push_back({m_wake.number(), CURL_WAIT_POLLIN, 0});
        for (const auto &exchange : m_running) {
            if (exchange->isLookingUp())
                longest = std::min(longest, exchange->patience());
        }
        const auto timeOut = m_ended.empty() ? static_cast<int>(longest.count()) : 0;
        curl_multi_poll(m_multi, waited.data(), static_cast<unsigned>(waited.size()), timeOut, nullptr);
        // The library passes on neither hang-ups nor errors, so the descriptors are asked once more.
        poll(others.data(), others.size(), 0);
        advance();
    }

    std::vector<HttpAnswer> takeEnded() override { return std::exchange(m_ended, {}); }

private:
    using Place = std::unique_ptr<Exchange>;

    void begin(Place &exchange) {
        if (!exchange->lookUp(m_wake.number()))
            end(exchange, exchange->failed("There are too many names being looked up."));
        else if (!exchange->isLookingUp() && !exchange->isReady())
            launch(exchange);
    }

    void launch(Place &exchange) {
        CURL *const handle = exchange->prepare();
        if (!handle || curl_multi_add_handle(m_multi, handle) != CURLM_OK)
            end(exchange, exchange->failed("There is no memory for the request."));
    }

    /// Its place is taken out with the next `advance`.
    void end(Place &exchange, HttpAnswer answer) {
        m_ended.push_back(std::move(answer));
        exchange.reset();
    }

    void advanceLookups() {
        eventfd_t ignored = 0;
        eventfd_read(m_wake.number(), &ignored);
        for (Place &exchange : m_running) {
            if (!exchange || !exchange->isReady())
                continue;
            if (auto failure = exchange->takeAddresses())
                end(exchange, std::move(*failure));
            else
                launch(exchange);
        }
    }

    void advance() {
        advanceLookups();
        std::erase(m_running, nullptr);
        int running = 0;
        curl_multi_perform(m_multi, &running);
        int left = 0;
        while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            CURL *const handle = message->easy_handle;
            const CURLcode code = message->data.result; // gone once the handle is taken out
            curl_multi_remove_handle(m_multi, handle);
            const auto found = std::find_if(m_running.begin(), m_running.end(),
                                            [handle](const auto &exchange) { return exchange->handle() == handle; });
            if (found == m_running.end())
                continue;
            if (auto answer = (*found)->end(code)) {
                end(*found, std::move(*answer));
            } else {
                begin(*found);
            }
            std::erase(m_running, nullptr);
        }
    }

    CURLM *m_multi = nullptr;
    const Descriptor m_wake{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)}; ///< by the lookups, up to the end of the process
    std::list<Place> m_running;
    std::vector<HttpAnswer> m_ended;
};

} // namespace
} // namespace tavrine

extern "C" [[gnu::visibility("default")]] tavrine::Http *tavrineMakeHttp() {
    return new tavrine::CurlHttp;
}
