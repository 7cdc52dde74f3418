// What the process of a hostile script can send to the process that has the network, in pieces of any size; and what
// it, a server or a name server may say of addresses and redirects.

#include "FuzzTarget.h"
#include "upload/worker/AddressRules.h"
#include "upload/worker/Frames.h"
#include "upload/worker/HttpRules.h"
#include "upload/worker/ScriptEncodings.h"
#include "upload/worker/WorkerRecord.h"
#include "upload/worker/WorkerText.h"

#include <algorithm>
#include <array>

#include <netinet/in.h>

namespace tavrine::fuzz {
namespace {

void readFrames(Bytes bytes) {
    FrameAssembler frames;
    const std::size_t piece = bytes.empty() ? 1 : 1 + static_cast<unsigned char>(bytes[0]) % 7;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        frames.add(bytes.substr(at, piece));
        while (const auto frame = frames.next()) {
            FrameReader reader(frame->payload);
            HttpRequest request;
            while (!reader.isAtEnd()) {
                const auto number = reader.number();
                const auto text = reader.text();
                if (!number || !text)
                    break;
                request.url = *text;
                request.headers.emplace_back(*text, *text);
            }
            require(refusal(request).has_value()); // it has no method
            static_cast<void>(followRedirect(request, 302, request.url));
        }
    }
    WorkerLogs logs;
    logs.add(std::string(bytes));
    require(isUtf8(workerRecord({WorkerEnd::runtimeError, std::string(bytes)}, logs)));
    const std::string cut = utf8FromUnits(responseUnits(bytes), 8);
    require(isUtf8(cut) && cut.size() <= 8);
}

/// A method, an address, a status, where it leads to, and then headers, each a name and a value.
void followHttp(Bytes input) {
    Values values(input);
    HttpRequest request;
    request.method = values.text();
    request.url = values.text();
    const long status = 300 + values.number<unsigned char>() % 10;
    const std::string location(values.text());
    while (!values.isAtEnd()) {
        const std::string name(values.text(':'));
        request.headers.emplace_back(name, std::string(values.text()));
    }
    if (refusal(request))
        return;
    require(schemeOf(request.url) == "http" || schemeOf(request.url) == "https");
    const bool isEncrypted = schemeOf(request.url) == "https";
    const auto isSound = [](const auto &header) { return header.second.find_first_of("\r\n") == std::string::npos; };
    require(std::ranges::all_of(request.headers, isSound));
    if (followRedirect(request, status, location))
        return;
    require(schemeOf(request.url) == "https" || (!isEncrypted && schemeOf(request.url) == "http"));
    require(std::ranges::all_of(request.headers, isSound));
}

void readAddress(Bytes input) {
    const std::string text(input);
    require(!isPublicAddress(text) || isAddress(text));
    sockaddr_in6 six{.sin6_family = AF_INET6, .sin6_port = 0, .sin6_flowinfo = 0, .sin6_addr = {}, .sin6_scope_id = 0};
    std::memcpy(&six.sin6_addr, input.data(), std::min(input.size(), sizeof six.sin6_addr));
    const bool isInner =
        six.sin6_addr.s6_addr[0] == 0xFC || six.sin6_addr.s6_addr[0] == 0xFD || six.sin6_addr.s6_addr[0] == 0xFF;
    require(!isInner || !isPublicAddress(reinterpret_cast<const sockaddr &>(six)));
    sockaddr_in four{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {}, .sin_zero = {}};
    std::memcpy(&four.sin_addr, input.data(), std::min(input.size(), sizeof four.sin_addr));
    const std::uint32_t number = ntohl(four.sin_addr.s_addr);
    require(!(number >> 24 == 127 || number >> 24 == 10) || !isPublicAddress(reinterpret_cast<const sockaddr &>(four)));
}

void readEncoded(Bytes input) {
    const std::u16string units(input.begin(), input.end());
    std::u16string narrow = units;
    for (char16_t &unit : narrow)
        unit &= 0xFF;
    const auto encoded = encodedBase64(narrow);
    require(encoded && decodedBase64(*encoded) == narrow);
    static_cast<void>(decodedBase64(units));
    for (const char *encoding : {"utf-8", "utf-16le", "windows-1252"}) {
        const auto loose = decodedText(input, encoding, false);
        const auto fatal = decodedText(input, encoding, true);
        require(loose && (!fatal || fatal == loose));
    }
}

const Target frameTarget("worker-frames", &readFrames, [] {
    return std::vector<std::string>{{"\2\7\0\0\0\3\0\0\0abc", 12},
                                    "\4",
                                    "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x8E\xED\xA0\x80",
                                    "https://user@host:443/a/../b?c#d"};
});
const Target httpTarget("http-rules", &followHttp, [] {
    return std::vector<std::string>{
        "POST\nhttps://a.example:8443/x?y#z\n\2//b.example/c\nContent-Type: text/plain\nAuthorization: k\n",
        "GET\nhttp://[::1]/\n\1../d?e\nX-A: b\n", "HEAD\nHTTPS://u@a\\b\n\7javascript:0\nContent-Length: 3\n"};
});
const Target addressTarget("addresses", &readAddress, [] {
    return std::vector<std::string>{"127.0.0.1",
                                    "[::ffff:10.0.0.1]",
                                    "2001:db8::1",
                                    "192.168.1.1.",
                                    "0x7f.1",
                                    "fe80::1%lo",
                                    {"\x64\xFF\x9B\0\0\0\0\0\0\0\0\0\x0A\0\0\1", 16}};
});
const Target encodingTarget("encodings", &readEncoded, [] {
    return std::vector<std::string>{"YWJj", "YQ==", " Y Q ", "\xED\xA0\x80\xFF", {"\0\xD8\0\xDC", 4}};
});

} // namespace
} // namespace tavrine::fuzz
