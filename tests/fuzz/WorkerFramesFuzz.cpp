// What the process of a hostile script can send to the process that has the network, in pieces of any size.

#include "upload/worker/Frames.h"
#include "upload/worker/HttpRules.h"
#include "upload/worker/WorkerRecord.h"
#include "upload/worker/WorkerText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace tavrine;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    FrameAssembler frames;
    const std::size_t piece = size == 0 ? 1 : 1 + data[0] % 7;
    for (std::size_t at = 0; at < size; at += piece) {
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
            if (!refusal(request))
                std::abort(); // it has no method
            static_cast<void>(followRedirect(request, 302, request.url));
        }
    }
    WorkerLogs logs;
    logs.add(std::string(bytes));
    if (!isUtf8(workerRecord({WorkerEnd::runtimeError, std::string(bytes)}, logs)))
        std::abort();
    if (!isUtf8(utf8FromUnits(responseUnits(bytes), 8)) || utf8FromUnits(responseUnits(bytes), 8).size() > 8)
        std::abort();
    return 0;
}

static const char logFrame[] = "\2\7\0\0\0\3\0\0\0abc";
extern "C" const char *const fuzzSeeds[] = {logFrame, "\4", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x8E\xED\xA0\x80",
                                            "https://user@host:443/a/../b?c#d", nullptr};
